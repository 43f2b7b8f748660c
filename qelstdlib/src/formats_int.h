// What the JSON and the XML sources share: characters, new text and the links of a tree.
#ifndef QELSTDLIB_FORMATS_INT_H
#define QELSTDLIB_FORMATS_INT_H

#include "new_text.h"
#include "qelstdlib.hpp"

#include <utf8.h>

#include <algorithm>
#include <array>
#include <cstddef>
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
    if (len != nullptr)
        *len = out.size();
    return out.release();
}

// Begins a line that is two spaces a level of depth further in.
inline void begin_line(qel::text_builder &out, std::size_t depth)
{
    out.append('\n').append(2 * depth, ' ');
}

inline bool begins_valid(std::string_view text)
{
    constexpr std::size_t longest_char = 4;
    const std::string_view front = text.substr(0, longest_char);
    return utf8::find_invalid(front.begin(), front.end()) != front.begin();
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
    const char *const special = std::find_if_not(text.data(), text.data() + text.size(), is_plain);
    const auto len = static_cast<std::size_t>(special - text.data());
    out.append(text.substr(0, len));
    text.remove_prefix(len);
}

} // namespace formats

#endif
