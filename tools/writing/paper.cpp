#include "writing/paper.h"

#include "messages.h"

#ifdef QELRCPT_PNG
#include "paper/picture.h"
#endif

#include <algorithm>

namespace tool
{

namespace
{

std::string_view name_of(Qel_rcpt_code_page_t id)
{
    const auto *found =
        std::ranges::find(qel_rcpt::code_pages, id, &qel_rcpt::named<Qel_rcpt_code_page_t>::id);
    return (found == std::end(qel_rcpt::code_pages) ? qel_rcpt::code_pages : found)->name;
}

// The option that is at fault; empty where it is the receipt.
std::string_view option_at_fault(Qel_rcpt_print_fault_t fault)
{
    switch (fault) {
    case QEL_RCPT_PRINT_FAULT_CODE_PAGE:
        return "--code-page";
    case QEL_RCPT_PRINT_FAULT_LOGO:
        return "--logo";
    case QEL_RCPT_PRINT_FAULT_QR:
        return "--qr";
    default:
        return "";
    }
}

Qel_rcpt_drawer_t drawer_of(const paper_options &options)
{
    if (options.other_drawer)
        return QEL_RCPT_DRAWER_2;
    return options.drawer ? QEL_RCPT_DRAWER_1 : QEL_RCPT_DRAWER_NONE;
}

} // namespace

paper_roll::paper_roll(const paper_options &options, Qel_rcpt_printer_lang_t language)
    : options_(options)
{
    printer_.language = language;
    printer_.paper_columns = options.columns.value_or(0);
    printer_.code_page = options.code_page;
    printer_.has_code_page_number = options.code_page_number.has_value();
    printer_.code_page_number = options.code_page_number.value_or(0);
    printer_.no_emphasis = options.no_emphasis;
    printer_.cut = options.cut;
    printer_.feed = options.feed;
    printer_.drawer = drawer_of(options);
    printer_.logo_number = options.logo_number;
    printer_.logo_key = options.logo_key.c_str();
    printer_.barcode = options.barcode;
    printer_.qr_text = options.qr_text.c_str();
    printer_.qr_level = options.qr_level;
    printer_.qr_module = options.qr_module;
}

void paper_roll::add(const std::string &name, const receipt &shown, const Qel_hash_dict_t *record,
                     bool quiet)
{
    const qel::dict blocks(Qel_hash_dict_create(32, 75, QEL_HASH_DICT_KEYS_ORDERED));
    for (const block &one : shown.blocks)
        Qel_hash_dict_insert(blocks.get(), one.key.data(), one.text.data());
    printer_.columns = static_cast<std::uint16_t>(shown.width);
    const bool has_customer_copy = add_copy(name, blocks.get(), record, true, quiet);
    if (!add_copy(name, blocks.get(), record, false, quiet) && !has_customer_copy)
        throw input_error(name + ": there is nothing to print");
}

bool paper_roll::add_copy(const std::string &name, const Qel_hash_dict_t *blocks,
                          const Qel_hash_dict_t *record, bool is_custcopy, bool quiet)
{
    Qel_rcpt_printed_t printed;
    const qel::text bytes(Qel_rcpt_print(blocks, record, is_custcopy, &printer_, &printed));
    if (!bytes) {
        if (printed.fault == QEL_RCPT_PRINT_FAULT_NO_COPY)
            return false;
        const std::string_view option = option_at_fault(printed.fault);
        const std::string reason = Qel_rcpt_print_fault_to_str(printed.fault);
        if (!option.empty())
            throw usage_error(std::string(option) + ": " + reason);
        const std::string width = std::to_string(printer_.columns) + " columns: ";
        throw input_error(name + ": " + (printed.fault == QEL_RCPT_PRINT_FAULT_WIDTH ? width : "") +
                          reason);
    }
    bytes_.append(bytes.get(), printed.len);
    printer_.drawer = QEL_RCPT_DRAWER_NONE; // opened once
    if (quiet)
        return true;
    const std::string of_copy = is_custcopy ? ": customer copy: " : ": merchant copy: ";
    if (printed.replaced > 0)
        complain(name + of_copy + counted(printed.replaced, "character") +
                 (printed.replaced == 1 ? " that is" : " that are") + " not on code page " +
                 std::string(name_of(printer_.code_page)) +
                 (printed.replaced == 1 ? " was replaced" : " were replaced"));
    if (printer_.barcode && !printed.has_barcode)
        complain(name + of_copy +
                 "no barcode: there is no order number, or none that fits in CODE128 on the paper");
    return true;
}

std::string paper_roll::as_png() const
{
#ifdef QELRCPT_PNG
    paper::model model;
    model.language = printer_.language == QEL_RCPT_PRINTER_LANG_STARPRNT ? paper::language::starprnt
                                                                         : paper::language::escpos;
    const size_t columns = options_.columns.value_or(qel_rcpt::usual_paper_columns);
    model.dots = static_cast<unsigned>(qel_rcpt::font_a_dots * columns);
    if (options_.code_page_number)
        model.own_pages[*options_.code_page_number] = name_of(options_.code_page);
    return paper::as_png(paper::print(bytes_, model), model.dots);
#else
    throw input_error("this qelrcpt was built without pictures");
#endif
}

} // namespace tool
