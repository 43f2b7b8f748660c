// StarPRNT, from Star's command specifications.
#include "paper/machine.h"

#include <utility>

namespace paper
{

namespace
{

constexpr page_number pages[] = {
    {1, "CP437"}, {4, "CP858"}, {5, "CP852"},  {6, "CP860"},
    {8, "CP863"}, {9, "CP865"}, {10, "CP866"}, {32, "CP1252"},
};

void print_barcode(machine &printer) // ESC b, ended by RS
{
    if (printer.digit(8) != 6)
        printer.fail("a barcode other than CODE128");
    const unsigned below = printer.digit(4);
    const unsigned module = printer.digit(3);
    if (below == 0 || module == 0)
        printer.fail("a parameter is out of its range: 0");
    barcode made;
    made.has_characters_below = below % 2 == 0;
    made.module = module + 1;
    made.height = printer.byte_in(1, 255);
    const std::string data = printer.text_until('\x1E');
    for (std::size_t i = 0; i < data.size(); ++i) {
        made.text += data[i];
        if (data[i] == '%' && data.substr(++i, 1) != "0")
            printer.fail("an escape of a barcode other than of %");
    }
    printer.put(std::move(made));
}

void qr_data(machine &printer) // ESC GS y D 1
{
    printer.byte_in(0, 0);
    const std::size_t len = printer.word();
    if (len < 1 || len > 7089)
        printer.fail("no length of a QR code's text");
    printer.next_qr.text = printer.text(len);
}

void cut_paper(machine &printer) // ESC d
{
    const unsigned how = printer.digit(3);
    printer.put(cut{how % 2 == 0, how >= 2});
}

constexpr command commands[] = {
    {"\n", [](machine &printer) { printer.end_line(); }},
    {"\r", [](machine &) {}}, // ignored where line feeds end lines
    {"\a", [](machine &printer) { printer.put(drawer{1}); }},
    {"\x1A", [](machine &printer) { printer.put(drawer{2}); }},
    {"\x18", [](machine &) {}}, // drops what is not printed
    {"\x1B@", [](machine &printer) { printer.reset(); }},
    {"\x1B\a",
     [](machine &printer) {
         printer.byte_in(1, 127);
         printer.byte_in(1, 127);
     }},
    {"\x1B-", [](machine &printer) { printer.type().underlined = printer.flag(); }},
    {"\x1B\x34", [](machine &printer) { printer.type().inverted = true; }},
    {"\x1B\x35", [](machine &printer) { printer.type().inverted = false; }},
    {"\x1B\x45", [](machine &printer) { printer.type().bold = true; }},
    {"\x1B\x46", [](machine &printer) { printer.type().bold = false; }},
    {"\x1BR", [](machine &printer) { printer.digit(0); }}, // ASCII as in the USA
    {"\x1BW", [](machine &printer) { printer.type().width = printer.digit(5) + 1; }},
    {"\x1B\x61", [](machine &printer) { printer.feed(printer.byte_in(1, 127)); }},
    {"\x1B\x62", print_barcode},
    {"\x1B\x64", cut_paper},
    {"\x1Bh", [](machine &printer) { printer.type().height = printer.digit(5) + 1; }},
    {"\x1Bi",
     [](machine &printer) {
         printer.type().height = printer.digit(5) + 1;
         printer.type().width = printer.digit(5) + 1;
     }},
    {"\x1Bz", [](machine &printer) { printer.digit(1); }}, // line spacing
    {"\x1B\x1Cp",
     [](machine &printer) {
         const unsigned number = printer.byte_in(1, 255);
         printer.digit(3);
         printer.put(logo{{}, number, alignment::left});
     }},
    {"\x1B\x1D\x61", [](machine &printer) { printer.align(printer.digit(2)); }},
    {"\x1B\x1Dt", [](machine &printer) { printer.select_page(printer.byte()); }},
    {"\x1B\x1DyD1", qr_data},
    {"\x1B\x1DyP", [](machine &printer) { printer.put(printer.next_qr); }},
    {"\x1B\x1DyS0", [](machine &printer) { printer.byte_in(2, 2); }}, // model 2
    {"\x1B\x1DyS1", [](machine &printer) { printer.next_qr.level = printer.byte_in(0, 3); }},
    {"\x1B\x1DyS2", [](machine &printer) { printer.next_qr.module = printer.byte_in(1, 8); }},
    {"\x1B\x1E\x46", [](machine &printer) { printer.type().font_b = printer.digit(1) == 1; }},
};

} // namespace

language_facts starprnt_facts()
{
    return {pages, commands};
}

} // namespace paper
