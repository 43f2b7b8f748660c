// What the fuzz targets share: taking an input apart, saying what must hold, and judging texts.
#ifndef QELRCPT_FUZZ_FUZZ_HPP
#define QELRCPT_FUZZ_FUZZ_HPP

#include <qelstdlib.hpp>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace fuzz
{

// Ends the run, with the input as a finding, unless what must hold does.
inline void require(bool holds, const char *what)
{
    if (holds)
        return;
    std::fprintf(stderr, "does not hold: %s\n", what);
    std::abort();
}

// Between the texts of an input. The samples of the corpora are nearly readable with it.
inline constexpr char separator = '\x1E';

// An input: single bytes and then texts, from the front. Past its end come zeros and empty texts.
class input
{
  public:
    input(const std::uint8_t *data, std::size_t size)
        : rest_(reinterpret_cast<const char *>(data), size)
    {
    }

    bool empty() const { return rest_.empty(); }

    unsigned byte()
    {
        if (rest_.empty())
            return 0;
        const auto first = static_cast<unsigned char>(rest_.front());
        rest_.remove_prefix(1);
        return first;
    }

    // A byte as a small number: '0' is 0, so that samples can be typed.
    std::uint8_t number() { return static_cast<std::uint8_t>(byte() - '0'); }

    // Up to the next separator, which is dropped; without NULs, as the interfaces take it.
    std::string text()
    {
        const std::string_view whole = rest_.substr(0, rest_.find(separator));
        rest_.remove_prefix(std::min(whole.size() + 1, rest_.size()));
        return std::string(whole.substr(0, whole.find('\0')));
    }

    std::vector<std::string> texts()
    {
        std::vector<std::string> all;
        while (!empty())
            all.push_back(text());
        return all;
    }

    // Of the bytes that are left.
    unsigned sum() const
    {
        unsigned total = 0;
        for (const char byte : rest_)
            total += static_cast<unsigned char>(byte);
        return total;
    }

    // All that is left, in an allocation of exactly its size: reading past its end is seen.
    std::vector<char> bytes() { return {rest_.begin(), rest_.end()}; }

  private:
    std::string_view rest_;
};

inline std::string taken(char *new_text)
{
    return qel::text(new_text).get();
}

using pairs = std::vector<std::pair<std::string, std::string>>;

inline pairs pairs_of(const Qel_hash_dict_t *dict)
{
    pairs all;
    for (const auto [key, val] : qel::pairs(dict))
        all.emplace_back(key, val);
    return all;
}

inline bool is_continuation(char chr)
{
    return (static_cast<unsigned char>(chr) & 0xC0U) == 0x80U;
}

inline bool is_white_space(char chr)
{
    return chr == ' ' || (chr >= '\t' && chr <= '\r');
}

// Takes one character of well-formed UTF-8 off the text; absent (a surrogate) when it is none.
inline char32_t take_char(std::string_view &text)
{
    constexpr char32_t absent = 0xD800;
    const auto lead = static_cast<unsigned char>(text.front());
    const std::size_t len = lead < 0x80 ? 1 : lead < 0xE0 ? 2 : lead < 0xF0 ? 3 : 4;
    if ((lead >= 0x80 && lead < 0xC2) || lead > 0xF4 || text.size() < len)
        return absent;
    char32_t chr = len == 1 ? lead : lead & (0x7FU >> len);
    for (std::size_t i = 1; i < len; ++i) {
        if (!is_continuation(text[i]))
            return absent;
        chr = chr << 6U | (static_cast<unsigned char>(text[i]) & 0x3FU);
    }
    const char32_t least[] = {0, 0, 0x80, 0x800, 0x10000};
    const bool is_surrogate = chr >= 0xD800 && chr <= 0xDFFF;
    if (chr < least[len] || chr > 0x10FFFF || is_surrogate)
        return absent;
    text.remove_prefix(len);
    return chr;
}

// Text that every form can show as it is: well-formed, without control characters and
// noncharacters.
inline bool is_clean(std::string_view text)
{
    while (!text.empty()) {
        const char32_t chr = take_char(text);
        const bool is_control = chr < 0x20 || (chr >= 0x7F && chr < 0xA0);
        const bool is_noncharacter =
            (chr & 0xFFFEU) == 0xFFFE || (chr >= 0xFDD0 && chr <= 0xFDEF) || chr == 0xD800;
        if (is_control || is_noncharacter)
            return false;
    }
    return true;
}

inline bool is_valid_utf8(std::string_view text)
{
    while (!text.empty()) {
        if (take_char(text) == 0xD800)
            return false;
    }
    return true;
}

// As is_clean, of text that may have several lines.
inline bool is_clean_text(std::string text)
{
    for (char &chr : text)
        chr = chr == '\t' || chr == '\n' || chr == '\r' ? ' ' : chr;
    return is_clean(text);
}

// The text without its white space.
inline std::string visible(std::string_view text)
{
    std::string kept;
    std::ranges::remove_copy_if(text, std::back_inserter(kept), is_white_space);
    return kept;
}

} // namespace fuzz

#endif
