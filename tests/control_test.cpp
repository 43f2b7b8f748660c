// Control characters of a record on the way to a printer.
#include "test_record.hpp"

#include <qel_rcpt.h>
#include <qel_rcpt.hpp>

#include <algorithm>
#include <string>
#include <string_view>

namespace
{

using test::borrowed;
using test::record;

std::string stripped(const char *key, const std::string &value)
{
    const record kvs{{key, value.c_str()}};
    Qel_rcpt_strip_control(kvs);
    return borrowed(Qel_hash_dict_get_direct(kvs, key)).value_or("(absent)");
}

TEST(StripControl, LeavesGapsForWhiteSpaceAndMarksForTheRest)
{
    const struct {
        std::string value, expected;
    } cases[] = {
        {"", ""},
        {"Visa 1.00", "Visa 1.00"},
        {"A\r\nTOTAL\t5", "A  TOTAL 5"},
        {"\v\f\x7F", "  ?"},
        {"\x1B@\x10\x14\x01", "?@???"},
        {"caf\u00E9 \u20AC \U0001F600", "caf\u00E9 \u20AC \U0001F600"},
        {"\u0080\u0085\u009B31m\u009F\u00A0", "? ?31m?\u00A0"},
        {"\x9B"
         "31m\xA0",
         "?31m\xA0"},                     // no UTF-8, which some printers take
        {"\xC2\n\xE2\x80", "\xC2 \xE2?"}, // cut short
        {"\\n \\u001b", "\\n \\u001b"},   // no JSON, so no escapes
    };
    for (const auto &[value, expected] : cases)
        EXPECT_EQ(stripped("custref", value), expected) << value;
}

TEST(StripControl, KnowsTheEscapesOfDocuments)
{
    const struct {
        std::string value, expected;
    } cases[] = {
        {"[\n\t{\"a\": 1}\r\n]", "[  {\"a\": 1}  ]"},
        {R"("\n\r\t\f\b")", R"("    ?")"},
        {R"("\u001b\u001B\u0010\u007f\u009b\u0085\u000A\u0000")", R"("????? )"
                                                                  R"( ?")"},
        {R"("\\n\\\n\/\"\u00e9\u20ac\ud83d\ude00")", R"("\\n\\ \/\"\u00e9\u20ac\ud83d\ude00")"},
        {R"("\u00")", R"("\u00")"},
        {R"("\u001)", R"("\u001)"},
        {R"("\u00g1")", R"("\u00g1")"},
        {"\\", "\\"},
        {"\"\\\x1B\\\u00C0\"", "\"\\?\\\u00C0\""},
        {"[// of \"two\n\"a\",// more\r\"//\\n\"]//", "[ \"a\", \"// \"] "},
        {"[/* \"\n */\"\\n\"]", "[ \" \"]"},
        {"[/*/\n", "[/*/ "}, // without an end, so that it stays unreadable
    };
    for (const char *key : {"line_items", "moneris_rcpt_data", "LINE_ITEMS"}) {
        for (const auto &[value, expected] : cases)
            EXPECT_EQ(stripped(key, value), expected) << value;
    }
}

// Nothing that a printer obeys comes out of any key, and no line but the layout's own.
TEST(StripControl, MakesReceiptsOfTheirOwnLinesOnly)
{
    const std::string hostile = "\x1B@\x10\x14\x01\nTOTAL: 0.01\r\n\u009B\x7F";
    const std::string escaped = R"(\u001b@\u0010\nTOTAL: 0.01\u009b)";
    qel::rcpt::record kvs{{"amount", "5.00"}, {"action", "sale"}, {"code", "AUTH"}};
    for (const char *key : {"merch_name", "cardholdername", "custref", "printdata", "order_notes",
                            "rcpt_user_notes", "ordernum", "rcpt_emv_name", "auth"})
        kvs.set(key, hostile);
    kvs.set("rcpt_custom", "Table:\"4" + hostile + "\"");
    kvs.set("line_items", R"([{"name": ")" + escaped + R"(", "unitprice": "5.00", "notes": ")" +
                              escaped + R"("}])");
    kvs.strip_control();
    for (const auto &industry : {QEL_RCPT_IND_RETAIL, QEL_RCPT_IND_ECOMM}) {
        Qel_rcpt_config_t config{};
        config.industry = industry;
        const auto native = const_cast<Qel_hash_dict_t *>(kvs.native());
        for (Qel_hash_dict_t *made : {Qel_rcpt_generate_plain(native, &config, 48, "|"),
                                      Qel_rcpt_generate_plain_moneris(native, &config)}) {
            const qel::dict blocks(made);
            ASSERT_GT(Qel_hash_dict_num_keys(made), 3U);
            for (const auto &[key, value] : qel::pairs(made)) {
                std::string text(value);
                for (size_t at = 0; (at = text.find("\r\n", at)) != std::string::npos;)
                    text.replace(at, 2, "|"); // the line break of the Moneris layouts
                EXPECT_TRUE(std::ranges::none_of(
                    text, [](unsigned char byte) { return byte < 0x20 || byte == 0x7F; }))
                    << key << text;
                EXPECT_EQ(text.find("\u009B"), std::string::npos) << key;
                EXPECT_EQ(("|" + text).find("|TOTAL: 0.01"), std::string::npos) << key << text;
            }
        }
    }
    Qel_rcpt_strip_control(nullptr);
}

} // namespace
