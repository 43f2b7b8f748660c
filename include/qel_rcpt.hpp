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
// text that is put in ends at its first NUL. Between the begin and the end of the session, any
// number of threads may render at once, each from records that no thread changes.
#ifndef QEL_RCPT_HPP
#define QEL_RCPT_HPP

#include <qel_rcpt.h>
#include <qel_rcpt_check.h>
#include <qel_rcpt_print.h>
#include <qelstdlib.hpp>

#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <iterator>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <type_traits>
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

// Configuration

enum class language : std::uint32_t {
    english = QEL_RCPT_LANG_EN,
    french = QEL_RCPT_LANG_FR,
    spanish = QEL_RCPT_LANG_ES,
    german = QEL_RCPT_LANG_DE,
    italian = QEL_RCPT_LANG_IT
};

// The language for an ISO 639-1 code in any case; English for all else, regional forms included.
inline language language_of(const std::string &code) noexcept
{
    return static_cast<language>(Qel_rcpt_lang_from_str(code.c_str()));
}

// ISO 3166-1 numeric; country{276} is one without a name here.
enum class country : std::uint32_t { canada = 124, united_kingdom = 826, united_states = 840 };

// ISO 4217 numeric; only the euro and sterling are not written with a dollar sign.
enum class currency : std::uint32_t {
    canadian_dollar = 124,
    pound_sterling = 826,
    us_dollar = 840,
    euro = 978
};

// Bits, which may be combined.
enum class industry : std::uint32_t {
    unknown = QEL_RCPT_IND_UNKNOWN,
    retail = QEL_RCPT_IND_RETAIL,
    mail = QEL_RCPT_IND_MAIL,
    ecommerce = QEL_RCPT_IND_ECOMM,
    restaurant = QEL_RCPT_IND_RESTAURANT,
    lodging = QEL_RCPT_IND_LODGING,
    automated_fuel = QEL_RCPT_IND_AUTOFUEL, // no merchant copy
    grocery = QEL_RCPT_IND_GROCERY,
    self_service = QEL_RCPT_IND_SELFSERV // no merchant copy
};

constexpr industry operator|(industry a, industry b) noexcept
{
    return static_cast<industry>(static_cast<std::uint32_t>(a) | static_cast<std::uint32_t>(b));
}

// A time zone: the system's local one, or one of the IANA time zone database. Copies are cheap.
class time_zone
{
  public:
    time_zone() noexcept = default;

    // Throws std::invalid_argument for a name that the system does not know.
    explicit time_zone(const std::string &name)
        : zone_(Qel_time_tz_load(name.c_str()), Qel_time_tz_destroy)
    {
        if (!zone_)
            throw std::invalid_argument("unknown time zone: " + name);
    }

    const Qel_time_tz_t *native() const noexcept { return zone_.get(); } // absent: the local one

  private:
    std::shared_ptr<Qel_time_tz_t> zone_;
};

// The merchant. As it is, one in the United States.
struct config {
    language customer_lang = language::english;
    language merchant_lang = language::english;
    country country_code = country::united_states;
    currency currency_code = currency::us_dollar;
    industry industries = industry::unknown;
    time_zone zone;

    // For the C interface, while this configuration lives.
    Qel_rcpt_config_t native() const noexcept
    {
        Qel_rcpt_config_t out{};
        out.cust_lang = static_cast<Qel_rcpt_lang_t>(customer_lang);
        out.merch_lang = static_cast<Qel_rcpt_lang_t>(merchant_lang);
        out.country_code = static_cast<std::uint32_t>(country_code);
        out.currency_code = static_cast<std::uint32_t>(currency_code);
        out.industry = static_cast<Qel_rcpt_ind_t>(industries);
        out.merch_timezone = zone.native();
        return out;
    }
};

// The record of one transaction: texts by key, in the order in which they were put in.
class record
{
  public:
    using field = std::pair<std::string_view, std::string_view>;

    record() = default;

    record(std::initializer_list<field> fields) : record(fields.begin(), fields.end()) {}

    // From a range of pairs of texts, such as std::map<std::string, std::string>.
    template <typename Range,
              typename = std::enable_if_t<!std::is_base_of_v<record, std::decay_t<Range>>>,
              typename = decltype(std::begin(std::declval<const Range &>())->second)>
    explicit record(const Range &fields) : record(std::begin(fields), std::end(fields))
    {
    }

    template <typename Iterator, typename = decltype(std::declval<Iterator &>()->second)>
    record(Iterator first, Iterator last)
    {
        for (; first != last; ++first)
            set(first->first, first->second);
    }

    record(const record &other)
    {
        for (const auto &[key, value] : qel::pairs(other.native()))
            Qel_hash_dict_insert(dict_.get(), key, value);
    }
    record(record &&other) noexcept = default;
    record &operator=(record other) noexcept
    {
        dict_.swap(other.dict_);
        return *this;
    }
    ~record() = default;

    // A key that is there keeps its place and takes the new value.
    record &set(std::string_view key, std::string_view value) &
    {
        Qel_hash_dict_insert(native(), std::string(key).c_str(), std::string(value).c_str());
        return *this;
    }
    record &&set(std::string_view key, std::string_view value) &&
    {
        return std::move(set(key, value));
    }

    // Borrowed until the value is replaced or erased, so that the record must have a name that
    // lives longer.
    std::optional<std::string_view> get(std::string_view key) const && = delete;
    std::optional<std::string_view> get(std::string_view key) const &
    {
        const char *value = nullptr;
        if (!Qel_hash_dict_get(native(), std::string(key).c_str(), &value))
            return std::nullopt;
        return qel::view(value);
    }

    // True when the key was there.
    bool erase(std::string_view key)
    {
        return Qel_hash_dict_remove(native(), std::string(key).c_str());
    }

    // Takes the control characters out of every value, which a printer would obey.
    record &strip_control() &noexcept
    {
        Qel_rcpt_strip_control(dict_.get());
        return *this;
    }
    record &&strip_control() &&noexcept { return std::move(strip_control()); }

    std::size_t size() const noexcept { return Qel_hash_dict_num_keys(native()); }

    // For the C interface. What was moved from is absent, an empty record, until it is changed.
    const Qel_hash_dict_t *native() const noexcept { return dict_.get(); }
    Qel_hash_dict_t *native()
    {
        if (!dict_)
            dict_ = make_dict();
        return dict_.get();
    }

  private:
    static qel::dict make_dict() noexcept
    {
        return qel::dict(Qel_hash_dict_create(64, 75, QEL_HASH_DICT_KEYS_ORDERED));
    }

    qel::dict dict_ = make_dict();
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
