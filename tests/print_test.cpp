// What is on the paper: a printer in software reads the bytes, knows every command that it meets,
// and its cells are compared with the receipt.
#include "paper/code_points.h"
#include "paper/printer.h"
#include "paper/symbols.h"
#include "reading/record_file.h"
#include "test_record.hpp"

#include <qel_rcpt.h>
#include <qel_rcpt_print.h>
#include <utf8.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <functional>
#include <sstream>

namespace
{

using test::record;

// One copy's result.
struct outcome {
    std::string bytes;
    Qel_rcpt_printed_t told{};
    bool is_absent = false;
};

outcome print(const Qel_hash_dict_t *blocks, const Qel_hash_dict_t *kvs,
              const Qel_rcpt_printer_t &printer = {}, bool is_custcopy = true)
{
    outcome made;
    const qel::text bytes(Qel_rcpt_print(blocks, kvs, is_custcopy, &printer, &made.told));
    made.is_absent = bytes == nullptr;
    if (bytes)
        made.bytes.assign(bytes.get(), made.told.len);
    return made;
}

paper::roll on_paper(const outcome &printed, const Qel_rcpt_printer_t &printer = {},
                     std::map<unsigned, std::string> own_pages = {})
{
    paper::model model;
    model.language = printer.language == QEL_RCPT_PRINTER_LANG_STARPRNT ? paper::language::starprnt
                                                                        : paper::language::escpos;
    model.dots = 12 * (printer.paper_columns == 0 ? 48U : printer.paper_columns);
    model.own_pages = std::move(own_pages);
    return paper::print(printed.bytes, model);
}

template <typename Element>
std::vector<Element> all_of(const paper::roll &roll)
{
    std::vector<Element> found;
    for (const paper::element &one : roll) {
        if (const auto *element = std::get_if<Element>(&one))
            found.push_back(*element);
    }
    return found;
}

std::vector<std::string> texts_of(const paper::roll &roll)
{
    std::vector<std::string> texts;
    for (const paper::text_line &line : all_of<paper::text_line>(roll))
        texts.push_back(paper::text_of(line));
    return texts;
}

// A copy of one block.
record own_blocks(const std::string &notes)
{
    return {{"cust_notes", notes.c_str()}};
}

const Qel_rcpt_printer_t star = {.language = QEL_RCPT_PRINTER_LANG_STARPRNT};

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

// What goes beside the lines

std::string of(std::size_t count, char chr)
{
    return std::string(count, chr);
}

TEST(Print, TheFontFollowsTheWidths)
{
    struct row {
        std::uint16_t paper;
        std::uint16_t columns;
        std::size_t widest;
        unsigned dots; // of a character; 0: it does not fit
    };
    constexpr row rows[] = {
        {0, 0, 48, 12},  {0, 0, 49, 9},  {0, 0, 64, 9},  {0, 0, 65, 0},
        {42, 0, 42, 12}, {42, 0, 43, 9}, {42, 0, 56, 9}, {42, 0, 57, 0},
        {32, 0, 32, 12}, {32, 0, 42, 9}, {32, 0, 43, 0}, {0, 56, 10, 9},
        {0, 40, 70, 12}, {0, 64, 70, 9}, {0, 65, 10, 0}, {70, 70, 70, 12},
    };
    for (const row &one : rows) {
        for (const Qel_rcpt_printer_lang_t language :
             {QEL_RCPT_PRINTER_LANG_ESCPOS, QEL_RCPT_PRINTER_LANG_STARPRNT}) {
            const Qel_rcpt_printer_t printer = {
                .language = language, .paper_columns = one.paper, .columns = one.columns};
            const outcome printed = print(own_blocks(of(one.widest, 'X')), nullptr, printer);
            EXPECT_EQ(printed.is_absent, one.dots == 0) << one.paper << " " << one.widest;
            if (printed.is_absent)
                EXPECT_EQ(printed.told.fault, QEL_RCPT_PRINT_FAULT_WIDTH);
            else
                EXPECT_EQ(all_of<paper::text_line>(on_paper(printed, printer))[0].cells[0].dots,
                          one.dots);
        }
    }
}

TEST(Print, BothCopiesAreInTheFontOfTheWiderOne)
{
    const record blocks{{"cust_notes", "NARROW"}, {"merch_notes", of(60, 'X').c_str()}};
    EXPECT_EQ(all_of<paper::text_line>(on_paper(print(blocks, nullptr)))[0].cells[0].dots, 9U);
}

TEST(Print, CutAndFeed)
{
    struct row {
        Qel_rcpt_cut_t cut;
        std::uint8_t feed;
        std::size_t lines; // behind the text
    };
    constexpr row rows[] = {
        {QEL_RCPT_CUT_FULL, 0, 0}, {QEL_RCPT_CUT_PARTIAL, 3, 3},  {QEL_RCPT_CUT_NONE, 0, 4},
        {QEL_RCPT_CUT_NONE, 1, 1}, {QEL_RCPT_CUT_FULL, 200, 200},
    };
    for (const row &one : rows) {
        for (const Qel_rcpt_printer_lang_t language :
             {QEL_RCPT_PRINTER_LANG_ESCPOS, QEL_RCPT_PRINTER_LANG_STARPRNT}) {
            const Qel_rcpt_printer_t printer = {
                .language = language, .cut = one.cut, .feed = one.feed};
            const paper::roll roll = on_paper(print(own_blocks("X"), nullptr, printer), printer);
            EXPECT_EQ(all_of<paper::text_line>(roll).size(), 1 + one.lines);
            const auto cuts = all_of<paper::cut>(roll);
            ASSERT_EQ(cuts.size(), one.cut == QEL_RCPT_CUT_NONE ? 0U : 1U);
            EXPECT_EQ(std::holds_alternative<paper::cut>(roll.back()), !cuts.empty());
            for (const paper::cut &made : cuts)
                EXPECT_EQ(made, (paper::cut{one.cut == QEL_RCPT_CUT_FULL, true}));
        }
    }
}

TEST(Print, LogoAndDrawerComeFirst)
{
    Qel_rcpt_printer_t printer = {.drawer = QEL_RCPT_DRAWER_2, .logo_number = 7};
    for (const Qel_rcpt_printer_lang_t language :
         {QEL_RCPT_PRINTER_LANG_ESCPOS, QEL_RCPT_PRINTER_LANG_STARPRNT}) {
        printer.language = language;
        const paper::roll roll = on_paper(print(own_blocks("X"), nullptr, printer), printer);
        EXPECT_EQ(roll.at(0), paper::element(paper::drawer{2}));
        EXPECT_EQ(roll.at(1), paper::element(paper::logo{"", 7, paper::alignment::center}));
        EXPECT_EQ(std::get<paper::text_line>(roll.at(2)).align, paper::alignment::left);
    }
    const Qel_rcpt_printer_t by_key = {
        .drawer = QEL_RCPT_DRAWER_1, .logo_number = 7, .logo_key = "A~"};
    const paper::roll roll = on_paper(print(own_blocks("X"), nullptr, by_key));
    EXPECT_EQ(roll.at(0), paper::element(paper::drawer{1}));
    EXPECT_EQ(roll.at(1), paper::element(paper::logo{"A~", 0, paper::alignment::center}));
}

TEST(Print, BarcodeOfTheOrderNumber)
{
    struct row {
        const char *fields;
        const char *expected; // absent: none
        unsigned module = 3;
        std::uint16_t paper = 48;
    };
    const std::string long_one = "ordernum:" + of(21, 'A');
    const std::string too_long = "ordernum:" + of(22, 'A');
    const std::string long_digits = "ordernum:" + of(42, '7');
    const row rows[] = {
        {"ordernum:A-1001", "A-1001"},
        {"ordernum:{}%{%0", "{}%{%0"},
        {"ordernum:12345", "12345"},
        {"ordernum:00123499", "00123499"},
        {"ptrannum:42", "42"},
        {"ordernum:,ptrannum:12345678", "12345678"},
        {"ordernum:123456789012345678", "123456789012345678", 2, 32},
        {long_one.c_str(), "AAAAAAAAAAAAAAAAAAAAA", 2},
        {long_digits.c_str(), "777777777777777777777777777777777777777777", 2},
        {too_long.c_str(), nullptr},
        {"ordernum:É1", nullptr},
        {"ordernum:A\x1B", nullptr},
        {"amount:1.00", nullptr},
    };
    for (const row &one : rows) {
        for (const Qel_rcpt_printer_lang_t language :
             {QEL_RCPT_PRINTER_LANG_ESCPOS, QEL_RCPT_PRINTER_LANG_STARPRNT}) {
            const Qel_rcpt_printer_t printer = {
                .language = language, .paper_columns = one.paper, .barcode = true};
            const outcome printed = print(own_blocks("X"), record(one.fields), printer);
            const auto found = all_of<paper::barcode>(on_paper(printed, printer));
            EXPECT_EQ(printed.told.has_barcode, one.expected != nullptr) << one.fields;
            ASSERT_EQ(found.size(), one.expected == nullptr ? 0U : 1U) << one.fields;
            if (found.empty())
                continue;
            EXPECT_EQ(found[0].text, one.expected);
            EXPECT_EQ(found[0].module, one.module) << one.fields;
            EXPECT_TRUE(found[0].has_characters_below);
            EXPECT_EQ(found[0].align, paper::alignment::center);
        }
    }
}

TEST(Print, QrCodeBelowTheReceipt)
{
    const std::string link = "https://receipts.example/r/8Zk3?x=1&y=\x1B@é";
    for (std::uint32_t level = QEL_RCPT_QR_LEVEL_DEFAULT; level <= QEL_RCPT_QR_LEVEL_H; ++level) {
        for (const Qel_rcpt_printer_lang_t language :
             {QEL_RCPT_PRINTER_LANG_ESCPOS, QEL_RCPT_PRINTER_LANG_STARPRNT}) {
            const Qel_rcpt_printer_t printer = {.language = language,
                                                .qr_text = link.c_str(),
                                                .qr_level = static_cast<Qel_rcpt_qr_level_t>(level),
                                                .qr_module = static_cast<std::uint8_t>(level)};
            const auto found =
                all_of<paper::qr_code>(on_paper(print(own_blocks("X"), nullptr, printer), printer));
            ASSERT_EQ(found.size(), 1U);
            const unsigned expected = level == QEL_RCPT_QR_LEVEL_DEFAULT ? 1 : level - 1;
            EXPECT_EQ(found[0], (paper::qr_code{link, expected, level == 0 ? 6 : level,
                                                paper::alignment::center}));
        }
    }
}

// zint says how large the code of the longest text is that fits, with four blank modules on each
// side, and that one byte more makes it larger or is too long for any.
TEST(Print, QrCodesFitOnThePaperOrAreAFault)
{
    constexpr std::uint8_t module = 3; // a version's four modules more are a column of 12 dots
    for (unsigned level = 0; level < 4; ++level) {
        for (unsigned version = 1; version <= 40; ++version) {
            Qel_rcpt_printer_t printer = {.paper_columns = static_cast<std::uint16_t>(7 + version),
                                          .qr_level = static_cast<Qel_rcpt_qr_level_t>(level + 1),
                                          .qr_module = module};
            const auto fits = [&](std::size_t len) {
                const std::string text = of(len, 'a');
                printer.qr_text = text.c_str();
                const outcome printed = print(own_blocks("X"), nullptr, printer);
                EXPECT_EQ(printed.told.fault,
                          printed.is_absent ? QEL_RCPT_PRINT_FAULT_QR : QEL_RCPT_PRINT_FAULT_NONE);
                return !printed.is_absent;
            };
            std::size_t longest = 0;
            for (std::size_t more = 2048; more > 0; more /= 2)
                longest += fits(longest + more) ? more : 0;
            const auto drawn = paper::qr_modules(of(longest, 'a'), level);
            ASSERT_TRUE(drawn) << level << " " << version;
            EXPECT_EQ(drawn->size(), 17 + 4 * version) << level;
            const auto larger = paper::qr_modules(of(longest + 1, 'a'), level);
            EXPECT_EQ(larger ? larger->size() : 0, version == 40 ? 0 : 21 + 4 * version) << level;
        }
    }
}

// Faults

TEST(Print, WhatCannotBePrintedIsAbsentWithItsReason)
{
    const record text = own_blocks("X");
    const auto fault_of = [&](const Qel_rcpt_printer_t &printer) {
        const outcome printed = print(text, nullptr, printer);
        EXPECT_TRUE(printed.is_absent);
        EXPECT_EQ(printed.told.len, 0U);
        return printed.told.fault;
    };
    const auto unknown = [](auto value) { return static_cast<decltype(value)>(77); };
    EXPECT_EQ(fault_of({.language = unknown(QEL_RCPT_PRINTER_LANG_ESCPOS)}),
              QEL_RCPT_PRINT_FAULT_OPTION);
    EXPECT_EQ(fault_of({.cut = unknown(QEL_RCPT_CUT_FULL)}), QEL_RCPT_PRINT_FAULT_OPTION);
    EXPECT_EQ(fault_of({.drawer = unknown(QEL_RCPT_DRAWER_1)}), QEL_RCPT_PRINT_FAULT_OPTION);
    EXPECT_EQ(fault_of({.qr_level = unknown(QEL_RCPT_QR_LEVEL_H)}), QEL_RCPT_PRINT_FAULT_OPTION);
    EXPECT_EQ(fault_of({.qr_module = 17}), QEL_RCPT_PRINT_FAULT_OPTION);
    EXPECT_EQ(fault_of({.language = star.language, .qr_module = 9}), QEL_RCPT_PRINT_FAULT_OPTION);
    EXPECT_EQ(fault_of({.code_page = unknown(QEL_RCPT_CODE_PAGE_437)}),
              QEL_RCPT_PRINT_FAULT_CODE_PAGE);
    EXPECT_EQ(fault_of({.language = star.language, .code_page = QEL_RCPT_CODE_PAGE_850}),
              QEL_RCPT_PRINT_FAULT_CODE_PAGE);
    EXPECT_EQ(fault_of({.logo_key = "A"}), QEL_RCPT_PRINT_FAULT_LOGO);
    EXPECT_EQ(fault_of({.logo_key = "\x1F"
                                    "A"}),
              QEL_RCPT_PRINT_FAULT_LOGO);
    EXPECT_EQ(fault_of({.language = star.language, .logo_key = "AB"}), QEL_RCPT_PRINT_FAULT_LOGO);

    EXPECT_EQ(print(text, nullptr, {}, false).told.fault, QEL_RCPT_PRINT_FAULT_NO_COPY);
    EXPECT_EQ(print(nullptr, nullptr).told.fault, QEL_RCPT_PRINT_FAULT_NO_COPY);
}

TEST(Print, OtherFormsAreNoText)
{
    const record kvs(R"(action:sale,amount:1.00,line_items:"[{""name"":""{""}]",merch_name:<b>,)"
                     "order_notes:{,u_need_signature:1");
    for (Qel_hash_dict_t *(*generate)(const Qel_hash_dict_t *, const Qel_rcpt_config_t *) :
         {Qel_rcpt_generate_html, Qel_rcpt_generate_xml, Qel_rcpt_generate_json}) {
        const qel::dict blocks(generate(kvs, nullptr));
        for (const auto [key, block] : qel::pairs(blocks.get())) { // each of them by itself
            const record one{{key, block}};
            EXPECT_EQ(print(one, kvs, {}, qel::view(key).starts_with("cust_")).told.fault,
                      QEL_RCPT_PRINT_FAULT_NOT_TEXT)
                << block;
        }
    }
    const qel::dict plain(Qel_rcpt_generate_plain(kvs, nullptr, 10, "\n"));
    EXPECT_FALSE(print(plain.get(), kvs).is_absent);
}

TEST(Print, AllMayBeAbsent)
{
    EXPECT_EQ(Qel_rcpt_print(nullptr, nullptr, true, nullptr, nullptr), nullptr);
    Qel_rcpt_printed_t told{};
    const qel::text bytes(Qel_rcpt_print(own_blocks("X"), nullptr, true, nullptr, &told));
    EXPECT_EQ(std::string(bytes.get(), told.len), print(own_blocks("X"), nullptr).bytes);
    for (std::uint32_t fault = 0; fault < 10; ++fault)
        EXPECT_FALSE(
            qel::view(Qel_rcpt_print_fault_to_str(static_cast<Qel_rcpt_print_fault_t>(fault)))
                .empty());
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
