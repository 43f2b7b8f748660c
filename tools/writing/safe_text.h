// Text that comes from a record, made fit for where it goes.
#ifndef QELRCPT_TOOLS_SAFE_TEXT_H
#define QELRCPT_TOOLS_SAFE_TEXT_H

#include <string>
#include <string_view>

namespace tool
{

// The text as valid UTF-8: what is none as U+FFFD.
std::string repaired(std::string_view text);

// Nothing of the text acts on a terminal any more: control characters are shown as ^[ and the like,
// those beyond ASCII, those that turn the direction of writing (qel_rcpt_chars.hpp) and bytes that
// are not UTF-8 as U+FFFD. Tabs and line breaks stay.
std::string for_terminal(std::string_view text);

// Appends the text as a JSON text in quotes: valid UTF-8 on one line, control characters escaped.
void append_json_text(std::string &json, std::string_view text);

} // namespace tool

#endif
