// Receipts for receipt printers.
#ifndef QELRCPT_TOOLS_PAPER_H
#define QELRCPT_TOOLS_PAPER_H

#include "writing/render.h"

#include <qel_rcpt_print.h>

#include <cstdint>
#include <optional>
#include <string>

namespace tool
{

// What is printed with, as the options have it.
struct paper_options {
    std::optional<std::uint16_t> columns; // of the paper, in font A
    Qel_rcpt_code_page_t code_page = QEL_RCPT_CODE_PAGE_DEFAULT;
    std::optional<std::uint8_t> code_page_number;
    Qel_rcpt_cut_t cut = QEL_RCPT_CUT_FULL;
    std::uint8_t feed = 0;
    std::uint8_t logo_number = 0;
    std::string logo_key;
    std::string qr_text;
    Qel_rcpt_qr_level_t qr_level = QEL_RCPT_QR_LEVEL_DEFAULT;
    std::uint8_t qr_module = 0;
    bool barcode = false;
    bool drawer = false;
    bool other_drawer = false;
    bool no_emphasis = false;
};

// The copies one after the other, each by itself, as the printer takes them.
class paper_roll
{
  public:
    paper_roll(const paper_options &options, Qel_rcpt_printer_lang_t language);

    // Adds the copies of a receipt; name is its file's. Throws usage_error where an option does not
    // fit, input_error where the receipt does not. Warns of what is not on the paper, unless quiet.
    void add(const std::string &name, const receipt &shown, const Qel_hash_dict_t *record,
             bool quiet);

    const std::string &bytes() const { return bytes_; }

    // A picture of the paper.
    std::string as_png() const;

  private:
    bool add_copy(const std::string &name, const Qel_hash_dict_t *blocks,
                  const Qel_hash_dict_t *record, bool is_custcopy, bool quiet);

    const paper_options &options_;
    Qel_rcpt_printer_t printer_{};
    std::string bytes_;
};

} // namespace tool

#endif
