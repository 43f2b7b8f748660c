// The bytes of a receipt printer: one copy's lines with the commands between and around them.
#include "qel_rcpt_print.hpp"
#include "qel_rcpt_chars.hpp"
#include "qel_rcpt_print_codes.hpp"

#include <algorithm>
#include <vector>

using qel_rcpt::code_page;
using qel_rcpt::line_style;
using qel_rcpt::printer_language;
using qel_rcpt::width_of;
using namespace std::string_view_literals;

namespace
{

constexpr unsigned default_feed = 4; // without a cut

// A block in markup or as data. None of these beginnings is one of a text block, which is in
// capitals.
bool is_text(std::string_view block)
{
    for (const std::string_view start : {"<"sv, "{\n  \""sv, "[\n  {\n    \""sv}) {
        if (!block.starts_with(start))
            continue;
        block.remove_prefix(start.size());
        return block.empty() || block.front() < 'a' || block.front() > 'z';
    }
    return true;
}

// What is printed, checked against the paper.
struct job {
    Qel_rcpt_printer_t printer;
    const printer_language *language;
    const code_page *page;
    std::uint8_t page_number;
    std::size_t dots; // across the paper
    bool font_b;
    qel_rcpt::qr_code qr;
};

// The widest line of both copies, so that they look alike.
std::size_t widest_line(const Qel_hash_dict_t *blocks)
{
    std::size_t widest = 0;
    for (const auto [key, block] : qel::pairs(blocks))
        qel_rcpt::for_each_line(qel::view(block), [&](std::string_view line) {
            if (line.size() > widest)
                widest = std::max(widest, width_of(line));
        });
    return widest;
}

Qel_rcpt_print_fault_t check_blocks(const Qel_hash_dict_t *blocks, std::string_view prefix)
{
    bool has_copy = false;
    for (const auto [key, block] : qel::pairs(blocks)) {
        if (!qel::view(key).starts_with(prefix))
            continue;
        has_copy = true;
        if (!is_text(qel::view(block)))
            return QEL_RCPT_PRINT_FAULT_NOT_TEXT;
    }
    return has_copy ? QEL_RCPT_PRINT_FAULT_NONE : QEL_RCPT_PRINT_FAULT_NO_COPY;
}

Qel_rcpt_print_fault_t choose_language(job &made)
{
    const Qel_rcpt_printer_t &printer = made.printer;
    made.language = qel_rcpt::find_printer_language(printer.language);
    const bool is_known = made.language != nullptr && printer.cut <= QEL_RCPT_CUT_NONE &&
                          printer.drawer <= QEL_RCPT_DRAWER_2 &&
                          printer.qr_level <= QEL_RCPT_QR_LEVEL_H &&
                          printer.qr_module <= made.language->most_qr_module;
    return is_known ? QEL_RCPT_PRINT_FAULT_NONE : QEL_RCPT_PRINT_FAULT_OPTION;
}

Qel_rcpt_print_fault_t choose_page(job &made)
{
    const Qel_rcpt_printer_t &printer = made.printer;
    made.page = qel_rcpt::find_code_page(printer.code_page);
    if (made.page == nullptr)
        return QEL_RCPT_PRINT_FAULT_CODE_PAGE;
    const auto number = printer.has_code_page_number
                            ? printer.code_page_number
                            : qel_rcpt::code_page_number(*made.page, printer.language);
    if (!number)
        return QEL_RCPT_PRINT_FAULT_CODE_PAGE;
    made.page_number = *number;
    return QEL_RCPT_PRINT_FAULT_NONE;
}

Qel_rcpt_print_fault_t choose_font(job &made, const Qel_hash_dict_t *blocks)
{
    const Qel_rcpt_printer_t &printer = made.printer;
    const std::size_t font_a =
        printer.paper_columns == 0 ? qel_rcpt::usual_paper_columns : printer.paper_columns;
    const std::size_t columns = printer.columns == 0 ? widest_line(blocks) : printer.columns;
    made.dots = font_a * qel_rcpt::font_a_dots;
    made.font_b = columns > font_a;
    return columns <= qel_rcpt::columns_in_font_b(font_a) ? QEL_RCPT_PRINT_FAULT_NONE
                                                          : QEL_RCPT_PRINT_FAULT_WIDTH;
}

Qel_rcpt_print_fault_t check_logo(const job &made)
{
    const std::string_view key = qel::view(made.printer.logo_key);
    if (key.empty())
        return QEL_RCPT_PRINT_FAULT_NONE;
    const bool is_key = key.size() == 2 && qel_rcpt::is_visible_ascii(key);
    return is_key && made.language->logo_by_key != nullptr ? QEL_RCPT_PRINT_FAULT_NONE
                                                           : QEL_RCPT_PRINT_FAULT_LOGO;
}

Qel_rcpt_print_fault_t choose_qr(job &made)
{
    const Qel_rcpt_printer_t &printer = made.printer;
    const std::string_view text = qel::view(printer.qr_text);
    if (text.empty())
        return QEL_RCPT_PRINT_FAULT_NONE;
    const auto code = qel_rcpt::fit_qr_code(text, printer.qr_level, printer.qr_module, made.dots);
    if (!code)
        return QEL_RCPT_PRINT_FAULT_QR;
    made.qr = *code;
    return QEL_RCPT_PRINT_FAULT_NONE;
}

Qel_rcpt_print_fault_t prepare(job &made, const Qel_hash_dict_t *blocks, std::string_view prefix)
{
    Qel_rcpt_print_fault_t fault = check_blocks(blocks, prefix);
    if (fault == QEL_RCPT_PRINT_FAULT_NONE)
        fault = choose_language(made);
    if (fault == QEL_RCPT_PRINT_FAULT_NONE)
        fault = choose_page(made);
    if (fault == QEL_RCPT_PRINT_FAULT_NONE)
        fault = choose_font(made, blocks);
    if (fault == QEL_RCPT_PRINT_FAULT_NONE)
        fault = check_logo(made);
    if (fault == QEL_RCPT_PRINT_FAULT_NONE)
        fault = choose_qr(made);
    return fault;
}

// A copy in the making.
class copy_printer
{
  public:
    copy_printer(const job &made, Qel_rcpt_printed_t &printed)
        : job_(made), lang_(*made.language), printed_(printed)
    {
        constexpr std::size_t usual_len = 4000;
        out_.reserve(usual_len);
    }

    void start()
    {
        out_.append(lang_.start).append(lang_.select_page) += static_cast<char>(job_.page_number);
        out_.append(job_.font_b ? lang_.font_b : lang_.font_a);
        if (job_.printer.drawer != QEL_RCPT_DRAWER_NONE)
            out_.append(job_.printer.drawer == QEL_RCPT_DRAWER_1 ? lang_.drawer_1 : lang_.drawer_2);
        print_logo();
    }

    void print_lines(const Qel_hash_dict_t *blocks, std::string_view prefix,
                     const qel_rcpt::emphasis &emphasis)
    {
        bool is_first = true;
        for (const auto [key, text] : qel::pairs(blocks)) {
            std::string_view block = qel::view(key);
            if (!block.starts_with(prefix))
                continue;
            block.remove_prefix(prefix.size());
            if (!is_first)
                out_ += '\n';
            is_first = false;
            print_block(block, qel::view(text), emphasis);
        }
    }

    void print_barcode(const char *order_number)
    {
        if (!job_.printer.barcode)
            return;
        const auto code = qel_rcpt::fit_barcode(qel::view(order_number), job_.dots);
        if (!code)
            return;
        out_.append("\n").append(lang_.center);
        lang_.barcode(out_, *code);
        out_.append(lang_.left);
        printed_.has_barcode = true;
    }

    void print_qr()
    {
        if (job_.qr.text.empty())
            return;
        out_.append("\n").append(lang_.center);
        lang_.qr(out_, job_.qr);
        out_.append(lang_.left);
    }

    void finish()
    {
        const Qel_rcpt_printer_t &printer = job_.printer;
        const bool is_torn_off = printer.cut == QEL_RCPT_CUT_NONE && printer.feed == 0;
        lang_.feed(out_, is_torn_off ? default_feed : printer.feed);
        if (printer.cut != QEL_RCPT_CUT_NONE)
            out_.append(printer.cut == QEL_RCPT_CUT_FULL ? lang_.full_cut : lang_.partial_cut);
    }

    // New memory of the C interface.
    [[nodiscard]] char *release() const
    {
        Qel_buf_t *const buf = Qel_buf_create();
        Qel_buf_add_fill(buf, 0, out_.size());
        char *const bytes = Qel_buf_finish_str(buf, nullptr);
        out_.copy(bytes, out_.size());
        printed_.len = out_.size();
        return bytes;
    }

  private:
    void print_logo()
    {
        const Qel_rcpt_printer_t &printer = job_.printer;
        const std::string_view key = qel::view(printer.logo_key);
        if (key.empty() && printer.logo_number == 0)
            return;
        out_.append(lang_.center);
        if (key.empty())
            lang_.logo_by_number(out_, printer.logo_number);
        else
            lang_.logo_by_key(out_, key);
        out_.append(lang_.left);
    }

    void print_block(std::string_view block, std::string_view text,
                     const qel_rcpt::emphasis &emphasis)
    {
        lines_.clear();
        qel_rcpt::for_each_line(text, [&](std::string_view line) { lines_.push_back(line); });
        styles_.assign(lines_.size(), line_style::plain);
        if (!job_.printer.no_emphasis)
            emphasis.mark(block, lines_, styles_);
        for (std::size_t i = 0; i < lines_.size(); ++i)
            print_line(lines_[i], styles_[i]);
    }

    // The blanks in front stay plain: inverted they would be a bar.
    void print_line(std::string_view line, line_style style)
    {
        const auto &[on, off] = lang_.styles[static_cast<std::size_t>(style)];
        if (style != line_style::plain) {
            const std::size_t indent = std::min(line.find_first_not_of(' '), line.size());
            out_.append(indent, ' ').append(on);
            line.remove_prefix(indent);
        }
        printed_.replaced += qel_rcpt::append_encoded(out_, line, *job_.page);
        out_.append(off) += '\n';
    }

    const job &job_;
    const printer_language &lang_;
    Qel_rcpt_printed_t &printed_;
    std::string out_;
    std::vector<std::string_view> lines_; // of one block
    std::vector<line_style> styles_;
};

} // namespace

char *Qel_rcpt_print(const Qel_hash_dict_t *blocks, const Qel_hash_dict_t *kvs, bool is_custcopy,
                     const Qel_rcpt_printer_t *printer, Qel_rcpt_printed_t *printed) noexcept
{
    Qel_rcpt_printed_t untold{};
    Qel_rcpt_printed_t &told = printed == nullptr ? untold : *printed;
    told = {};
    const std::string_view prefix = is_custcopy ? "cust_" : "merch_";
    job made{};
    if (printer != nullptr)
        made.printer = *printer;
    told.fault = prepare(made, blocks, prefix);
    if (told.fault != QEL_RCPT_PRINT_FAULT_NONE)
        return nullptr;

    copy_printer copy(made, told);
    copy.start();
    copy.print_lines(blocks, prefix, qel_rcpt::emphasis(blocks, kvs, is_custcopy));
    copy.print_barcode(qel_rcpt::get_order_number(kvs));
    copy.print_qr();
    copy.finish();
    return copy.release();
}

const char *Qel_rcpt_print_fault_to_str(Qel_rcpt_print_fault_t fault) noexcept
{
    switch (fault) {
    case QEL_RCPT_PRINT_FAULT_NONE:
        return "the copy is printed";
    case QEL_RCPT_PRINT_FAULT_NO_COPY:
        return "there is no such copy";
    case QEL_RCPT_PRINT_FAULT_NOT_TEXT:
        return "a block is markup or data, not text";
    case QEL_RCPT_PRINT_FAULT_OPTION:
        return "the printer's language, the cut, the drawer, the QR level or the QR module has an "
               "unknown value";
    case QEL_RCPT_PRINT_FAULT_CODE_PAGE:
        return "the printer's language has no such code page";
    case QEL_RCPT_PRINT_FAULT_WIDTH:
        return "the receipt is wider than the paper";
    case QEL_RCPT_PRINT_FAULT_LOGO:
        return "the logo's key is not two ASCII characters, or the language has no keys";
    case QEL_RCPT_PRINT_FAULT_QR:
        return "the text of the QR code is too long for a code or for the paper";
    }
    return "unknown";
}
