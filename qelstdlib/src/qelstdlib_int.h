// What the sources of qelstdlib share and no caller sees.
#ifndef QELSTDLIB_INT_H
#define QELSTDLIB_INT_H

#include "qelstdlib.h"
#include "qelstdlib.hpp"

#include <algorithm>
#include <cstddef>
#include <cstdlib>
#include <exception>
#include <string>
#include <string_view>

namespace qel
{

// Room for a text of len bytes that Qel_free releases, terminated; its bytes are the caller's to
// fill. It comes from malloc because programs in other languages hand it to Qel_free.
inline char *new_text_area(std::size_t len) noexcept
{
    // NOLINTNEXTLINE(cppcoreguidelines-no-malloc,cppcoreguidelines-owning-memory)
    auto *area = static_cast<char *>(std::malloc(len + 1));
    if (area == nullptr)
        std::terminate();
    area[len] = '\0';
    return area;
}

inline char *new_text(std::string_view str) noexcept
{
    char *const area = new_text_area(str.size());
    str.copy(area, str.size());
    return area;
}

constexpr bool is_space(char chr) noexcept
{
    return chr == ' ' || (chr >= '\t' && chr <= '\r');
}

constexpr bool is_digit(char chr) noexcept
{
    return chr >= '0' && chr <= '9';
}

constexpr char to_lower(char chr) noexcept
{
    return chr >= 'A' && chr <= 'Z' ? static_cast<char>(chr - 'A' + 'a') : chr;
}

// A byte that goes on with the character that an earlier byte began.
constexpr bool is_continuation(char chr) noexcept
{
    return (static_cast<unsigned char>(chr) & 0xC0U) == 0x80U;
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

// Follows a creator's hints within reason: they come from callers and may be anything.
template <typename Table>
void make_room(Table &table, std::size_t init_size, std::size_t fill_pct)
{
    constexpr std::size_t max_reserved = 4096;
    const auto percent = static_cast<float>(std::clamp<std::size_t>(fill_pct, 10, 100));
    table.max_load_factor(percent / 100.0F);
    table.reserve(std::min(init_size, max_reserved));
}

} // namespace qel

#endif
