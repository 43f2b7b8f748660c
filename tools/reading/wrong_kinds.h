// Inputs of another kind than the one that is expected, told by what they are.
#ifndef QELRCPT_TOOLS_WRONG_KINDS_H
#define QELRCPT_TOOLS_WRONG_KINDS_H

#include "messages.h"

#include <string_view>

namespace tool
{

// Refuses bytes that are no text in UTF-8: what is compressed, UTF-16, and NUL. Throws text_error.
void check_kind(std::string_view text);

// Refuses what is not UTF-8, where it is. Throws text_error.
void check_utf8(std::string_view text);

enum class reading { file, line };

// The fault of a text, or what the text as a whole is instead, with what to do about it.
text_error explained(const text_error &fault, std::string_view text, reading what);

} // namespace tool

#endif
