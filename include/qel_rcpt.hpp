// libqelrcpt for C++: records and configurations as values, receipts to iterate over, nothing to
// release by hand. Header only, C++17, over the C interface of qel_rcpt.h.
//
//     using namespace qel;
//     const rcpt::session session;
//     const rcpt::record sale{{"action", "sale"}, {"amount", "12.34"}, {"code", "AUTH"}};
//     rcpt::config shop;
//     shop.customer_lang = rcpt::language::french;
//     shop.zone = rcpt::time_zone("America/Toronto");
//     for (const auto &[copy, name, text] : rcpt::render_plain(sale, shop, 32, "\n"))
//         std::cout << text << '\n';
//
// Nothing here throws but std::bad_alloc, and std::invalid_argument for an unknown time zone. A
// text that is put in ends at its first NUL. Any number of threads may render at once, each from
// records that no thread changes.
#ifndef QEL_RCPT_HPP
#define QEL_RCPT_HPP

#include <qel_rcpt.h>
#include <qel_rcpt_check.h>
#include <qel_rcpt_print.h>
#include <qel_rcpt_record.hpp>
#include <qelstdlib.hpp>

#include <cstddef>
#include <cstdint>
#include <iterator>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace qel::rcpt
{

// The library's use from beginning to end. One for the process is enough; more, from any thread, do
// no harm, and neither does none.
class session
{
  public:
    session() noexcept { Qel_rcpt_init(); }
    ~session() { Qel_rcpt_deinit(); }
    session(const session &) = delete;
    session &operator=(const session &) = delete;
};

// The check of a record before it becomes a receipt

enum class severity : std::uint32_t {
    note = QEL_RCPT_SEVERITY_NOTE,
    warning = QEL_RCPT_SEVERITY_WARNING,
    error = QEL_RCPT_SEVERITY_ERROR
};

// What the receipt will be rendered as; general: plain text, HTML, XML and JSON.
enum class form : std::uint32_t {
    general = QEL_RCPT_FORM_GENERAL,
    moneris = QEL_RCPT_FORM_MONERIS,
    moneris_ecomm = QEL_RCPT_FORM_MONERIS_ECOMM
};

struct finding {
    rcpt::severity severity;
    std::string_view rule;             // its name; lasts as long as the library
    std::string key;                   // "" for the whole record or the configuration
    std::optional<std::size_t> offset; // in bytes inside the key's value
    std::string message;
    std::string_view source; // the document that asks for it; "" for a rule of the library
    std::string_view date;   // when that was read, as year and month
};

// What is wrong with the record, group by group of rules. docs/requirements.md lists them.
inline std::vector<finding> check(const record &transaction, const config &merchant = {},
                                  form rendered_as = form::general)
{
    std::vector<finding> findings;
    const auto take = [](void *info, const Qel_rcpt_finding_t *found) {
        finding one{static_cast<rcpt::severity>(found->severity),
                    found->rule,
                    found->key,
                    std::nullopt,
                    found->message,
                    found->source,
                    found->date};
        if (found->offset != QEL_RCPT_NO_OFFSET)
            one.offset = found->offset;
        static_cast<std::vector<finding> *>(info)->push_back(std::move(one));
    };
    const Qel_rcpt_config_t native = merchant.native();
    Qel_rcpt_check(transaction.native(), &native, static_cast<Qel_rcpt_form_t>(rendered_as), take,
                   &findings);
    return findings;
}

// Receipts

enum class copy { customer, merchant };

struct block {
    rcpt::copy copy;
    std::string_view name; // such as "money"; borrowed from the blocks, like the text
    std::string_view text;
};

// A transaction's receipts: the customer copy's blocks from top to bottom, then the merchant
// copy's.
class blocks
{
  public:
    using const_iterator = std::vector<block>::const_iterator;

    // Takes over what a generator of the C interface returned.
    explicit blocks(qel::dict rendered) : dict_(std::move(rendered))
    {
        constexpr std::string_view customer = "cust_";
        constexpr std::string_view merchant = "merch_";
        blocks_.reserve(Qel_hash_dict_num_keys(dict_.get()));
        for (const auto &[key, text] : qel::pairs(dict_.get())) {
            std::string_view name = qel::view(key);
            const bool is_customer = name.substr(0, customer.size()) == customer;
            name.remove_prefix(is_customer ? customer.size() : merchant.size());
            blocks_.push_back(
                {is_customer ? copy::customer : copy::merchant, name, qel::view(text)});
        }
    }

    const_iterator begin() const &noexcept { return blocks_.begin(); }
    const_iterator end() const &noexcept { return blocks_.end(); }
    std::size_t size() const noexcept { return blocks_.size(); }
    bool empty() const noexcept { return blocks_.empty(); }

    // The text of one block; nothing when the receipt does not have it.
    std::optional<std::string_view> find(copy of, std::string_view name) const &noexcept
    {
        for (const block &one : blocks_) {
            if (one.copy == of && one.name == name)
                return one.text;
        }
        return std::nullopt;
    }

    // What they give is borrowed from the blocks, so that these must have a name that lives longer;
    // a range-based for keeps those that it walks.
    const_iterator begin() const && = delete;
    const_iterator end() const && = delete;
    std::optional<std::string_view> find(copy of, std::string_view name) const && = delete;

    bool has(copy of) const noexcept
    {
        for (const block &one : blocks_) {
            if (one.copy == of)
                return true;
        }
        return false;
    }

    // One copy's blocks, the separator between each two; empty without that copy.
    std::string join(copy of, std::string_view separator) const
    {
        std::string joined;
        for (const block &one : blocks_) {
            if (one.copy != of)
                continue;
            if (!joined.empty())
                joined.append(separator);
            joined.append(one.text);
        }
        return joined;
    }

    // For the C interface.
    const Qel_hash_dict_t *native() const noexcept { return dict_.get(); }

  private:
    qel::dict dict_;
    std::vector<block> blocks_;
};

// The generators of qel_rcpt.h, which says what their receipts hold.

inline blocks render_plain(const record &transaction, const config &merchant = {},
                           std::size_t width = 40, const std::string &line_break = "\r\n")
{
    const Qel_rcpt_config_t native = merchant.native();
    return blocks(qel::dict(
        Qel_rcpt_generate_plain(transaction.native(), &native, width, line_break.c_str())));
}

inline blocks render_html(const record &transaction, const config &merchant = {})
{
    const Qel_rcpt_config_t native = merchant.native();
    return blocks(qel::dict(Qel_rcpt_generate_html(transaction.native(), &native)));
}

inline blocks render_xml(const record &transaction, const config &merchant = {})
{
    const Qel_rcpt_config_t native = merchant.native();
    return blocks(qel::dict(Qel_rcpt_generate_xml(transaction.native(), &native)));
}

inline blocks render_json(const record &transaction, const config &merchant = {})
{
    const Qel_rcpt_config_t native = merchant.native();
    return blocks(qel::dict(Qel_rcpt_generate_json(transaction.native(), &native)));
}

// With the e-commerce industry this is render_moneris_ecommerce and may change the record.
inline blocks render_moneris(record &transaction, const config &merchant = {})
{
    const Qel_rcpt_config_t native = merchant.native();
    return blocks(qel::dict(Qel_rcpt_generate_plain_moneris(transaction.native(), &native)));
}

// Takes zero amounts out of the record of a corrected purchase.
inline blocks render_moneris_ecommerce(record &transaction, const config &merchant = {})
{
    const Qel_rcpt_config_t native = merchant.native();
    return blocks(qel::dict(Qel_rcpt_generate_plain_moneris_ecomm(transaction.native(), &native)));
}

// Receipt printers

// A printer and what goes on its paper beside the lines; qel_rcpt_print.h describes the fields. As
// it is, ESC/POS on 80 mm paper with emphasis and a full cut.
struct printer {
    Qel_rcpt_printer_lang_t language = QEL_RCPT_PRINTER_LANG_ESCPOS;
    std::uint16_t paper_columns = 0; // of font A; 48
    std::uint16_t columns = 0;       // of the receipt; those of its widest line
    Qel_rcpt_code_page_t code_page = QEL_RCPT_CODE_PAGE_DEFAULT;
    std::optional<std::uint8_t> code_page_number; // the maker's
    bool has_emphasis = true;
    Qel_rcpt_cut_t cut = QEL_RCPT_CUT_FULL;
    std::uint8_t feed = 0; // lines
    Qel_rcpt_drawer_t drawer = QEL_RCPT_DRAWER_NONE;
    std::uint8_t logo_number = 0; // none
    std::string logo_key;         // none
    bool has_barcode = false;
    std::string qr_text; // none
    Qel_rcpt_qr_level_t qr_level = QEL_RCPT_QR_LEVEL_DEFAULT;
    std::uint8_t qr_module = 0; // what fits

    // For the C interface, while this description lives.
    Qel_rcpt_printer_t native() const noexcept
    {
        Qel_rcpt_printer_t out{};
        out.language = language;
        out.paper_columns = paper_columns;
        out.columns = columns;
        out.code_page = code_page;
        out.has_code_page_number = code_page_number.has_value();
        out.code_page_number = code_page_number.value_or(std::uint8_t{0});
        out.no_emphasis = !has_emphasis;
        out.cut = cut;
        out.feed = feed;
        out.drawer = drawer;
        out.logo_number = logo_number;
        out.logo_key = logo_key.c_str();
        out.barcode = has_barcode;
        out.qr_text = qr_text.c_str();
        out.qr_level = qr_level;
        out.qr_module = qr_module;
        return out;
    }
};

// One copy for a printer; without bytes when there is a fault.
struct printed {
    std::string bytes;
    std::size_t replaced = 0; // characters
    bool has_barcode = false;
    Qel_rcpt_print_fault_t fault = QEL_RCPT_PRINT_FAULT_NONE;

    explicit operator bool() const noexcept { return fault == QEL_RCPT_PRINT_FAULT_NONE; }
};

// The record is the one of which the blocks were made.
inline printed print(const blocks &rendered, const record &transaction, copy of,
                     const printer &device = {})
{
    const Qel_rcpt_printer_t native = device.native();
    Qel_rcpt_printed_t told{};
    const qel::text bytes(Qel_rcpt_print(rendered.native(), transaction.native(),
                                         of == copy::customer, &native, &told));
    printed out{{}, told.replaced, told.has_barcode, told.fault};
    if (bytes)
        out.bytes.assign(bytes.get(), told.len);
    return out;
}

} // namespace qel::rcpt

#endif
