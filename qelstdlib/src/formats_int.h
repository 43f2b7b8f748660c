// What the JSON and the XML sources share: characters, new text and the links of a tree.
#ifndef QELSTDLIB_FORMATS_INT_H
#define QELSTDLIB_FORMATS_INT_H

#include "new_text.h"
#include "qelstdlib.hpp"

#include <utf8.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <iterator>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace formats
{

inline constexpr char32_t replacement_char = 0xFFFD;
inline constexpr std::string_view replacement_utf8 = "\xEF\xBF\xBD";

// Text as the C interface returns it; its length goes to *len unless len is absent.
inline char *finish(qel::text_builder &out, std::size_t *len)
{
    if (len != nullptr) {
        *len = out.size();
    }
    return out.release();
}

// Text is looked at in stretches that the processor compares all at once. A comparison gives, for
// each byte, all bits or none.
inline constexpr std::size_t stretch_len = 16;
using stretch [[gnu::vector_size(stretch_len)]] = signed char;

inline bool has_any(stretch bytes)
{
    std::array<std::uint64_t, 2> halves;
    static_assert(sizeof halves == sizeof bytes);
    std::memcpy(halves.data(), &bytes, sizeof bytes);
    return (halves[0] | halves[1]) != 0;
}

// Control characters, and bytes outside ASCII, which are negative.
inline stretch below_space(stretch bytes)
{
    return bytes < ' ';
}

// Whether no byte of the text is one of those that find_special finds in a stretch. The bytes after
// the text, as far as its last stretch goes, are looked at too.
template <typename Finder>
bool is_plain_text(const char *text, std::size_t len, Finder find_special)
{
    for (std::size_t at = 0; at < len; at += stretch_len) {
        stretch bytes;
        std::memcpy(&bytes, text + at, sizeof bytes);
        if (has_any(find_special(bytes))) {
            return false;
        }
    }
    return true;
}

// Begins a line that is two spaces a level of depth further in.
inline void begin_line(qel::text_builder &out, std::size_t depth)
{
    out.append('\n').append(2 * depth, ' ');
}

// The number of ASCII bytes at the start, or somewhat fewer: whole words are looked at.
inline std::size_t ascii_words(std::string_view text)
{
    constexpr std::uint64_t high_bits = 0x8080808080808080U;
    std::uint64_t word = 0;
    std::size_t len = 0;
    while (len + sizeof word <= text.size()) {
        std::memcpy(&word, text.data() + len, sizeof word);
        if ((word & high_bits) != 0) {
            break;
        }
        len += sizeof word;
    }
    return len;
}

// The number of bytes before the first broken one.
inline std::size_t valid_prefix(std::string_view text)
{
    const char *const begin = text.data() + ascii_words(text);
    const char *const end = text.data() + text.size();
    return static_cast<std::size_t>(utf8::find_invalid(begin, end) - text.data());
}

inline bool begins_valid(std::string_view text)
{
    constexpr std::size_t longest_char = 4;
    return valid_prefix(text.substr(0, longest_char)) > 0;
}

// Takes the first character off the text; a run of broken bytes is one absent character.
inline std::optional<char32_t> take_char(std::string_view &text)
{
    if (begins_valid(text)) {
        const char *after = text.data();
        const char32_t chr = utf8::unchecked::next(after);
        text.remove_prefix(static_cast<std::size_t>(after - text.data()));
        return chr;
    }
    do {
        text.remove_prefix(1);
    } while (!text.empty() && !begins_valid(text));
    return std::nullopt;
}

// Takes the bytes for which is_plain holds off the front of the text and appends them.
template <typename Predicate>
void append_plain(qel::text_builder &out, std::string_view &text, Predicate is_plain)
{
    char *const copy = out.reserve(text.size());
    std::size_t len = 0;
    for (; len < text.size() && is_plain(text[len]); ++len) {
        copy[len] = text[len];
    }
    out.extend_to(copy + len);
    text.remove_prefix(len);
}

} // namespace formats

#endif
