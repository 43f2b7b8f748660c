// What the command can be told: its options, a row each. The command line, --help, the refusals and
// the completions come from this table.
#ifndef QELRCPT_TOOLS_OPTIONS_H
#define QELRCPT_TOOLS_OPTIONS_H

#include "reading/additions.h"
#include "reading/merchant.h"
#include "writing/paper.h"
#include "writing/render.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tool
{

enum class output_format { text, json, escpos, star, png };

// Whether receipts are made for a printer, or drawn as it prints them.
constexpr bool is_paper(output_format format)
{
    return format != output_format::text && format != output_format::json;
}

// What the command line asks for instead of receipts.
enum class information { none, help, version, options, keys, rules };

struct options {
    std::vector<std::string> files; // at least one; "-" is standard input
    tool::layout layout;
    bool is_form_given = false; // otherwise the output file's name may tell the form
    bool has_width = false;     // asked for
    bool both_copies = false;   // asked for by name
    tool::merchant merchant;
    std::string merchant_file; // empty: none
    tool::additions added;
    std::optional<output_format> format; // absent: as usual
    paper_options paper;
    bool page = false;       // one copy as an HTML page
    bool email = false;      // one copy as the HTML of a message
    bool playground = false; // the page to try receipts, with the record in it
    std::string output_file; // empty: standard output
    bool quiet = false;
    bool check = false;                      // findings instead of receipts
    bool strict = false;                     // no receipt of a record with errors
    std::vector<std::string> rules;          // the only ones; none: all
    std::vector<std::string> left_out_rules; // of these
    bool batch = false;                      // a record a line
    size_t jobs = 0;                         // threads that render; at least one with batch
    std::optional<uint64_t> start_line;      // the first one that batch renders of the first FILE
    tool::information information = information::none;

    std::vector<std::string> inputs() const; // all files that are read
};

// Where an option does something. Elsewhere it is refused, with what was expected.
struct use {
    bool (*is_met)(const options &given);
    std::string_view expected;
};

inline constexpr use anywhere = {[](const options &) { return true; }, ""};

inline constexpr use text_only = {[](const options &given) { return given.layout.form->is_text; },
                                  "--form plain, moneris or moneris-ecomm with it"};

struct option_row {
    std::string_view group;   // of --help; empty: not shown there
    std::string name;         // "-q,--quiet"
    std::string_view value;   // what --help calls it; FILE and ZONE are completed; empty: a flag
    std::string_view meaning; // "{}" stands for the words

    // Takes a value of the option (of a flag, nothing). Throws std::invalid_argument.
    std::function<void(options &taken, const std::string &given)> set;

    use where = anywhere;

    // The values to choose from, which may depend on the other options; absent: anything.
    std::function<std::vector<std::string_view>(const options &given)> words = nullptr;

    bool repeats = false; // each value counts, otherwise the last
};

// In the order of --help.
const std::vector<option_row> &option_rows();

// The name by which messages call an option: its long one.
std::string long_name(const option_row &row);

} // namespace tool

#endif
