// ESC/POS, from Epson's command reference.
#include "paper/machine.h"

#include <utility>

namespace paper
{

namespace
{

constexpr page_number pages[] = {
    {0, "CP437"},   {2, "CP850"},  {3, "CP860"},  {4, "CP863"},  {5, "CP865"},
    {16, "CP1252"}, {17, "CP866"}, {18, "CP852"}, {19, "CP858"}, {40, "ISO-8859-15"},
};

void print_mode(machine &printer) // ESC !
{
    const unsigned bits = printer.byte();
    style &type = printer.type();
    type.font_b = (bits & 0x01U) != 0;
    type.bold = (bits & 0x08U) != 0;
    type.height = (bits & 0x10U) != 0 ? 2 : 1;
    type.width = (bits & 0x20U) != 0 ? 2 : 1;
    type.underlined = (bits & 0x80U) != 0;
}

void size(machine &printer) // GS !
{
    const unsigned bits = printer.byte();
    if ((bits & 0x88U) != 0)
        printer.fail("a size of more than eight times");
    printer.type().height = (bits & 0x07U) + 1;
    printer.type().width = (bits >> 4U & 0x07U) + 1;
}

void cut_paper(machine &printer) // GS V
{
    switch (printer.byte()) {
    case 0:
    case '0':
        return printer.put(cut{true, false});
    case 1:
    case '1':
        return printer.put(cut{false, false});
    case 65:
        printer.byte();
        return printer.put(cut{true, true});
    case 66:
        printer.byte();
        return printer.put(cut{false, true});
    default:
        printer.fail("no such cut");
    }
}

void open_drawer(machine &printer) // ESC p
{
    const unsigned pin = printer.digit(1);
    const unsigned on = printer.byte();
    const unsigned off = printer.byte();
    if (on > off)
        printer.fail("the pulse is longer than its pause");
    printer.put(drawer{pin + 1});
}

// Two bytes from '{' on select a code set or stand for '{'; set C holds two digits a byte.
std::string code128_text(machine &printer, std::string_view data)
{
    if (!data.starts_with('{'))
        printer.fail("the barcode does not begin with its code set");
    std::string text;
    char set = 0;
    for (std::size_t i = 0; i < data.size(); ++i) {
        const auto byte = static_cast<unsigned char>(data[i]);
        if (byte == '{') {
            const char selected = i + 1 < data.size() ? data[++i] : '\0';
            if (selected == '{')
                text += '{';
            else if (selected >= 'A' && selected <= 'C')
                set = selected;
            else
                printer.fail("no code set of CODE128");
        } else if (set == 'C' && byte < 100) {
            text.append(1, static_cast<char>('0' + byte / 10));
            text.append(1, static_cast<char>('0' + byte % 10));
        } else if ((set == 'B' && byte >= 0x20 && byte < 0x80) || (set == 'A' && byte < 0x60)) {
            text += data[i];
        } else {
            printer.fail("a byte that the code set does not have");
        }
    }
    return text;
}

void print_barcode(machine &printer) // GS k
{
    if (printer.byte() != 73)
        printer.fail("a barcode other than CODE128");
    const std::size_t len = printer.byte_in(2, 255);
    barcode made = printer.next_barcode;
    made.text = code128_text(printer, printer.text(len));
    printer.put(std::move(made));
}

void two_dimensional_code(machine &printer) // GS ( k
{
    const std::size_t len = printer.word();
    if (len < 3 || printer.byte() != '1')
        printer.fail("a code other than QR");
    qr_code &code = printer.next_qr;
    const auto want = [&](bool holds) {
        if (!holds)
            printer.fail("not the length of this function");
    };
    switch (printer.byte()) {
    case 'A':
        want(len == 4);
        if (printer.byte_in('1', '2') != '2')
            printer.fail("a QR code of model 1");
        printer.byte_in(0, 0);
        break;
    case 'C':
        want(len == 3);
        code.module = printer.byte_in(1, 16);
        break;
    case 'E':
        want(len == 3);
        code.level = printer.byte_in('0', '3') - unsigned{'0'};
        break;
    case 'P':
        want(len >= 4 && len <= 7092);
        printer.byte_in('0', '0');
        code.text = printer.text(len - 3);
        break;
    case 'Q':
        want(len == 3);
        printer.byte_in('0', '0');
        printer.put(code);
        break;
    default:
        printer.fail("no such function of QR codes");
    }
}

void graphics(machine &printer) // GS ( L
{
    if (printer.word() != 6 || printer.byte() != '0' || printer.byte() != 'E')
        printer.fail("graphics other than stored ones");
    const std::string key = printer.text(2);
    for (const char chr : key) {
        if (chr < 32 || chr > 126)
            printer.fail("no key of graphics");
    }
    printer.byte_in(1, 2);
    printer.byte_in(1, 2);
    printer.put(logo{key, 0, alignment::left});
}

constexpr command commands[] = {
    {"\n", [](machine &printer) { printer.end_line(); }},
    {"\r", [](machine &) {}}, // ignored where line feeds end lines
    {"\x1B@", [](machine &printer) { printer.reset(); }},
    {"\x1B!", print_mode},
    {"\x1B-", [](machine &printer) { printer.type().underlined = printer.digit(2) != 0; }},
    {"\x1B\x45", [](machine &printer) { printer.type().bold = (printer.byte() & 1U) != 0; }},
    {"\x1BG", [](machine &printer) { printer.type().bold = (printer.byte() & 1U) != 0; }},
    {"\x1BM", [](machine &printer) { printer.type().font_b = printer.flag(); }},
    {"\x1BR", [](machine &printer) { printer.byte_in(0, 0); }}, // ASCII as in the USA
    {"\x1B\x61", [](machine &printer) { printer.align(printer.digit(2)); }},
    {"\x1B\x64", [](machine &printer) { printer.feed(printer.byte()); }},
    {"\x1B\x32", [](machine &) {}},                                            // usual line spacing
    {"\x1B\x33", [](machine &printer) { static_cast<void>(printer.byte()); }}, // line spacing
    {"\x1Bp", open_drawer},
    {"\x1Bt", [](machine &printer) { printer.select_page(printer.byte()); }},
    {"\x1B{", [](machine &printer) { printer.byte_in(0, 0); }}, // not upside-down
    {"\x1C.", [](machine &) {}},                                // characters of one byte
    {"\x1Cp",
     [](machine &printer) {
         const unsigned number = printer.byte_in(1, 255);
         printer.digit(3);
         printer.put(logo{{}, number, alignment::left});
     }},
    {"\x1D!", size},
    {"\x1D\x42", [](machine &printer) { printer.type().inverted = (printer.byte() & 1U) != 0; }},
    {"\x1DH",
     [](machine &printer) { printer.next_barcode.has_characters_below = printer.digit(3) >= 2; }},
    {"\x1DV", cut_paper},
    {"\x1D\x66", [](machine &printer) { printer.digit(4); }}, // font of a barcode's characters
    {"\x1Dh", [](machine &printer) { printer.next_barcode.height = printer.byte_in(1, 255); }},
    {"\x1Dk", print_barcode},
    {"\x1Dw", [](machine &printer) { printer.next_barcode.module = printer.byte_in(2, 6); }},
    {"\x1D(k", two_dimensional_code},
    {"\x1D(L", graphics},
};

} // namespace

language_facts escpos_facts()
{
    return {pages, commands};
}

} // namespace paper
