// Texts that a writer of markup or JSON must not let through as they are.
#ifndef TEST_HOSTILE_TEXT_HPP
#define TEST_HOSTILE_TEXT_HPP

#include <cstddef>
#include <iterator>
#include <random>
#include <string>
#include <string_view>

namespace test
{

// A piece of hostile text and what a reader of the written text must see in its place.
struct hostile_piece {
    std::string_view raw, json, xml;
    bool broken = false; // adjacent ones make one run
};

inline constexpr std::string_view bad = "\uFFFD";
inline constexpr hostile_piece hostile_pieces[] = {
    {"<&>\"'\\", "<&>\"'\\", "<&>\"'\\"},
    {"]]>&amp;\\u0041/", "]]>&amp;\\u0041/", "]]>&amp;\\u0041/"},
    {" \r\n\t", " \r\n\t", " \r\n\t"},
    {"\x01", "\x01", bad},
    {"\x1F\x7F", "\x1F\x7F", "\uFFFD\x7F"},
    {"\u00E9\u20AC\U0010FFFF", "\u00E9\u20AC\U0010FFFF", "\u00E9\u20AC\U0010FFFF"},
    {"\uFFFE", "\uFFFE", bad},
    {"\uFFFF", "\uFFFF", bad},
    {"\xFF", bad, bad, true},
    {"\xF5\x80\x80\x80", bad, bad, true}, // above U+10FFFF
    {"\xC0\xAF", bad, bad, true},         // overlong
    {"\xED\xA0\x80", bad, bad, true},     // surrogate
    {"\xE2\x82", bad, bad, true},         // cut short
};

struct hostile_text {
    std::string raw, json, xml;
};

// At most max_pieces of them.
inline hostile_text random_text(std::mt19937 &random, std::size_t max_pieces = 7)
{
    hostile_text text;
    bool after_broken = false;
    for (std::size_t count = random() % (max_pieces + 1); count > 0; --count) {
        const hostile_piece &next = hostile_pieces[random() % std::size(hostile_pieces)];
        text.raw += next.raw;
        if (!(next.broken && after_broken)) {
            text.json += next.json;
            text.xml += next.xml;
        }
        after_broken = next.broken;
    }
    return text;
}

} // namespace test

#endif
