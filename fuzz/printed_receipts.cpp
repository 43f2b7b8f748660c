// Receipts on paper: whatever a record holds, what is printed are the receipt's lines, and no value
// of it is a command.
#include "receipt.hpp"

#include "paper/code_points.h"
#include "paper/printer.h"

#include <qel_rcpt_print.h>
#include <utf8.h>

#include <iterator>

namespace
{

// Options that follow from the input, each bit as good as any other.
class choices
{
  public:
    explicit choices(std::string_view input)
    {
        for (const char byte : input) // FNV-1a
            bits_ = (bits_ ^ static_cast<unsigned char>(byte)) * 0x100000001B3U;
    }
    unsigned below(unsigned count)
    {
        const auto chosen = static_cast<unsigned>(bits_ >> 33U) % count;
        bits_ = bits_ * 6364136223846793005U + 1442695040888963407U;
        return chosen;
    }

  private:
    std::uint64_t bits_ = 0xCBF29CE484222325U;
};

struct page_choice {
    Qel_rcpt_code_page_t id;
    const char *name; // iconv's
};

constexpr page_choice escpos_pages[] = {
    {QEL_RCPT_CODE_PAGE_DEFAULT, "CP858"},
    {QEL_RCPT_CODE_PAGE_437, "CP437"},
    {QEL_RCPT_CODE_PAGE_866, "CP866"},
    {QEL_RCPT_CODE_PAGE_1252, "CP1252"},
    {QEL_RCPT_CODE_PAGE_ISO_8859_15, "ISO-8859-15"},
};
constexpr std::size_t star_pages = 4; // of them

// The lines of a copy, a blank one between two blocks; what is no UTF-8 as U+FFFD.
std::vector<std::u32string> lines_of(const Qel_hash_dict_t *blocks, std::string_view prefix)
{
    std::vector<std::u32string> lines;
    for (const auto [key, block] : qel::pairs(blocks)) {
        if (!qel::view(key).starts_with(prefix))
            continue;
        if (!lines.empty())
            lines.emplace_back();
        std::string text = fuzz::taken(Qel_strdup_replace_str(block, "\r\n", "\n"));
        std::ranges::replace(text, '\r', '\n');
        for (std::size_t from = 0; from != std::string::npos;) {
            const std::size_t end = text.find('\n', from);
            const std::string_view line = std::string_view(text).substr(from, end - from);
            std::string repaired;
            utf8::replace_invalid(line.begin(), line.end(), std::back_inserter(repaired));
            lines.push_back(utf8::utf8to32(repaired));
            from = end == std::string::npos ? end : end + 1;
        }
    }
    return lines;
}

// Marks on the character before and what only directs a text.
bool takes_no_room(char32_t chr)
{
    const auto is_in = [&](char32_t first, char32_t last) { return chr >= first && chr <= last; };
    return is_in(0x300, 0x36F) || is_in(0x1AB0, 0x1AFF) || is_in(0x1DC0, 0x1DFF) ||
           is_in(0x200B, 0x200F) || is_in(0x202A, 0x202E) || is_in(0x2060, 0x2064) ||
           is_in(0x20D0, 0x20FF) || is_in(0xFE00, 0xFE0F) || is_in(0xFE20, 0xFE2F) || chr == 0xFEFF;
}

// Checks that the cells are the lines; gives how many characters are not on the page.
std::size_t check_lines(const std::vector<std::u32string> &lines,
                        const std::vector<paper::cell> &cells, const paper::page &page)
{
    std::size_t replaced = 0;
    auto cell = cells.begin();
    for (const std::u32string &line : lines) {
        for (const char32_t chr : line) {
            const bool is_on_page = chr >= 0x20 && std::ranges::find(page, chr) != page.end();
            replaced += is_on_page ? 0 : 1;
            if (!is_on_page && takes_no_room(chr))
                continue;
            fuzz::require(cell != cells.end(), "every character has a cell");
            fuzz::require(is_on_page ? cell->character == chr : cell->character != 0,
                          "a character of the page is printed as it is");
            ++cell;
        }
    }
    fuzz::require(cell == cells.end(), "nothing else is printed");
    return replaced;
}

void check_copy(const Qel_hash_dict_t *blocks, const Qel_hash_dict_t *kvs, bool is_custcopy,
                choices chosen)
{
    Qel_rcpt_printer_t printer{};
    printer.language = static_cast<Qel_rcpt_printer_lang_t>(chosen.below(2));
    const bool is_star = printer.language == QEL_RCPT_PRINTER_LANG_STARPRNT;
    const page_choice &page =
        escpos_pages[chosen.below(is_star ? star_pages : std::size(escpos_pages))];
    printer.code_page = page.id;
    printer.columns = static_cast<std::uint16_t>(chosen.below(70));
    printer.no_emphasis = chosen.below(4) == 0;
    printer.cut = static_cast<Qel_rcpt_cut_t>(chosen.below(3));
    printer.feed = static_cast<std::uint8_t>(chosen.below(256));
    printer.drawer = static_cast<Qel_rcpt_drawer_t>(chosen.below(3));
    printer.logo_number = static_cast<std::uint8_t>(chosen.below(2));
    printer.barcode = chosen.below(2) == 0;
    printer.qr_text = Qel_hash_dict_get_direct(kvs, "merch_url");
    Qel_rcpt_printed_t told{};
    const qel::text bytes(
        Qel_rcpt_print(blocks, chosen.below(4) == 0 ? nullptr : kvs, is_custcopy, &printer, &told));
    fuzz::require((bytes == nullptr) == (told.fault != QEL_RCPT_PRINT_FAULT_NONE),
                  "a result has no fault");
    const char *prefix = is_custcopy ? "cust_" : "merch_";
    const std::vector<std::u32string> lines = lines_of(blocks, prefix);
    if (!bytes) {
        const bool may_be = told.fault == QEL_RCPT_PRINT_FAULT_QR ||
                            (told.fault == QEL_RCPT_PRINT_FAULT_WIDTH &&
                             (printer.columns == 0 || printer.columns > 64)) ||
                            (told.fault == QEL_RCPT_PRINT_FAULT_NO_COPY && lines.empty());
        fuzz::require(may_be, "there is a reason for no result");
        return;
    }

    paper::model model;
    model.language = is_star ? paper::language::starprnt : paper::language::escpos;
    std::vector<paper::cell> cells;
    std::size_t barcodes = 0;
    std::size_t others = 0;
    try {
        for (const paper::element &one : paper::print({bytes.get(), told.len}, model)) {
            if (const auto *line = std::get_if<paper::text_line>(&one))
                cells.insert(cells.end(), line->cells.begin(), line->cells.end());
            else if (std::holds_alternative<paper::barcode>(one))
                ++barcodes;
            else
                ++others;
        }
    } catch (const paper::fault &fault) {
        std::fprintf(stderr, "%s\n", fault.what());
        fuzz::require(false, "a printer understands what is printed");
    }
    fuzz::require(check_lines(lines, cells, paper::page_named(page.name)) == told.replaced,
                  "the characters that are replaced are counted");
    fuzz::require(barcodes == (told.has_barcode ? 1 : 0), "the barcode is there");
    const std::size_t wanted = (printer.drawer != QEL_RCPT_DRAWER_NONE ? 1U : 0U) +
                               printer.logo_number + (Qel_str_isempty(printer.qr_text) ? 0U : 1U) +
                               (printer.cut != QEL_RCPT_CUT_NONE ? 1U : 0U);
    fuzz::require(others == wanted, "nothing is cut, opened or drawn beside what was asked for");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    Qel_rcpt_init();
    const fuzz::receipt_input from(fuzz::input(data, size));
    choices chosen({reinterpret_cast<const char *>(data), size});
    const unsigned form = chosen.below(4);
    const qel::dict blocks(form == 0
                               ? Qel_rcpt_generate_plain_moneris(from.record(), from.config())
                               : Qel_rcpt_generate_plain(from.record(), from.config(), from.width(),
                                                         form == 1 ? nullptr : "\n"));
    for (const bool is_custcopy : {true, false})
        check_copy(blocks.get(), from.record(), is_custcopy, chosen);
    return 0;
}
