// The text of a receipt on the paper: a printer in software reads the bytes, knows every command
// that it meets, and its cells are compared with the receipt.
#include "paper/code_points.h"
#include "printed.hpp"
#include "reading/record_file.h"

#include <utf8.h>

#include <algorithm>
#include <filesystem>
#include <functional>
#include <iterator>
#include <sstream>

namespace
{

using namespace test::printing;
using test::record;

// The lines of a copy's blocks, with a blank one between two blocks.
std::vector<std::string> lines_of(const Qel_hash_dict_t *blocks, std::string_view prefix)
{
    std::vector<std::string> lines;
    for (const auto [key, block] : qel::pairs(blocks)) {
        if (!qel::view(key).starts_with(prefix))
            continue;
        if (!lines.empty())
            lines.emplace_back();
        const qel::text feeds(Qel_strdup_replace_str(block, "\r\n", "\n"));
        std::string text = qel::text(Qel_strdup_replace_str(feeds.get(), "\r", "\n")).get();
        std::istringstream in(text + "\n");
        while (std::getline(in, text))
            lines.push_back(text);
    }
    return lines;
}

// Each character of the receipt is in its cell: itself if the page has it, else something of ASCII.
void expect_same_line(const std::string &expected, const paper::text_line &actual,
                      const paper::page &page)
{
    const std::u32string characters = utf8::utf8to32(expected);
    ASSERT_EQ(characters.size(), actual.cells.size()) << expected;
    for (std::size_t i = 0; i < characters.size(); ++i) {
        const char32_t wanted = characters[i];
        const bool is_on_page = std::ranges::find(page, wanted) != page.end() && wanted >= 0x20;
        if (is_on_page)
            EXPECT_EQ(actual.cells[i].character, wanted) << expected;
        else
            EXPECT_LT(actual.cells[i].character, U'\x7F') << expected;
    }
}

void expect_same_lines(const Qel_hash_dict_t *blocks, const char *prefix, const paper::roll &roll,
                       const paper::page &page)
{
    const std::vector<std::string> expected = lines_of(blocks, prefix);
    const auto actual = all_of<paper::text_line>(roll);
    ASSERT_EQ(expected.size(), actual.size()) << prefix;
    for (std::size_t i = 0; i < expected.size(); ++i)
        expect_same_line(expected[i], actual[i], page);
}

struct page_choice {
    Qel_rcpt_code_page_t page;
    Qel_rcpt_printer_lang_t language;
    const char *name; // iconv's
};

constexpr page_choice page_choices[] = {
    {QEL_RCPT_CODE_PAGE_DEFAULT, QEL_RCPT_PRINTER_LANG_ESCPOS, "CP858"},
    {QEL_RCPT_CODE_PAGE_437, QEL_RCPT_PRINTER_LANG_ESCPOS, "CP437"},
    {QEL_RCPT_CODE_PAGE_850, QEL_RCPT_PRINTER_LANG_ESCPOS, "CP850"},
    {QEL_RCPT_CODE_PAGE_ISO_8859_15, QEL_RCPT_PRINTER_LANG_ESCPOS, "ISO-8859-15"},
    {QEL_RCPT_CODE_PAGE_DEFAULT, QEL_RCPT_PRINTER_LANG_STARPRNT, "CP858"},
    {QEL_RCPT_CODE_PAGE_1252, QEL_RCPT_PRINTER_LANG_STARPRNT, "CP1252"},
};

using generator = std::function<Qel_hash_dict_t *(Qel_hash_dict_t *, const Qel_rcpt_config_t &)>;

TEST(Print, TheTextWithoutCommandsIsTheReceipt)
{
    const generator generators[] = {
        [](Qel_hash_dict_t *kvs, const Qel_rcpt_config_t &config) {
            return Qel_rcpt_generate_plain(kvs, &config, 32, "\n");
        },
        [](Qel_hash_dict_t *kvs, const Qel_rcpt_config_t &config) {
            return Qel_rcpt_generate_plain(kvs, &config, 48, "\r\n");
        },
        [](Qel_hash_dict_t *kvs, const Qel_rcpt_config_t &config) {
            return Qel_rcpt_generate_plain(kvs, &config, 64, "\r");
        },
        [](Qel_hash_dict_t *kvs, const Qel_rcpt_config_t &config) {
            return Qel_rcpt_generate_plain_moneris(kvs, &config);
        },
    };
    std::size_t copies = 0;
    for (const auto &file : std::filesystem::directory_iterator(QELRCPT_RECORDS)) {
        const tool::record_file sample = tool::read_record_file(file.path().string());
        Qel_rcpt_config_t config = tool::merchant_config({}, sample.merchant);
        config.industry = QEL_RCPT_IND_RETAIL;
        for (std::uint32_t lang = QEL_RCPT_LANG_EN; lang <= QEL_RCPT_LANG_IT; ++lang) {
            config.cust_lang = static_cast<Qel_rcpt_lang_t>(lang);
            const page_choice &choice = page_choices[copies / 2 % std::size(page_choices)];
            const generator &generate = generators[copies / 2 % std::size(generators)];
            const qel::dict blocks(generate(sample.record.get(), config));
            const Qel_rcpt_printer_t printer = {.language = choice.language,
                                                .code_page = choice.page};
            for (const bool is_custcopy : {true, false}) {
                const outcome printed =
                    print(blocks.get(), sample.record.get(), printer, is_custcopy);
                ASSERT_FALSE(printed.is_absent) << file.path();
                expect_same_lines(blocks.get(), is_custcopy ? "cust_" : "merch_",
                                  on_paper(printed, printer), paper::page_named(choice.name));
                ++copies;
            }
        }
    }
    EXPECT_GE(copies, 300U);
}

// Emphasis

// The lines that stand out: "*" in bold, "#" in bold and twice as high, "!" inverted, in front of
// their text without runs of blanks.
std::vector<std::string> emphasised(const paper::roll &roll)
{
    std::vector<std::string> found;
    for (const paper::text_line &line : all_of<paper::text_line>(roll)) {
        const auto is_ink = [](const paper::cell &one) { return one.character != U' '; };
        const auto first = std::ranges::find_if(line.cells, is_ink);
        if (first == line.cells.end())
            continue;
        for (auto at = first; at != line.cells.end(); ++at) // one style a line
            EXPECT_TRUE(at->bold == first->bold && at->height == first->height &&
                        at->inverted == first->inverted);
        for (auto at = line.cells.begin(); at != first; ++at)
            EXPECT_FALSE(at->inverted) << "a bar in front of the text";
        std::string text = paper::text_of(paper::text_line{{first, line.cells.end()}, line.align});
        const auto run = std::unique(text.begin(), text.end(),
                                     [](char a, char b) { return a == ' ' && b == ' '; });
        text.erase(run, text.end());
        if (first->inverted)
            found.push_back("!" + text);
        else if (first->bold)
            found.push_back((first->height == 2 ? "#" : "*") + text);
    }
    return found;
}

const record sale("action:sale,merch_name:Tillerbird Bakery,merch_addr1:4 Mill Street,amount:12.50,"
                  "code:AUTH,timestamp:1706041800");

struct emphasis_case {
    const char *what;
    std::string fields; // beside those of the sale
    std::vector<std::string> expected;
    std::size_t width = 30;
    Qel_rcpt_config_t config = {.country_code = 840, .currency_code = 840};
};

void expect_emphasis(const emphasis_case &one, const generator &generate)
{
    SCOPED_TRACE(one.what);
    record kvs;
    for (const auto [key, value] : qel::pairs(sale))
        Qel_hash_dict_insert(kvs, key, value);
    kvs.set(one.fields);
    const qel::dict blocks(generate(kvs, one.config));
    for (const Qel_rcpt_printer_t &printer : {Qel_rcpt_printer_t{}, star})
        EXPECT_EQ(emphasised(on_paper(print(blocks.get(), kvs, printer), printer)), one.expected);
    const Qel_rcpt_printer_t without = {.no_emphasis = true};
    EXPECT_EQ(emphasised(on_paper(print(blocks.get(), kvs, without), without)),
              std::vector<std::string>());
}

TEST(Print, EmphasisOfTheGeneralReceipt)
{
    const Qel_rcpt_config_t german = {.cust_lang = QEL_RCPT_LANG_DE, .currency_code = 978};
    const emphasis_case cases[] = {
        {"a sale", "", {"#TILLERBIRD BAKERY", "*PURCHASE", "*TOTAL: $12.50", "*APPROVED"}},
        {"in German",
         "",
         {"#TILLERBIRD BAKERY", "*KAUF", "*GESAMT: €12,50", "*GENEHMIGT"},
         30,
         german},
        {"a name, title and outcome of several lines",
         "merch_name:The Old Lanternwick Bakery,action:avsonly,code:,amount:",
         {"*THE OLD", "*LANTERNWICK", "*BAKERY", "*VERIFICATIO", "*N", "*TRANSACTION", "*NOT",
          "*COMPLETED"},
         11},
        {"an amount below its label",
         "amount:123456789.00",
         {"*TILLERBIRD", "*BAKERY", "*PURCHASE", "*TOTAL:", "*$123456789", "*.00", "*APPROVED"},
         10},
        {"a duplicate, part of an order, a chip card that was swiped",
         "u_duplicate:1,order_total:30.00,rcpt_entry_mode:F",
         {"#TILLERBIRD BAKERY", "*PURCHASE", "*TOTAL: $30.00", "*PAID: $12.50", "*APPROVED",
          "!DUPLICATE"}},
        {"no title, no name, no amount", "action:,merch_name:,amount:", {"*APPROVED"}},
        {"values that look like what stands out",
         "merch_addr1:Total: $1.00,merch_addr2:Duplicate,account:Approved,printdata:Declined,"
         "rcpt_user_notes:Approved,order_notes:Duplicate,cardholdername:Purchase,"
         "rcpt_custom:\"Total=$9.99\",rcpt_emv_name:Approved,stan:Lane",
         {"#TILLERBIRD BAKERY", "*PURCHASE", "*TOTAL: $12.50", "*APPROVED"}},
        {"items that look like a total",
         R"(line_items:"[{""name"":""Total:"",""price"":""1.00""}]")",
         {"#TILLERBIRD BAKERY", "*PURCHASE", "*TOTAL: $12.50", "*APPROVED"}},
    };
    for (const emphasis_case &one : cases)
        expect_emphasis(one, [&](Qel_hash_dict_t *kvs, const Qel_rcpt_config_t &config) {
            return Qel_rcpt_generate_plain(kvs, &config, one.width, "\n");
        });
}

TEST(Print, EmphasisOfTheMonerisReceipts)
{
    const Qel_rcpt_config_t french = {.cust_lang = QEL_RCPT_LANG_FR, .currency_code = 124};
    const emphasis_case in_store[] = {
        {"a sale",
         "cardtype:TOTAL: $1.00,ordernum:Approved",
         {"#TILLERBIRD BAKERY", "*TYPE: PURCHASE", "*TOTAL: $12.50", "*APPROVED - THANK YOU"}},
        {"a duplicate in French, with codes around the outcome and a form factor below",
         "u_duplicate:1,rcpt_issuer_resp_code:00,rcpt_resp_code:027",
         {"!DUPLIQUER", "#TILLERBIRD BAKERY", "*TYPE: PURCHASE", "*TOTAL: $12.50",
          "*00 APPROUVE - MERCI 027", "!DUPLIQUER"},
         0,
         french},
        {"a merchant called as the mark of a duplicate",
         "merch_name:Duplicate,merch_addr1:,merch_phone:",
         {"#DUPLICATE", "*TYPE: PURCHASE", "*TOTAL: $12.50", "*APPROVED - THANK YOU"}},
    };
    for (const emphasis_case &one : in_store)
        expect_emphasis(one, [](Qel_hash_dict_t *kvs, const Qel_rcpt_config_t &config) {
            return Qel_rcpt_generate_plain_moneris(kvs, &config);
        });
}

TEST(Print, EmphasisOfTheEcommerceReceiptOnWidePaper)
{
    record kvs("action:sale,merch_name:Tillerbird,amount:12.50,code:AUTH");
    kvs.set(R"(moneris_rcpt_data:"{""items"":[{""amount"":""Total""}]}")");
    const Qel_rcpt_config_t config{};
    const qel::dict blocks(Qel_rcpt_generate_plain_moneris_ecomm(kvs, &config));
    const Qel_rcpt_printer_t wide = {.paper_columns = 70};
    EXPECT_EQ(emphasised(on_paper(print(blocks.get(), kvs, wide), wide)),
              (std::vector<std::string>{"#TILLERBIRD", "*TRANSACTION TYPE: PURCHASE",
                                        "*| TOTAL 12.50USD |"}));
}

TEST(Print, WithoutTheRecordTheFirstLineIsTheMerchantsName)
{
    const qel::dict blocks(Qel_rcpt_generate_plain(sale, nullptr, 30, "\n"));
    EXPECT_EQ(emphasised(on_paper(print(blocks.get(), nullptr))).front(), "#TILLERBIRD BAKERY");
    const record another("merch_name:Another Shop");
    EXPECT_EQ(emphasised(on_paper(print(blocks.get(), another))).front(), "*PURCHASE");
}

// Characters

TEST(Print, WhatAPageLacksIsReplacedByItsNearest)
{
    struct row {
        Qel_rcpt_code_page_t page;
        const char *text;
        const char *expected;
        std::size_t replaced;
    };
    const row rows[] = {
        {QEL_RCPT_CODE_PAGE_858, "ÀÉÎÖÑß €12 £3", "ÀÉÎÖÑß €12 £3", 0},
        {QEL_RCPT_CODE_PAGE_858, "‘A’ “B” – — … • X\u00ADY", "'A' \"B\" - - . * X\u00ADY", 8},
        {QEL_RCPT_CODE_PAGE_437, "“«Q»” €5 ÀŠŁ", "\"«Q»\" E5 ASL", 6},
        {QEL_RCPT_CODE_PAGE_852, "ŁÓDŹ ÇĄĘ ÑÈ", "ŁÓDŹ ÇĄĘ NE", 2},
        {QEL_RCPT_CODE_PAGE_866, "ЧАЙ Ёж Đß", "ЧАЙ Ёж Ds", 2},
        {QEL_RCPT_CODE_PAGE_1252, "Š€œ\u2009Ế", "Š€œ Ê", 2},
        {QEL_RCPT_CODE_PAGE_1252, "茶 🍞 ＡＢ", "? ? AB", 4},
        {QEL_RCPT_CODE_PAGE_858, "E\u0301\u1DFF\u200B!", "E!", 3},
        {QEL_RCPT_CODE_PAGE_858, "\x1B@\x1D\x07\x7F \xC2\x9B|\t|\x0B|", "?@??? ?| | |", 7},
        {QEL_RCPT_CODE_PAGE_858, "\xFF\xC3|\xE2\x82|", "??|?|", 3},
    };
    for (const row &one : rows) {
        for (const Qel_rcpt_printer_lang_t language :
             {QEL_RCPT_PRINTER_LANG_ESCPOS, QEL_RCPT_PRINTER_LANG_STARPRNT}) {
            const Qel_rcpt_printer_t printer = {.language = language, .code_page = one.page};
            const outcome printed = print(own_blocks(one.text), nullptr, printer);
            ASSERT_FALSE(printed.is_absent) << one.text;
            EXPECT_EQ(texts_of(on_paper(printed, printer)).front(), one.expected);
            EXPECT_EQ(printed.told.replaced, one.replaced) << one.text;
        }
    }
}

TEST(Print, ThePagesNumberCanBeTheCallers)
{
    const record blocks = own_blocks("ÀÉ");
    for (const Qel_rcpt_printer_lang_t language :
         {QEL_RCPT_PRINTER_LANG_ESCPOS, QEL_RCPT_PRINTER_LANG_STARPRNT}) {
        const Qel_rcpt_printer_t printer = {.language = language,
                                            .code_page = QEL_RCPT_CODE_PAGE_850,
                                            .has_code_page_number = true,
                                            .code_page_number = 99};
        EXPECT_EQ(texts_of(on_paper(print(blocks, nullptr, printer), printer, {{99, "CP850"}})),
                  std::vector<std::string>{"ÀÉ"});
    }
}

// The judge itself

TEST(SoftwarePrinter, DoesNotSwallowWhatItDoesNotKnow)
{
    using namespace std::string_view_literals;
    const std::string_view unknown[] = {
        "\x1BZ"sv,           "\x1D"sv,       "\x07"sv,         "A\x7F\n"sv,
        "\x1Bt\x63"sv,       "\x1BM\x05"sv,  "\x1DV\x07"sv,    "A"sv,
        "A\x1DV\x41\0"sv,    "\x1D(k\x05"sv, "\x1DkI\x02{B"sv, "\x1BRx"sv,
        "\x1Bt\x28\x80\n"sv,
    };
    for (const std::string_view bytes : unknown)
        EXPECT_THROW(paper::print(bytes, {}), paper::fault) << testing::PrintToString(bytes);
    const std::string_view unknown_to_star[] = {"\x1D!\x01"sv,
                                                "\x1B"
                                                "d\x05"sv,
                                                "\x1B\x1Dt\x02"sv,
                                                "\x1B"
                                                "b\x06\x02\x01\x50"
                                                "AB"sv,
                                                "A"sv};
    for (const std::string_view bytes : unknown_to_star)
        EXPECT_THROW(paper::print(bytes, {paper::language::starprnt}), paper::fault);
}

} // namespace
