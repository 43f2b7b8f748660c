#include "qel_rcpt_plain.h"

#include "test_record.hpp"

#include <qelstdlib.hpp>

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <iterator>
#include <limits>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

namespace
{

using test::absent;
using test::record;
using lines = std::vector<std::string>;

// A retail merchant with English copies for itself.
constexpr Qel_rcpt_config_t make_config(Qel_rcpt_lang_t customer, std::uint32_t country,
                                        std::uint32_t currency)
{
    return {customer, QEL_RCPT_LANG_EN, country, currency, QEL_RCPT_IND_RETAIL, nullptr};
}

// A line list of a given width, and what stands in it.
class sheet
{
  public:
    explicit sheet(std::size_t width) : list_(Qel_list_str_create(QEL_LIST_STR_NONE))
    {
        info.line_len = width;
        Qel_rcpt_setup_rcpt_attrs(&info.attrs, nullptr, true);
    }

    Qel_list_str_t *list() { return list_.get(); }
    [[nodiscard]] lines written() const
    {
        lines all;
        for (std::size_t i = 0; i < Qel_list_str_len(list_.get()); ++i)
            all.emplace_back(Qel_list_str_at(list_.get(), i));
        return all;
    }

    Qel_rcpt_plain_t info{};

  private:
    qel::list_str list_;
};

using format_text = decltype(&Qel_rcpt_plain_format_left);
constexpr format_text left = Qel_rcpt_plain_format_left;
constexpr format_text center = Qel_rcpt_plain_format_center;
constexpr format_text right = Qel_rcpt_plain_format_right;

lines formatted(format_text format, std::size_t width, const char *text)
{
    sheet page(width);
    format(&page.info, text, page.list());
    return page.written();
}

// Left prefix, left text, right prefix, right text.
using four_parts = std::array<const char *, 4>;

lines formatted(std::size_t width, const four_parts &parts)
{
    sheet page(width);
    Qel_rcpt_plain_format_left_right(&page.info, parts[0], parts[1], parts[2], parts[3],
                                     page.list());
    return page.written();
}

TEST(PlainLayout, BreaksAndAlignsText)
{
    struct {
        format_text format;
        std::size_t width;
        const char *text;
        lines expected;
    } const cases[] = {
        // where the padding goes
        {left, 10, "abc", {"abc"}},
        {right, 10, "abc", {"       abc"}},
        {center, 10, "abc", {"   abc"}},
        {center, 5, "abcde", {"abcde"}},
        {center, 10, "HELLO WORLD", {"  HELLO", "  WORLD"}},
        {right, 6, "été", {"   été"}},
        // white space around the text
        {center, 9, "\t abc \r\n", {"   abc"}},
        {left, 9, " \t\r\n", {}},
        {right, 9, "", {}},
        {center, 9, nullptr, {}},
        // breaks between words: the space in the last column is one, the one behind it is not
        {left, 10, "abcdefghi jkl", {"abcdefghi", "jkl"}},
        {left, 10, "ab cdefghi jkl", {"ab", "cdefghi", "jkl"}},
        {left, 10, "abcdefghij klm", {"abcdefghij", "klm"}},
        // several spaces at the break: one is the break, those before it stay on the line
        {left, 6, "aaaa  bbbb", {"aaaa ", "bbbb"}},
        {right, 6, "aaaa  bbbb", {" aaaa ", "  bbbb"}},
        {center, 6, "aaaa  bbbb", {"aaaa ", " bbbb"}},
        {left, 5, "aaaa  bbbb", {"aaaa", "bbbb"}},
        // cuts within a word
        {left, 10, "abcdefghijklmn", {"abcdefghij", "klmn"}},
        {right, 10, "abcdefghijklmn", {"abcdefghij", "      klmn"}},
        {left, 1, "abc", {"a", "b", "c"}},
        // é takes two bytes and € three: what fits is counted in characters, where to break is
        // looked for among as many bytes, and a character stays whole
        {left, 4, "ééééé", {"éé", "ééé"}},
        {left, 5, "éééééé", {"éé", "éééé"}},
        {left, 5, "aé€bcdef", {"aé", "€bc", "def"}},
        {left, 4, "ééé bbb", {"éé", "é", "bbb"}},
        {left, 2, "€€€", {"€", "€€"}},
        {left, 0, "€€", {"€", "€"}},
        // continuation bytes that belong to no character stay together and have no width
        {left, 2, "\x80\x80\x80xyz", {"\x80\x80\x80", "xy", "z"}},
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(testing::Message() << c.width << " columns: " << (c.text ? c.text : "absent"));
        EXPECT_EQ(formatted(c.format, c.width, c.text), c.expected);
    }
}

TEST(PlainLayout, PutsTwoSidesOnALine)
{
    struct {
        std::size_t width;
        four_parts parts;
        lines expected;
    } const cases[] = {
        // the gap, in characters
        {20, {nullptr, "Total:", nullptr, "$12.34"}, {"Total:        $12.34"}},
        {13, {nullptr, "Total:", nullptr, "$12.34"}, {"Total: $12.34"}},
        {12, {nullptr, "Total:", nullptr, "$12.34"}, {"Total:", "      $12.34"}},
        {8, {nullptr, "é", nullptr, "€2"}, {"é     €2"}},
        {10, {" A: ", "\t1 ", " ", " 2\n"}, {"A: 1     2"}},
        {0, {nullptr, "a", nullptr, "b"}, {"a", "b"}},
        // two labelled texts
        {25, {"Auth:", "123456", "Batch:", "42"}, {"Auth: 123456    Batch: 42"}},
        {22, {"Auth:", "123456", "Batch:", "42"}, {"Auth: 123456 Batch: 42"}},
        {21,
         {"Auth:", "123456", "Batch:", "42"},
         {"Auth:          123456", "Batch:             42"}},
        {10, {"Auth:", "12345678", "B:", "1"}, {"Auth:", "  12345678", "B:       1"}},
        // of which the left one counts characters and the right one bytes
        {12, {"Né:", "é1", "B:", "12"}, {"Né: é1 B: 12"}},
        {13, {"B:", "12", "Né:", "é1"}, {"B:         12", "Né:        é1"}},
        {14, {"B:", "12", "Né:", "é1"}, {"B: 12   Né: é1"}},
        // one labelled text, or none
        {12, {"Cola", "(2)", nullptr, "$5"}, {"Cola (2)  $5"}},
        {10, {"Cola", "(2)", nullptr, "$5.00"}, {"Cola (2)", "     $5.00"}},
        {12, {nullptr, nullptr, "B:", "1"}, {"        B: 1"}},
        {12, {"Auth:", "", "B:", "1"}, {"        B: 1"}},
        {12, {"Auth:", "1", "B:", " "}, {"Auth: 1"}},
        {12, {"Auth:", nullptr, "B:", nullptr}, {}},
        // sides that take several lines
        {10, {nullptr, "alpha beta gamma", nullptr, "$1"}, {"alpha", "      beta", "  gamma $1"}},
        {6, {nullptr, "aaaa  bb", nullptr, "$1"}, {"aaaa", " bb $1"}},
        {10, {nullptr, "abc", nullptr, "one two three"}, {"abc", "   one two", "     three"}},
    };
    for (const auto &c : cases)
        EXPECT_EQ(formatted(c.width, c.parts), c.expected) << c.width << " columns";
}

TEST(PlainLayout, PutsAPrefixBeforeAText)
{
    const auto prefixed = [](const char *prefix, const char *text) {
        sheet page(8);
        Qel_rcpt_plain_format_left_prefix(&page.info, prefix, text, page.list());
        return page.written();
    };
    EXPECT_EQ(prefixed("ODD", "0123456789"), lines({"ODD", "01234567", "89"}));
    EXPECT_EQ(prefixed("TVR", nullptr), lines({"TVR"}));
    EXPECT_EQ(prefixed("", "8000"), lines({"8000"}));
    EXPECT_EQ(prefixed(nullptr, " "), lines());
}

TEST(PlainLayout, WritesMoney)
{
    const Qel_rcpt_config_t euro = make_config(QEL_RCPT_LANG_FR, 0, 978);
    const Qel_rcpt_config_t quebec = make_config(QEL_RCPT_LANG_FR, 124, 124);
    struct {
        std::size_t width;
        const char *label;
        const char *amount;
        bool negative;
        const Qel_rcpt_config_t *config;
        lines expected;
    } const cases[] = {
        {20, "Tip:", "1.5", false, nullptr, {"Tip:           $1.50"}},
        {20, "Tip:", "1.5", true, nullptr, {"Tip:         - $1.50"}},
        {20, "Tip:", "-1.50", true, nullptr, {"Tip:        - $-1.50"}},
        {20, "Tip:", "0", false, nullptr, {"Tip:           $0.00"}},
        {20, "Tip:", "1.5", true, &euro, {"Tip:         - €1,50"}},
        {20, "Tip:", "1.5", true, &quebec, {"Tip:         - 1.50$"}},
        {10, "Sales Tax:", "1", false, nullptr, {"Sales Tax:", "     $1.00"}},
        {10, nullptr, "1", false, nullptr, {"     $1.00"}},
        {20, "Tip:", "", true, nullptr, {}},
        {20, "Tip:", nullptr, true, nullptr, {}},
        {20, "Tip:", "1.5 or so", true, nullptr, {}},
    };
    for (const auto &c : cases) {
        sheet page(c.width);
        Qel_rcpt_setup_rcpt_attrs(&page.info.attrs, c.config, true);
        Qel_rcpt_plain_add_money(&page.info, c.label, c.amount, page.list(), c.negative);
        EXPECT_EQ(page.written(), c.expected) << qel::view(c.label) << qel::view(c.amount);
    }
}

TEST(PlainLayout, HasAWidestLine)
{
    constexpr std::size_t widest = 65535;
    for (const std::size_t width : {widest, widest + 1, std::numeric_limits<std::size_t>::max()}) {
        EXPECT_EQ(formatted(right, width, "ab"), lines({std::string(widest - 2, ' ') + "ab"}));
        EXPECT_EQ(formatted(center, width, "abc"),
                  lines({std::string((widest - 3) / 2, ' ') + "abc"}));
        EXPECT_EQ(formatted(width, {nullptr, "a", nullptr, "b"}),
                  lines({"a" + std::string(widest - 2, ' ') + "b"}));
        const record signing("u_need_signature:1");
        EXPECT_EQ(qel::view(qel::text(Qel_rcpt_get_signature_line(signing, width))),
                  "X" + std::string(widest - 1, '_'));
    }
}

TEST(PlainLayout, StoresABlock)
{
    struct {
        const char *line_break;
        lines lines_in;
        test::result expected;
    } const cases[] = {
        {"\r\n", {"one", "", "Two"}, "ONE\r\n\r\nTWO"},
        {"\n", {"  Café \t", "größe"}, "  CAFÉ \t\nGRÖßE"},
        {"|", {"", "a", ""}, "|A|"},
        {nullptr, {"a", "b"}, "AB"},
        {"\r\n", {}, absent},
        {"\r\n", {""}, absent},
        {"\r\n", {"", " ", "\t"}, absent},
    };
    for (const auto &c : cases) {
        sheet page(10);
        const qel::dict blocks(Qel_hash_dict_create(1, 75, QEL_HASH_DICT_KEYS_ORDERED));
        page.info.blocks = blocks.get();
        page.info.line_break = c.line_break;
        for (const std::string &line : c.lines_in)
            Qel_list_str_insert(page.list(), line.c_str());
        Qel_rcpt_plain_add_block(&page.info, "Notes", page.list());
        EXPECT_EQ(test::borrowed(Qel_hash_dict_get_direct(blocks.get(), "Notes")), c.expected);
    }
}

TEST(PlainLayout, TakesAbsentArguments)
{
    sheet page(10);
    for (const Qel_rcpt_plain_t *info :
         {static_cast<const Qel_rcpt_plain_t *>(nullptr), &std::as_const(page.info)}) {
        Qel_list_str_t *list = info == nullptr ? page.list() : nullptr;
        for (const format_text format : {left, center, right})
            format(info, "text", list);
        Qel_rcpt_plain_format_left_right(info, "a", "b", "c", "d", list);
        Qel_rcpt_plain_format_left_prefix(info, "a", "b", list);
        Qel_rcpt_plain_add_money(info, "a", "1", list, false);
        Qel_rcpt_plain_add_block(info, "name", list);
    }
    EXPECT_TRUE(page.written().empty());
    left(&page.info, "text", page.list());
    Qel_rcpt_plain_add_block(&page.info, "name", page.list()); // into no dictionary
}

std::string repeated(std::string_view piece, std::size_t count)
{
    std::string text;
    for (text.reserve(piece.size() * count); count > 0; --count)
        text += piece;
    return text;
}

// Ten megabytes each: recursion or copying the rest for every line would not come to an end.
TEST(PlainLayout, WrapsLongTexts)
{
    const std::pair<std::string, std::size_t> cases[] = {
        {std::string(10'000'000, 'x'), 1'000'000},     {repeated("abcdef ", 1'500'000), 1'500'000},
        {repeated("€", 3'000'000), 999'998}, // three a line, and nine on the last one
        {"a" + std::string(10'000'000, ' ') + "b", 2}, {"a" + std::string(10'000'000, '\x80'), 1},
    };
    for (const auto &[text, count] : cases) {
        sheet page(10);
        right(&page.info, text.c_str(), page.list());
        EXPECT_EQ(Qel_list_str_len(page.list()), count) << text.substr(0, 10);
    }
}

} // namespace
