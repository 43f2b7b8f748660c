#include "reading/merchant.h"

#include "messages.h"

#include <qel_rcpt_tables.hpp>

#include <algorithm>
#include <charconv>
#include <stdexcept>

namespace tool
{

namespace
{

using words = std::vector<std::string_view>;

// What a table's rows are called in a column.
template <const auto &rows, auto name>
words names_of()
{
    words names;
    for (const auto &row : rows)
        names.emplace_back(row.*name);
    return names;
}

constexpr auto language_names = names_of<qel_rcpt::languages, &qel_rcpt::language::code>;
constexpr auto country_names = names_of<qel_rcpt::countries, &qel_rcpt::country::alpha2>;
constexpr auto currency_names = names_of<qel_rcpt::currencies, &qel_rcpt::currency::name>;
constexpr auto industry_names = names_of<qel_rcpt::industries, &qel_rcpt::industry::name>;

[[noreturn]] void reject(const std::string &value, const std::string &expected)
{
    throw std::invalid_argument(in_quotes(value) + " is unknown, expected " + expected);
}

// The row of that name, in any case of its letters; absent without one.
template <typename Row, size_t Count>
const Row *find_row(const Row (&rows)[Count], const char *Row::*name, const std::string &value)
{
    for (const Row &row : rows) {
        if (Qel_str_caseeq(value.c_str(), row.*name))
            return &row;
    }
    return nullptr;
}

Qel_rcpt_lang_t to_language(const std::string &value)
{
    const auto *language = find_row(qel_rcpt::languages, &qel_rcpt::language::code, value);
    if (language == nullptr)
        reject(value, listed(language_names()));
    return language->id;
}

// An ISO code of three digits at most; the names are those that could have been given instead.
uint32_t to_code(const std::string &value, const words &names)
{
    uint32_t code = 0;
    const char *const end = value.data() + value.size();
    const auto [stop, error] = std::from_chars(value.data(), end, code);
    if (error != std::errc() || stop != end || code < 1 || code > 999)
        reject(value, listed(names) + ", or a number from 1 to 999");
    return code;
}

uint32_t to_country(const std::string &value)
{
    for (const auto name : {&qel_rcpt::country::alpha2, &qel_rcpt::country::alpha3}) {
        if (const auto *country = find_row(qel_rcpt::countries, name, value))
            return country->code;
    }
    return to_code(value, country_names());
}

uint32_t to_currency(const std::string &value)
{
    const auto *currency = find_row(qel_rcpt::currencies, &qel_rcpt::currency::name, value);
    return currency == nullptr ? to_code(value, currency_names()) : currency->code;
}

// Names separated by commas, white space around them allowed.
Qel_rcpt_ind_t to_industry(const std::string &value)
{
    uint32_t bits = QEL_RCPT_IND_UNKNOWN;
    for (size_t begin = 0; begin <= value.size();) {
        const size_t end = std::min(value.find(',', begin), value.size());
        const std::string part = value.substr(begin, end - begin);
        const std::string name(qel::view(qel::text(Qel_strdup_trim(part.c_str()))));
        const auto *known = find_row(qel_rcpt::industries, &qel_rcpt::industry::name, name);
        if (known == nullptr)
            reject(name, listed(industry_names()));
        bits |= known->bit;
        begin = end + 1;
    }
    return static_cast<Qel_rcpt_ind_t>(bits);
}

qel::time_tz to_timezone(const std::string &value)
{
    qel::time_tz zone(Qel_time_tz_load(value.c_str()));
    if (!zone)
        reject(value, "a time zone of this system such as America/Toronto");
    return zone;
}

constexpr merchant_setting settings[] = {
    {"lang", "LANG", "language of both copies: {} (default en)",
     [](merchant &m, const std::string &value) { m.lang = to_language(value); }, language_names},
    {"customer_lang", "LANG", "language of the customer copy",
     [](merchant &m, const std::string &value) { m.customer_lang = to_language(value); },
     language_names},
    {"merchant_lang", "LANG", "language of the merchant copy",
     [](merchant &m, const std::string &value) { m.merchant_lang = to_language(value); },
     language_names},
    {"country", "CODE", "ISO 3166-1 numeric code, or {} (default 840)",
     [](merchant &m, const std::string &value) { m.country = to_country(value); }, country_names},
    {"currency", "CODE", "ISO 4217 numeric code, or {} (default 840)",
     [](merchant &m, const std::string &value) { m.currency = to_currency(value); },
     currency_names},
    {"industry", "NAME,...", "{} (default unknown)",
     [](merchant &m, const std::string &value) { m.industry = to_industry(value); },
     industry_names},
    {"timezone", "ZONE", "such as America/Toronto (default: this system's)",
     [](merchant &m, const std::string &value) {
         m.timezone = to_timezone(value);
         m.timezone_name = value;
     },
     nullptr},
};

using source = const merchant *;

// The first that any source says.
template <typename T>
T first_of(std::span<const source> sources, std::optional<T> merchant::*setting, T otherwise)
{
    for (const source said : sources) {
        if (said->*setting)
            return *(said->*setting);
    }
    return otherwise;
}

// The language of a copy: within each source, the copy's own before that of both.
Qel_rcpt_lang_t copy_language(std::span<const source> sources,
                              std::optional<Qel_rcpt_lang_t> merchant::*own)
{
    for (const source said : sources) {
        for (const auto setting : {own, &merchant::lang}) {
            if (said->*setting)
                return *(said->*setting);
        }
    }
    return qel_rcpt::languages[0].id;
}

} // namespace

std::span<const merchant_setting> merchant_settings()
{
    return settings;
}

const merchant_setting *find_merchant_setting(std::string_view name)
{
    for (const merchant_setting &setting : settings) {
        if (setting.name == name)
            return &setting;
    }
    return nullptr;
}

Qel_rcpt_config_t merchant_config(const merchant &options, const merchant &file,
                                  const merchant &defaults)
{
    const source sources[] = {&options, &file, &defaults};
    Qel_rcpt_config_t config{};
    config.cust_lang = copy_language(sources, &merchant::customer_lang);
    config.merch_lang = copy_language(sources, &merchant::merchant_lang);
    config.country_code = first_of(sources, &merchant::country, qel_rcpt::countries[0].code);
    config.currency_code = first_of(sources, &merchant::currency, qel_rcpt::currencies[0].code);
    config.industry = first_of(sources, &merchant::industry, QEL_RCPT_IND_UNKNOWN);
    for (const source said : sources) {
        if (config.merch_timezone == nullptr)
            config.merch_timezone = said->timezone.get();
    }
    return config;
}

const std::string &timezone_name(const merchant &options, const merchant &file,
                                 const merchant &defaults)
{
    for (const source said : {&options, &file}) {
        if (said->timezone)
            return said->timezone_name;
    }
    return defaults.timezone_name;
}

std::string industry_words(Qel_rcpt_ind_t industry)
{
    std::string words;
    for (const auto &[name, bit] : qel_rcpt::industries) {
        if ((industry & bit) != 0)
            words.append(words.empty() ? "" : ",").append(name);
    }
    return words.empty() ? "unknown" : words;
}

} // namespace tool
