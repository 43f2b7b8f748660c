// What messages must not show, to whoever reads a log or a terminal.
#include "messages.h"
#include "writing/safe_text.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <algorithm>
#include <string>

namespace
{

struct example {
    std::string text, shown;
};

TEST(Messages, HideCardNumbersAndTracks)
{
    const example cases[] = {
        {"line 12345678901:1:2", "line 12345678901:1:2"}, // 11 digits
        {"123456789012", "123456**9012"},
        {"'4111111111111111' is unknown", "'411111******1111' is unknown"},
        {"a4111111111111111b5500005555555559", "a411111******1111b550000******5559"},
        {"4111 1111 1111 1111 2026", "4111 11** **** 1111 2026"},
        {"12 3782-822463-10005.", "12 3782-82****-*0005."},
        {"4111 1111 1111 1112", "4111 1111 1111 1112"}, // no card's check digit
        {"2026-11-23 06:30:11", "2026-11-23 06:30:11"},
        {"4111--1111--1111--1111", "4111--1111--1111--1111"},
        {"%B4111111111111111^DOE/JANE^2512101123400000?;4111111111111111=2512101123400000?",
         "%***?;***?"},
        {"key '%b4111111111111111^DOE", "key '%***"},
        {";4111111111111111=2512", ";***"},
        {"; 4111111111111111=2512?", "; 411111******1111=2512?"},
        {"100%a; 5 of 6?", "100%a; 5 of 6?"},
        {"'a;5b' (did you mean 'a5'?)", "'a;5b' (did you mean 'a5'?)"},
        {"\u00e9" + std::string(30, '7'), "\u00e9"
                                          "777777" +
                                              std::string(20, '*') + "7777"},
    };
    for (const auto &[text, shown] : cases) {
        EXPECT_EQ(tool::masked(text), shown);
        EXPECT_EQ(tool::masked(shown), shown) << "masked again";
    }
}

// The end of a long text is left out, but not before what it hides was seen.
TEST(Messages, QuoteTextsThatAreFitToBeShown)
{
    const std::string blanks(55, ' ');
    const example cases[] = {
        {"", "''"},
        {"a\x1b\n\x7f", "'a?\?\?'"},
        {"\xff", "'\uFFFD'"},
        {std::string(60, 'a'), "'" + std::string(60, 'a') + "'"},
        {std::string(61, 'a'), "'" + std::string(60, 'a') + "...'"},
        {std::string(59, 'a') + "\u00e9", "'" + std::string(59, 'a') + "...'"},
        {blanks + "4111111111111111", "'" + blanks + "41111...'"},
        {std::string(49, ' ') + "4111111111111111", "'" + std::string(49, ' ') + "411111*****...'"},
        {std::string(58, 'a') + ";4111111111111111=25121011?",
         "'" + std::string(58, 'a') + ";*...'"},
    };
    for (const auto &[text, shown] : cases)
        EXPECT_EQ(tool::in_quotes(text), shown);
}

TEST(Messages, DoNotActOnATerminal)
{
    const example cases[] = {
        {"A\tB\r\nC\n\u00e9\u20ac", "A\tB\r\nC\n\u00e9\u20ac"},
        {"\x1b[2J\x07\rA\x7f", "^[[2J^G^MA^?"},
        {"\u0080\u009f\u00a0", "\uFFFD\uFFFD\u00a0"},
        {"\xff\xe2\x80", "\uFFFD\uFFFD"},
        // Total 5.00 must not read 00.5.
        {"\u2029\u202a\u202b\u202c\u202d\u202e\u202f",
         "\u2029\uFFFD\uFFFD\uFFFD\uFFFD\uFFFD\u202f"},
        {"\u2065\u2066\u2067\u2068\u2069\u206a", "\u2065\uFFFD\uFFFD\uFFFD\uFFFD\u206a"},
        {"\u200d\u200e\u200f\u2010", "\u200d\uFFFD\uFFFD\u2010"},
        {"\u061b\u061c\u061d\u0627", "\u061b\uFFFD\u061d\u0627"},
        {"\u20ac\u2105\U0001F35E", "\u20ac\u2105\U0001F35E"},
    };
    for (const auto &[text, shown] : cases)
        EXPECT_EQ(tool::for_terminal(text), shown);
}

// Read back by another's reader, it is what was written; broken bytes are one U+FFFD or more.
TEST(Messages, AreOneLineOfJson)
{
    const std::string surroundings[] = {"", "a", "1234567", "12345678", "123456789abcdef"};
    for (const std::string &before : surroundings) {
        for (const std::string &after : surroundings) {
            for (unsigned code = 0; code < 0x500; ++code) {
                std::string text = before;
                if (code >= 0x80) { // in two bytes
                    text += static_cast<char>(0xC0 | code >> 6U);
                    text += static_cast<char>(0x80 | (code & 0x3FU));
                } else {
                    text += static_cast<char>(code);
                }
                text += after;
                std::string json;
                tool::append_json_text(json, text);
                ASSERT_EQ(nlohmann::json::parse(json).get<std::string>(), text) << code;
                ASSERT_TRUE(std::ranges::none_of(json, [](char byte) {
                    return static_cast<unsigned char>(byte) < 0x20 || byte == 0x7F;
                })) << code;
            }
        }
    }
    const example broken[] = {
        {"1234567\xff", "1234567\uFFFD"},
        {"\xe2\x82", "\uFFFD"},
        {"\xed\xa0\x80z", "\uFFFD\uFFFD\uFFFDz"},
        {"\u20ac\U0001F600\xC2", "\u20ac\U0001F600\uFFFD"},
        {"\u0080\u009f\u00a0", "\u0080\u009f\u00a0"},
    };
    for (const auto &[text, shown] : broken) {
        std::string json;
        tool::append_json_text(json, text);
        EXPECT_EQ(nlohmann::json::parse(json).get<std::string>(), shown);
    }
    std::string json;
    tool::append_json_text(json, "\"\\\b\f\n\r\t\x1b\x7f\u009b");
    EXPECT_EQ(json, R"("\"\\\b\f\n\r\t\u001b\u007f\u009b")");
}

} // namespace
