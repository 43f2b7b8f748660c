// paper_cells LANGUAGE DOTS: prints what is on the paper that a printer makes of standard input; a
// line an element. A line of text stands with the attributes of its cells below it: b in bold, B
// twice as high as well, t only that, i inverted, . plain.
#include "paper/printer.h"

#include <iostream>
#include <iterator>
#include <string>

namespace
{

const char *const aligned[] = {"left", "center", "right"};

char mark_of(const paper::cell &one)
{
    if (one.inverted)
        return 'i';
    if (one.height > 1)
        return one.bold ? 'B' : 't';
    return one.bold ? 'b' : '.';
}

struct teller {
    void operator()(const paper::text_line &line) const
    {
        std::string marks;
        for (const paper::cell &one : line.cells)
            marks += mark_of(one);
        const unsigned dots = line.cells.empty() ? 0 : line.cells.front().dots;
        std::cout << "text " << dots << " |" << paper::text_of(line) << "|\n      |" << marks
                  << "|\n";
    }
    void operator()(const paper::logo &stored) const
    {
        std::cout << "logo " << stored.key << stored.number << "\n";
    }
    void operator()(const paper::barcode &code) const
    {
        std::cout << "barcode " << code.text << " module " << code.module << " height "
                  << code.height << (code.has_characters_below ? " with characters" : "") << " "
                  << aligned[static_cast<int>(code.align)] << "\n";
    }
    void operator()(const paper::qr_code &code) const
    {
        std::cout << "qr " << code.text << " level " << code.level << " module " << code.module
                  << " " << aligned[static_cast<int>(code.align)] << "\n";
    }
    void operator()(const paper::cut &made) const
    {
        std::cout << "cut " << (made.is_full ? "full" : "partial") << "\n";
    }
    void operator()(const paper::drawer &opened) const
    {
        std::cout << "drawer " << opened.number << "\n";
    }
};

} // namespace

int main(int argc, char **argv)
{
    if (argc != 3)
        return 2;
    paper::model model;
    model.language =
        std::string(argv[1]) == "star" ? paper::language::starprnt : paper::language::escpos;
    model.dots = static_cast<unsigned>(std::stoul(argv[2]));
    const std::string bytes{std::istreambuf_iterator<char>(std::cin), {}};
    try {
        for (const paper::element &one : paper::print(bytes, model))
            std::visit(teller(), one);
    } catch (const paper::fault &fault) {
        std::cerr << fault.what() << "\n";
        return 1;
    }
    return 0;
}
