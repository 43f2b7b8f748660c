#include "paper/machine.h"

#include "paper/code_points.h"
#include "paper/symbols.h"

#include <algorithm>
#include <utility>

namespace paper
{

machine::machine(std::string_view bytes, const model &made, language_facts spoken)
    : bytes_(bytes), model_(made), spoken_(spoken)
{
    reset();
}

roll machine::run()
{
    while (at_ < bytes_.size())
        step();
    if (!line_.empty())
        throw fault(at_, "the last line is not printed");
    return std::move(paper_);
}

// The longest of the commands that begin here, else a character. All begin with a control
// character.
void machine::step()
{
    command_at_ = at_;
    if (static_cast<unsigned char>(bytes_[at_]) >= ' ')
        return print_character(byte());
    const command *longest = nullptr;
    for (const command &one : spoken_.commands) {
        if (bytes_.substr(at_).starts_with(one.prefix) &&
            (longest == nullptr || one.prefix.size() > longest->prefix.size()))
            longest = &one;
    }
    if (longest == nullptr)
        return print_character(byte());
    at_ += longest->prefix.size();
    longest->run(*this);
}

std::uint8_t machine::byte()
{
    if (at_ == bytes_.size())
        fail("the command ends too early");
    return static_cast<std::uint8_t>(bytes_[at_++]);
}

std::uint8_t machine::byte_in(unsigned first, unsigned last)
{
    const std::uint8_t value = byte();
    if (value < first || value > last)
        fail("a parameter is out of its range: " + std::to_string(value));
    return value;
}

unsigned machine::digit(unsigned last)
{
    const unsigned value = byte();
    const unsigned number = value >= '0' ? value - '0' : value;
    if (number > last)
        fail("a parameter is out of its range: " + std::to_string(value));
    return number;
}

std::size_t machine::word()
{
    const std::size_t low = byte();
    return low + byte() * std::size_t{256};
}

std::string machine::text(std::size_t len)
{
    if (bytes_.size() - at_ < len)
        fail("the command ends too early");
    at_ += len;
    return std::string(bytes_.substr(at_ - len, len));
}

std::string machine::text_until(char end)
{
    const std::size_t found = bytes_.find(end, at_);
    if (found == std::string_view::npos)
        fail("the command does not end");
    std::string read = text(found - at_);
    ++at_;
    return read;
}

void machine::reset()
{
    style_ = {};
    align_ = alignment::left;
    select_page(spoken_.pages.front().number);
}

void machine::select_page(unsigned number)
{
    const auto own = model_.own_pages.find(number);
    if (own != model_.own_pages.end()) {
        page_ = &page_named(own->second);
        return;
    }
    const auto known = std::ranges::find(spoken_.pages, number, &page_number::number);
    if (known == spoken_.pages.end())
        fail("there is no code page " + std::to_string(number));
    page_ = &page_named(known->name);
}

// What is only understood at the beginning of a line.
void machine::need_line_start() const
{
    if (!line_.empty())
        fail("not at the beginning of a line");
}

void machine::align(unsigned number)
{
    need_line_start();
    align_ = static_cast<alignment>(number);
}

void machine::print_character(std::uint8_t byte)
{
    const char32_t character = (*page_)[byte];
    if (character == 0)
        fail("byte " + std::to_string(byte) + " is neither a command nor a character");
    cell made;
    made.character = character;
    made.dots = (style_.font_b ? 9U : 12U) * style_.width;
    made.height = style_.height;
    made.bold = style_.bold;
    made.inverted = style_.inverted;
    made.underlined = style_.underlined;
    if (used_dots_ + made.dots > model_.dots)
        end_line();
    used_dots_ += made.dots;
    line_.push_back(made);
}

void machine::end_line()
{
    paper_.emplace_back(text_line{std::exchange(line_, {}), align_});
    used_dots_ = 0;
}

void machine::feed(unsigned lines)
{
    for (; lines > 0; --lines)
        end_line();
}

void machine::put(logo made)
{
    need_line_start();
    made.align = align_;
    paper_.emplace_back(std::move(made));
}

void machine::put(barcode made)
{
    need_line_start();
    const auto drawn = code128_modules(made.text);
    if (!drawn)
        fail("no barcode of that text");
    if (drawn->front().size() * made.module > model_.dots)
        fail("the barcode is wider than the paper");
    made.align = align_;
    paper_.emplace_back(std::move(made));
}

void machine::put(qr_code made)
{
    need_line_start();
    const auto drawn = qr_modules(made.text, made.level);
    if (!drawn)
        fail("no QR code of that text");
    if (drawn->size() * made.module > model_.dots)
        fail("the QR code is wider than the paper");
    made.align = align_;
    paper_.emplace_back(std::move(made));
}

void machine::put(const cut &made)
{
    need_line_start();
    paper_.emplace_back(made);
}

roll print(std::string_view bytes, const model &printer)
{
    return machine(bytes, printer,
                   printer.language == language::escpos ? escpos_facts() : starprnt_facts())
        .run();
}

std::string text_of(const text_line &line)
{
    std::u32string text;
    for (const cell &one : line.cells)
        text += one.character;
    return to_utf8(text);
}

} // namespace paper
