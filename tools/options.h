// The command line.
#ifndef QELRCPT_TOOLS_OPTIONS_H
#define QELRCPT_TOOLS_OPTIONS_H

#include "merchant.h"
#include "render.h"

#include <string>
#include <variant>
#include <vector>

namespace tool
{

enum class output_format { text, json };

struct options {
    std::vector<std::string> files; // at least one; "-" is standard input
    tool::layout layout;
    tool::merchant merchant;
    output_format format = output_format::text;
    bool page = false;       // one copy as an HTML page
    std::string output_file; // empty: standard output
    bool quiet = false;
};

// A text that the command line asks for instead of receipts: the help or the version.
struct information {
    std::string text;
};

// Throws usage_error.
std::variant<options, information> parse_options(int argc, char **argv);

} // namespace tool

#endif
