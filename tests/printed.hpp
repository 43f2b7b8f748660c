// What Qel_rcpt_print makes, and what a printer in software puts on paper of it.
#ifndef QELRCPT_TESTS_PRINTED_HPP
#define QELRCPT_TESTS_PRINTED_HPP

#include "paper/printer.h"
#include "test_record.hpp"

#include <qel_rcpt.h>
#include <qel_rcpt_print.h>

#include <map>
#include <string>
#include <utility>
#include <variant>
#include <vector>

namespace test::printing
{

// One copy's result.
struct outcome {
    std::string bytes;
    Qel_rcpt_printed_t told{};
    bool is_absent = false;
};

inline outcome print(const Qel_hash_dict_t *blocks, const Qel_hash_dict_t *kvs,
                     const Qel_rcpt_printer_t &printer = {}, bool is_custcopy = true)
{
    outcome made;
    const qel::text bytes(Qel_rcpt_print(blocks, kvs, is_custcopy, &printer, &made.told));
    made.is_absent = bytes == nullptr;
    if (bytes)
        made.bytes.assign(bytes.get(), made.told.len);
    return made;
}

inline paper::roll on_paper(const outcome &printed, const Qel_rcpt_printer_t &printer = {},
                            std::map<unsigned, std::string> own_pages = {})
{
    paper::model model;
    model.language = printer.language == QEL_RCPT_PRINTER_LANG_STARPRNT ? paper::language::starprnt
                                                                        : paper::language::escpos;
    model.dots = 12 * (printer.paper_columns == 0 ? 48U : printer.paper_columns);
    model.own_pages = std::move(own_pages);
    return paper::print(printed.bytes, model);
}

template <typename Element>
std::vector<Element> all_of(const paper::roll &roll)
{
    std::vector<Element> found;
    for (const paper::element &one : roll) {
        if (const auto *element = std::get_if<Element>(&one))
            found.push_back(*element);
    }
    return found;
}

inline std::vector<std::string> texts_of(const paper::roll &roll)
{
    std::vector<std::string> texts;
    for (const paper::text_line &line : all_of<paper::text_line>(roll))
        texts.push_back(paper::text_of(line));
    return texts;
}

// A copy of one block.
inline record own_blocks(const std::string &notes)
{
    return {{"cust_notes", notes.c_str()}};
}

inline constexpr Qel_rcpt_printer_t star = {.language = QEL_RCPT_PRINTER_LANG_STARPRNT};

} // namespace test::printing

#endif
