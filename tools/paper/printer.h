// A receipt printer in software: reads what one is sent and tells what is on the paper. Written
// from Epson's ESC/POS command reference and Star's StarPRNT command specifications. It wants more
// than a printer, which skips what it does not know: here that is a fault.
#ifndef QELRCPT_TOOLS_PRINTER_H
#define QELRCPT_TOOLS_PRINTER_H

#include <cstddef>
#include <cstdint>
#include <map>
#include <stdexcept>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace paper
{

enum class alignment { left, center, right };

// One character on the paper.
struct cell {
    char32_t character = U' ';
    unsigned dots = 12;  // wide
    unsigned height = 1; // times the font's
    bool bold = false;
    bool inverted = false;
    bool underlined = false;

    bool operator==(const cell &) const = default;
};

struct text_line {
    std::vector<cell> cells;
    alignment align = alignment::left;

    bool operator==(const text_line &) const = default;
};

// One that is stored in the printer.
struct logo {
    std::string key; // or empty: by its number
    unsigned number = 0;
    alignment align = alignment::left;

    bool operator==(const logo &) const = default;
};

struct barcode {
    std::string text;
    unsigned module = 0; // dots
    unsigned height = 0; // dots
    bool has_characters_below = false;
    alignment align = alignment::left;

    bool operator==(const barcode &) const = default;
};

struct qr_code {
    std::string text;
    unsigned level = 0;  // 0 for L to 3 for H
    unsigned module = 0; // dots
    alignment align = alignment::left;

    bool operator==(const qr_code &) const = default;
};

struct cut {
    bool is_full = true;
    bool is_behind_last_line = true; // the paper was fed until the last line was past the cutter

    bool operator==(const cut &) const = default;
};

struct drawer {
    unsigned number = 1;

    bool operator==(const drawer &) const = default;
};

using element = std::variant<text_line, logo, barcode, qr_code, cut, drawer>;

// What is on the paper from top to bottom.
using roll = std::vector<element>;

enum class language { escpos, starprnt };

struct model {
    paper::language language = paper::language::escpos;
    unsigned dots = 576; // across the paper
    // Code pages by their numbers, as the system's iconv calls them, beside the maker's.
    std::map<unsigned, std::string> own_pages;
};

// A byte that no printer of the kind understands, or a command at the wrong place.
struct fault : std::runtime_error {
    fault(std::size_t where, const std::string &what)
        : std::runtime_error("byte " + std::to_string(where) + ": " + what), offset(where)
    {
    }
    std::size_t offset;
};

// Throws fault.
roll print(std::string_view bytes, const model &printer);

// The characters of a line, without attributes, as UTF-8.
std::string text_of(const text_line &line);

} // namespace paper

#endif
