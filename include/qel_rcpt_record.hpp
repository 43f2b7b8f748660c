// What a receipt is made of, for C++: the record of a transaction and the configuration. Part of
// qel_rcpt.hpp, whose conventions hold.
#ifndef QEL_RCPT_RECORD_HPP
#define QEL_RCPT_RECORD_HPP

#include <qel_rcpt.h>
#include <qelstdlib.hpp>

#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>

namespace qel::rcpt
{

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

} // namespace qel::rcpt

#endif
