#include "paper/picture.h"

#include "paper/code_points.h"
#include "paper/symbols.h"

#include <cairo.h>
#include <qelstdlib.hpp>

#include <algorithm>
#include <stdexcept>

namespace paper
{

namespace
{

// In dots.
constexpr double edge = 28;      // of paper beside the print
constexpr double table = 24;     // around the pieces of paper
constexpr double top = 36;       // of a piece, above its first line
constexpr double to_cutter = 72; // from the last line
constexpr double character_height = 24;
constexpr double line_spacing = 30;
constexpr double logo_width = 240;
constexpr double logo_height = 96;
constexpr double most_height = 32000; // of a picture

struct color {
    double red;
    double green;
    double blue;
};

constexpr color table_color = {0.90, 0.894, 0.875};
constexpr color paper_color = {1, 1, 1};
constexpr color ink = {0.1, 0.1, 0.12};
constexpr color faint = {0.55, 0.55, 0.55};

using surface = qel::owner<cairo_surface_t, cairo_surface_destroy>;
using context = qel::owner<cairo_t, cairo_destroy>;

double height_of(const text_line &line)
{
    unsigned tallest = 1;
    for (const cell &one : line.cells)
        tallest = std::max(tallest, one.height);
    return character_height * tallest + (line_spacing - character_height);
}
double height_of(const logo & /*stored*/)
{
    return logo_height;
}
double height_of(const barcode &code)
{
    return code.height + (code.has_characters_below ? line_spacing : 0);
}
double height_of(const qr_code &code)
{
    const auto drawn = qr_modules(code.text, code.level);
    return drawn ? static_cast<double>(drawn->size() * code.module) : 0;
}
double height_of(const cut &made)
{
    return made.is_behind_last_line ? to_cutter : 0;
}
double height_of(const drawer & /*opened*/)
{
    return 0;
}

// A piece of paper: what is on it, and whether it hangs together with the next one.
struct piece {
    std::vector<const element *> elements;
    double height = top;
    bool is_partly_cut = false;
};

std::vector<piece> pieces_of(const roll &printed)
{
    std::vector<piece> pieces(1);
    for (const element &one : printed) {
        piece &last = pieces.back();
        last.height += std::visit([](const auto &is) { return height_of(is); }, one);
        if (const auto *made = std::get_if<cut>(&one)) {
            last.is_partly_cut = !made->is_full;
            pieces.emplace_back();
        } else {
            last.elements.push_back(&one);
        }
    }
    if (pieces.back().elements.empty() && pieces.size() > 1)
        pieces.pop_back();
    return pieces;
}

class pen
{
  public:
    pen(cairo_t *cairo, unsigned dots) : cairo_(cairo), dots_(dots) {}

    void set(const color &wanted)
    {
        cairo_set_source_rgb(cairo_, wanted.red, wanted.green, wanted.blue);
    }
    void rectangle(double x, double y, double width, double height)
    {
        cairo_rectangle(cairo_, x, y, width, height);
        cairo_fill(cairo_);
    }

    // The left end of something as wide on the paper.
    double left_of(alignment align, double width) const
    {
        const double spare = dots_ - width;
        const double indent =
            align == alignment::left ? 0 : (align == alignment::center ? spare / 2 : spare);
        return table + edge + std::max(indent, 0.0);
    }

    // A character that fills its cell, whatever the font's own width.
    void character(const cell &one, double x, double bottom)
    {
        constexpr double size = 20;
        const double height = character_height * one.height;
        set(ink);
        if (one.inverted) {
            rectangle(x, bottom - height, one.dots, height);
            set(paper_color);
        }
        cairo_select_font_face(cairo_, "monospace", CAIRO_FONT_SLANT_NORMAL,
                               one.bold ? CAIRO_FONT_WEIGHT_BOLD : CAIRO_FONT_WEIGHT_NORMAL);
        cairo_set_font_size(cairo_, size);
        cairo_text_extents_t usual;
        cairo_text_extents(cairo_, "M", &usual);
        cairo_save(cairo_);
        cairo_translate(cairo_, x, bottom - 0.23 * height);
        cairo_scale(cairo_, one.dots / usual.x_advance, one.height);
        cairo_move_to(cairo_, 0, 0);
        cairo_show_text(cairo_, to_utf8({&one.character, 1}).c_str());
        cairo_restore(cairo_);
        if (one.underlined)
            rectangle(x, bottom - 2, one.dots, 2);
    }

    void text(std::u32string_view shown, double x, double bottom)
    {
        for (const char32_t character_shown : shown) {
            cell one;
            one.character = character_shown;
            character(one, x, bottom);
            x += one.dots;
        }
    }

    void draw(const text_line &line, double y)
    {
        double width = 0;
        for (const cell &one : line.cells)
            width += one.dots;
        double x = left_of(line.align, width);
        const double bottom = y + height_of(line) - (line_spacing - character_height);
        for (const cell &one : line.cells) {
            character(one, x, bottom);
            x += one.dots;
        }
    }

    void draw(const logo &stored, double y)
    {
        const std::string name = stored.key.empty() ? std::to_string(stored.number) : stored.key;
        std::u32string shown = U"LOGO ";
        shown.append(name.begin(), name.end());
        const double x = left_of(stored.align, logo_width);
        set(faint);
        rectangle(x, y, logo_width, logo_height);
        set(paper_color);
        rectangle(x + 3, y + 3, logo_width - 6, logo_height - 6);
        text(shown, x + (logo_width - 12.0 * static_cast<double>(shown.size())) / 2,
             y + logo_height / 2 + 12);
    }

    void draw(const modules &rows, double x, double y, double width, double height)
    {
        set(ink);
        cairo_set_antialias(cairo_, CAIRO_ANTIALIAS_NONE);
        for (size_t row = 0; row < rows.size(); ++row) {
            for (size_t column = 0; column < rows[row].size(); ++column) {
                if (rows[row][column])
                    rectangle(x + width * static_cast<double>(column),
                              y + height * static_cast<double>(row), width, height);
            }
        }
        cairo_set_antialias(cairo_, CAIRO_ANTIALIAS_DEFAULT);
    }

    void draw(const barcode &code, double y)
    {
        const modules drawn = code128_modules(code.text).value_or(modules{{}});
        const auto width = static_cast<double>(drawn.front().size() * code.module);
        draw(drawn, left_of(code.align, width), y, code.module, code.height);
        if (!code.has_characters_below)
            return;
        const std::u32string shown(code.text.begin(), code.text.end());
        const double text_width = 12.0 * static_cast<double>(shown.size());
        text(shown, left_of(code.align, text_width), y + code.height + character_height + 3);
    }

    void draw(const qr_code &code, double y)
    {
        const modules drawn = qr_modules(code.text, code.level).value_or(modules{});
        draw(drawn, left_of(code.align, static_cast<double>(drawn.size() * code.module)), y,
             code.module, code.module);
    }

    void draw(const cut & /*made*/, double /*y*/) {}
    void draw(const drawer & /*opened*/, double /*y*/) {}

    void draw(const piece &sheet, double y)
    {
        const double width = dots_ + 2 * edge;
        set(paper_color);
        rectangle(table, y, width, sheet.height);
        if (sheet.is_partly_cut) // the point that is left
            rectangle(table + width / 2 - 6, y + sheet.height, 12, table);
        y += top;
        for (const element *one : sheet.elements) {
            std::visit([&](const auto &is) { draw(is, y); }, *one);
            y += std::visit([](const auto &is) { return height_of(is); }, *one);
        }
    }

  private:
    cairo_t *cairo_;
    unsigned dots_;
};

cairo_status_t append(void *png, const unsigned char *bytes, unsigned len)
{
    static_cast<std::string *>(png)->append(reinterpret_cast<const char *>(bytes), len);
    return CAIRO_STATUS_SUCCESS;
}

} // namespace

std::string as_png(const roll &printed, unsigned dots)
{
    const std::vector<piece> pieces = pieces_of(printed);
    double height = table;
    for (const piece &sheet : pieces)
        height += sheet.height + table;
    if (height > most_height)
        throw std::runtime_error("there is too much paper for one picture");

    const double width = dots + 2 * (edge + table);
    const surface drawn(cairo_image_surface_create(CAIRO_FORMAT_RGB24, static_cast<int>(width),
                                                   static_cast<int>(height)));
    const context cairo(cairo_create(drawn.get()));
    pen pen(cairo.get(), dots);
    pen.set(table_color);
    pen.rectangle(0, 0, width, height);
    double y = table;
    for (const piece &sheet : pieces) {
        pen.draw(sheet, y);
        y += sheet.height + table;
    }
    std::string png;
    if (cairo_surface_write_to_png_stream(drawn.get(), append, &png) != CAIRO_STATUS_SUCCESS)
        throw std::runtime_error("the picture cannot be drawn");
    return png;
}

} // namespace paper
