// The command line.
#ifndef QELRCPT_TOOLS_OPTIONS_H
#define QELRCPT_TOOLS_OPTIONS_H

#include "reading/merchant.h"
#include "writing/render.h"

#include <cstddef>
#include <optional>
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
    std::optional<output_format> format; // absent: as usual
    bool page = false;                   // one copy as an HTML page
    std::string output_file;             // empty: standard output
    bool quiet = false;
    bool batch = false; // a record a line
    size_t jobs = 0;    // threads that render; at least one with batch
};

// A text that the command line asks for instead of receipts: the help or the version.
struct information {
    std::string text;
};

// Throws usage_error.
std::variant<options, information> parse_options(int argc, char **argv);

} // namespace tool

#endif
