// What is wrong with a record, found where it stands in its file.
#ifndef QELRCPT_TOOLS_FINDINGS_H
#define QELRCPT_TOOLS_FINDINGS_H

#include "options.h"
#include "reading/record_file.h"

#include <qel_rcpt_check.h>

#include <cstddef>
#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tool
{

struct finding {
    Qel_rcpt_severity_t severity;
    std::string_view rule;        // all views are constants
    std::string key;              // masked, as a card number may stand where a key should
    std::optional<size_t> place;  // of the key in the text; absent where that does not have it
    std::optional<size_t> offset; // inside of the value
    std::string message;          // masked
    std::string_view source;
    std::string_view date;
};

// "error", "warning" or "note".
std::string_view word_of(Qel_rcpt_severity_t severity);

// "message [rule]", or with the source behind the rule.
std::string text_of(const finding &finding);

// All rules: the library's, and the command's own about what a file repeats.
const std::vector<Qel_rcpt_rule_t> &rules();

// Of one of them, by its name: "error", "warning" or "note".
std::string_view severity_of(std::string_view rule);

// What the chosen rules find, in the order of the rules.
std::vector<finding> findings_of(const record_file &file, const Qel_rcpt_config_t &config,
                                 const options &options);

// Whether a receipt that is rendered comes with a warning of it: errors, and keys that do nothing
// or stand twice. The other warnings and the notes are told by --check.
bool is_worth_a_warning(const finding &finding);

bool is_error(const finding &finding);

// How many findings there are of each rule.
using rule_counts = std::map<std::string_view, uint64_t>;

// "3 errors, 1 warning, no notes".
std::string totals_of(const std::map<Qel_rcpt_severity_t, uint64_t> &counts);

} // namespace tool

#endif
