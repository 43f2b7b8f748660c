// What the sources of qelstdlib share and no caller sees.
#ifndef QELSTDLIB_INT_H
#define QELSTDLIB_INT_H

#include "new_text.h"
#include "qelstdlib.h"
#include "qelstdlib.hpp"

#include <algorithm>
#include <cstddef>
#include <string>
#include <string_view>

namespace qel
{

// Objects, so that what takes one as a condition has it inline.

inline constexpr auto is_space = [](char chr) {
    return chr == ' ' || (chr >= '\t' && chr <= '\r');
};

inline constexpr auto is_digit = [](char chr) { return chr >= '0' && chr <= '9'; };

inline constexpr auto to_lower = [](char chr) {
    return chr >= 'A' && chr <= 'Z' ? static_cast<char>(chr - 'A' + 'a') : chr;
};

// A byte that goes on with the character that an earlier byte began.
inline constexpr auto is_continuation = [](char chr) {
    return (static_cast<unsigned char>(chr) & 0xC0U) == 0x80U;
};

// Takes the bytes at the start of rest for which the condition holds.
template <typename Condition>
std::string_view take_while(std::string_view &rest, Condition condition)
{
    std::size_t len = 0;
    while (len < rest.size() && condition(rest[len]))
        ++len;
    const std::string_view taken = rest.substr(0, len);
    rest.remove_prefix(len);
    return taken;
}

// Without the white space at its ends.
inline std::string_view trimmed(std::string_view str)
{
    take_while(str, is_space);
    while (!str.empty() && is_space(str.back()))
        str.remove_suffix(1);
    return str;
}

// The number with at least min_digits digits; a negative one is never filled.
template <typename Int>
std::string decimal(Int value, std::size_t min_digits)
{
    std::string digits = std::to_string(value);
    if (digits.size() < min_digits && digits.front() != '-')
        digits.insert(0, min_digits - digits.size(), '0');
    return digits;
}

} // namespace qel

#endif
