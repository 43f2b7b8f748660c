// The printers' languages, and the codes that they draw.
#ifndef QEL_RCPT_PRINT_CODES_HPP
#define QEL_RCPT_PRINT_CODES_HPP

#include <qel_rcpt_print.h>

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace qel_rcpt
{

// A QR code that fits on the paper.
struct qr_code {
    std::string_view text;
    Qel_rcpt_qr_level_t level; // not the default
    std::uint8_t module;       // in dots
};

// The code in modules of that many dots, or 0 for as many as fit; absent where it does not fit in
// the dots across the paper.
std::optional<qr_code> fit_qr_code(std::string_view text, Qel_rcpt_qr_level_t level,
                                   std::uint8_t module, std::size_t dots);

// A CODE128 barcode that fits on the paper.
struct barcode {
    std::string_view text; // printable ASCII
    bool by_pairs;         // of digits (code set C)
    std::uint8_t module;   // in dots
};

// Absent where the text is empty, not of printable ASCII or too long.
std::optional<barcode> fit_barcode(std::string_view text, std::size_t dots);

// What turns a style of a line on and off.
struct style_commands {
    std::string_view on;
    std::string_view off;
};

struct printer_language {
    std::string_view start;       // in a known state, texts in single bytes, ASCII as in the USA
    std::string_view select_page; // its number follows
    std::string_view font_a;
    std::string_view font_b;
    style_commands styles[4]; // by line_style
    std::string_view center;  // only of what is no text
    std::string_view left;
    std::string_view drawer_1;
    std::string_view drawer_2;
    std::string_view full_cut; // behind the last line
    std::string_view partial_cut;
    std::uint8_t most_qr_module;
    void (*feed)(std::string &out, unsigned lines);
    void (*logo_by_number)(std::string &out, std::uint8_t number);
    void (*logo_by_key)(std::string &out, std::string_view key); // absent: not in the language
    void (*barcode)(std::string &out, const qel_rcpt::barcode &code);
    void (*qr)(std::string &out, const qr_code &code);
};

// Absent for an unknown one.
const printer_language *find_printer_language(Qel_rcpt_printer_lang_t lang);

} // namespace qel_rcpt

#endif
