// What goes with the text on the paper as a printer's options say: the font, logo, drawer, codes
// and the cut; and what they say that cannot be.
#include "paper/symbols.h"
#include "printed.hpp"

namespace
{

using namespace test::printing;
using test::record;

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

} // namespace
