// The parts of a printer that the commands of both languages work on.
#ifndef QELRCPT_TOOLS_MACHINE_H
#define QELRCPT_TOOLS_MACHINE_H

#include "paper/printer.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace paper
{

// A code page's number at its maker; the name is iconv's.
struct page_number {
    unsigned number;
    const char *name;
};

// The characters of a code page by their bytes; 0 where there is none.
using page = std::array<char32_t, 256>;

// What characters look like until the next command.
struct style {
    bool font_b = false;
    unsigned width = 1;
    unsigned height = 1;
    bool bold = false;
    bool inverted = false;
    bool underlined = false;
};

class machine;

struct command {
    std::string_view prefix;
    void (*run)(machine &printer); // reads what follows the prefix
};

// The first page is the one after a reset.
struct language_facts {
    std::span<const page_number> pages;
    std::span<const command> commands;
};

language_facts escpos_facts();
language_facts starprnt_facts();

class machine
{
  public:
    machine(std::string_view bytes, const model &made, language_facts spoken);

    // All of the bytes, as a printer does it.
    roll run();

    // Parameters. Out of their range they are a fault.
    std::uint8_t byte();
    std::uint8_t byte_in(unsigned first, unsigned last);
    unsigned digit(unsigned last); // as a number or in ASCII
    bool flag() { return digit(1) == 1; }
    std::size_t word();
    std::string text(std::size_t len);
    std::string text_until(char end);

    [[noreturn]] void fail(const std::string &what) const { throw fault(command_at_, what); }

    // Settings
    void reset();
    void select_page(unsigned number);
    void align(unsigned number);
    style &type() { return style_; }
    barcode next_barcode{{}, 3, 162, false, alignment::left};
    qr_code next_qr{{}, 0, 3, alignment::left};

    // Onto the paper
    void end_line();
    void feed(unsigned lines);
    void put(logo made);
    void put(barcode made);
    void put(qr_code made);
    void put(const cut &made);
    void put(const drawer &made) { paper_.emplace_back(made); }

  private:
    void step();
    void print_character(std::uint8_t byte);
    void need_line_start() const;

    std::string_view bytes_;
    std::size_t at_ = 0;
    std::size_t command_at_ = 0;
    const model &model_;
    language_facts spoken_;
    const page *page_ = nullptr;
    style style_;
    alignment align_ = alignment::left;
    std::vector<cell> line_;
    unsigned used_dots_ = 0; // of the line
    roll paper_;
};

} // namespace paper

#endif
