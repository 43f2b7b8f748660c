// The command's output for receipt printers, read by a printer in software.
#include "command_runs.hpp"
#include "paper/printer.h"

namespace
{

// Cash, so that nothing is missing on its receipt.
const std::string sale = R"({"merch_name": "Shop", "merch_addr1": "1 Road", "action": "sale",)"
                         R"( "cardtype": "cash", "amount": "12.34", "code": "AUTH"})";

template <typename Element>
size_t count_of(const paper::roll &roll)
{
    return static_cast<size_t>(std::ranges::count_if(
        roll, [](const paper::element &one) { return std::holds_alternative<Element>(one); }));
}

std::string text_of(const paper::roll &roll)
{
    std::string text;
    for (const paper::element &one : roll) {
        if (const auto *line = std::get_if<paper::text_line>(&one))
            text += paper::text_of(*line) + "\n";
    }
    return text;
}

TEST_F(Command, PrintsTheCopiesForReceiptPrinters)
{
    const std::string order =
        R"({"action": "sale", "amount": "12.34", "ordernum": "A-7", "merch_name": "Café “Ł”",)"
        R"( "merch_addr1": "1 Road"})";
    for (const std::string language : {"escpos", "star"}) {
        const result made = run({"--output",   language,     "--paper",     "32",
                                 "--block",    "merch_info", "--block",     "money",
                                 "--cut",      "partial",    "--feed",      "2",
                                 "--logo",     "9",          "--qr",        "https://r.example/1",
                                 "--qr-level", "H",          "--qr-module", "4",
                                 "--barcode",  "--drawer",   "--code-page", "cp852"},
                                order);
        ASSERT_EQ(made.status, 0) << made.err;
        paper::model model;
        model.dots = 32 * 12;
        model.language = language == "star" ? paper::language::starprnt : paper::language::escpos;
        const paper::roll roll = paper::print(made.out, model);
        EXPECT_EQ(roll.front(), paper::element(paper::drawer{1}));
        EXPECT_EQ(count_of<paper::drawer>(roll), 1U); // not again for the second copy
        EXPECT_EQ(count_of<paper::logo>(roll), 2U);
        EXPECT_EQ(count_of<paper::barcode>(roll), 2U);
        EXPECT_EQ(count_of<paper::cut>(roll), 2U);
        EXPECT_EQ(roll.back(), paper::element(paper::cut{false, true}));
        const paper::qr_code link{"https://r.example/1", 3, 4, paper::alignment::center};
        EXPECT_EQ(std::ranges::count(roll, paper::element(link)), 2);
        const std::string text = text_of(roll);
        EXPECT_TRUE(has(text, "           CAFÉ \"Ł\"\n")) << text;
        EXPECT_TRUE(has(text, "\nTOTAL:                    $12.34\n")) << text;
        EXPECT_EQ(made.err,
                  "qelrcpt: <stdin>: customer copy: 2 characters that are not on code page "
                  "cp852 were replaced\nqelrcpt: <stdin>: merchant copy: 2 characters that "
                  "are not on code page cp852 were replaced\n");
    }
}

TEST_F(Command, PrintsInTheWidthOfThePaper)
{
    const auto printed = [&](const arguments &options, unsigned dots) {
        arguments args = {"--output", "escpos", "--block", "money", "--copy", "customer", "-q"};
        args.insert(args.end(), options.begin(), options.end());
        paper::model model;
        model.dots = dots;
        model.own_pages[77] = "CP1252";
        return paper::print(run(args, sale).out, model);
    };
    const auto first_line = [](const paper::roll &roll) {
        return std::get<paper::text_line>(roll.front());
    };
    EXPECT_EQ(first_line(printed({}, 576)).cells.size(), 40U);
    EXPECT_EQ(first_line(printed({"--paper", "42"}, 504)).cells.size(), 42U);
    const auto narrow = first_line(printed({"--paper", "32", "--width", "42"}, 384));
    EXPECT_EQ(narrow.cells.size(), 42U);
    EXPECT_EQ(narrow.cells.front().dots, 9U); // font B
    const arguments plain = {"--no-emphasis", "--code-page-number", "77", "--code-page",
                             "cp1252",        "--other-drawer"};
    const paper::roll roll = printed(plain, 576);
    EXPECT_EQ(roll.front(), paper::element(paper::drawer{2}));
    EXPECT_FALSE(has(run({"--output", "escpos", "--no-emphasis"}, sale).out, "\x1B"
                                                                             "E"));
}

TEST_F(Command, TellsWhatCannotBePrinted)
{
    struct row {
        arguments args;
        int status;
        std::string err;
    };
    const std::string too_much(3000, 'a');
    const row rows[] = {
        {{"--output", "escpos", "--form", "html"},
         2,
         "--output: expected --form plain, moneris or moneris-ecomm with it"},
        {{"--output", "escpos", "--batch"},
         2,
         "--output: with --batch every line is JSON, expected no other"},
        {{"--output", "escpos", "--width", "65"},
         2,
         "--width: 65 columns do not fit on the paper, expected at most 64, or another --paper"},
        {{"--output", "escpos", "--paper", "32", "--width", "43"},
         2,
         "--width: 43 columns do not fit on the paper, expected at most 42, or another --paper"},
        {{"--output", "escpos", "--form", "moneris-ecomm"},
         1,
         "<stdin>: 70 columns: the receipt is wider than the paper"},
        {{"--output", "star", "--code-page", "cp850"},
         2,
         "--code-page: the printer's language has no such code page"},
        {{"--output", "escpos", "--code-page", "latin1"},
         2,
         "--code-page: 'latin1' is unknown, expected cp858, cp437, cp850, cp852, cp860, cp863, "
         "cp865, cp866, cp1252 or iso8859-15"},
        {{"--output", "escpos", "--qr", too_much},
         2,
         "--qr: the text of the QR code is too long for a code or for the paper"},
        {{"--output", "escpos", "--qr", ""},
         2,
         "--qr: the text is empty, expected what the QR code is to hold"},
        {{"--output", "star", "--qr", "x", "--qr-module", "9"},
         2,
         "--qr-module: expected at most 8 with --output star"},
        {{"--output", "escpos", "--logo", "key:A"},
         2,
         "--logo: 'key:A' is not a key, expected two characters"},
        {{"--output", "escpos", "--logo", "256"},
         2,
         "--logo: '256' is not a logo, expected a number from 1 to 255"},
        {{"--output", "star", "--logo", "key:AB"},
         2,
         "--logo: the logo's key is not two ASCII characters, or the language has no keys"},
        {{"--output", "escpos", "--qr-level", "H"}, 2, "--qr-level: expected --qr with it"},
        {{"--cut", "none"}, 2, "--cut: expected --output escpos, star or png with it"},
        {{"--output", "escpos", "--line-break", "crlf"},
         2,
         "--line-break: expected --form plain with it, or text as output"},
        {{"--output", "escpos", "--copy", "merchant", "--industry", "autofuel"},
         1,
         "<stdin>: there is nothing to print"},
    };
    for (const row &one : rows) {
        const result made = run(one.args, sale);
        EXPECT_EQ(made.status, one.status) << one.err;
        EXPECT_EQ(made.err.substr(0, made.err.find('\n')), "qelrcpt: " + one.err);
        EXPECT_EQ(made.out, "");
    }
}

#ifdef QELRCPT_PNG
// The size that the file's first chunk tells, which a picture of a copy has: a pixel a dot.
TEST_F(Command, DrawsThePaper)
{
    const auto size = [&](const arguments &options) {
        arguments args = {"--output", "png"};
        args.insert(args.end(), options.begin(), options.end());
        const result made = run(args, sale);
        EXPECT_EQ(made.status, 0) << made.err;
        EXPECT_EQ(made.out.substr(0, 8), "\x89PNG\r\n\x1A\n");
        const auto number = [&](size_t at) {
            unsigned value = 0;
            for (size_t i = at; i < at + 4; ++i)
                value = value * 256 + static_cast<unsigned char>(made.out.at(i));
            return value;
        };
        return std::pair(number(16), number(20));
    };
    const auto both = size({});
    const auto customer = size({"--copy", "customer"});
    const auto narrow = size({"--paper", "32"});
    EXPECT_GT(both.second, customer.second + 200);
    EXPECT_EQ(both.first - narrow.first, (48U - 32U) * 12U);
    EXPECT_GT(size({"--qr", "https://r.example/1"}).second, both.second + 200);
}
#endif

} // namespace
