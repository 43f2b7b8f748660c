// Bytes and characters of texts, as every part of the library and the command tells them apart.
#ifndef QEL_RCPT_CHARS_HPP
#define QEL_RCPT_CHARS_HPP

#include <qelstdlib.hpp>

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string_view>

namespace qel_rcpt
{

constexpr bool is_space(char chr)
{
    return chr == ' ' || (chr >= '\t' && chr <= '\r');
}

constexpr bool is_digit(char chr)
{
    return chr >= '0' && chr <= '9';
}

// ASCII from the blank to the tilde.
constexpr bool is_visible(char chr)
{
    return chr >= ' ' && chr <= '~';
}

// A byte that goes on with the character that an earlier byte began.
constexpr bool is_continuation(char chr)
{
    return (static_cast<unsigned char>(chr) & 0xC0U) == 0x80U;
}

// Whether the character has to do with the direction of writing alone: marks, embeddings, overrides
// and isolates, which have the property Bidi_Control (Unicode Character Database, PropList.txt).
constexpr bool turns_direction(char32_t code)
{
    return code == 0x061C || code == 0x200E || code == 0x200F ||
           (code >= 0x202A && code <= 0x202E) || (code >= 0x2066 && code <= 0x2069);
}

// In characters.
inline std::size_t width_of(std::string_view text)
{
    return qel::utf8_cnt(text);
}

// How many bytes at the beginning are visible ASCII.
inline std::size_t visible_prefix(std::string_view text)
{
    constexpr std::uint64_t ones = 0x0101010101010101U;
    std::uint64_t bytes = 0;
    std::size_t len = 0;
    for (; len + sizeof bytes <= text.size(); len += sizeof bytes) {
        std::memcpy(&bytes, text.data() + len, sizeof bytes);
        // Any other byte sets a high bit, which may carry on.
        if (((bytes | (bytes - ones * ' ') | (bytes + ones)) & ones * 0x80U) != 0)
            break;
    }
    while (len < text.size() && is_visible(text[len]))
        ++len;
    return len;
}

inline bool is_visible_ascii(std::string_view text)
{
    return visible_prefix(text) == text.size();
}

constexpr std::string_view trim_front(std::string_view text)
{
    while (!text.empty() && is_space(text.front()))
        text.remove_prefix(1);
    return text;
}

constexpr std::string_view trim(std::string_view text)
{
    while (!text.empty() && is_space(text.back()))
        text.remove_suffix(1);
    return trim_front(text);
}

// Whether the digits of a number end with its check digit: every second one from the right counts
// twice (ISO/IEC 7812-1). value_at(i) is the i-th of count digits as a number.
template <typename ValueAt>
constexpr bool has_check_digit(std::size_t count, ValueAt value_at)
{
    unsigned sum = 0;
    for (std::size_t i = 0; i < count; ++i) {
        const unsigned value = value_at(count - 1 - i);
        const unsigned weighted = i % 2 == 0 ? value : 2 * value;
        sum += weighted > 9 ? weighted - 9 : weighted;
    }
    return sum % 10 == 0;
}

} // namespace qel_rcpt

#endif
