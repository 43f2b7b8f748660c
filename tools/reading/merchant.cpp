#include "reading/merchant.h"

#include "messages.h"

#include <charconv>
#include <stdexcept>

namespace tool
{

namespace
{

template <typename T>
struct word {
    std::string_view name;
    T value;
};

constexpr word<Qel_rcpt_lang_t> languages[] = {
    {"en", QEL_RCPT_LANG_EN}, {"fr", QEL_RCPT_LANG_FR}, {"es", QEL_RCPT_LANG_ES},
    {"de", QEL_RCPT_LANG_DE}, {"it", QEL_RCPT_LANG_IT},
};

constexpr word<uint32_t> countries[] = {
    {"US", 840}, {"USA", 840}, {"CA", 124}, {"CAN", 124}, {"GB", 826}, {"GBR", 826},
};

constexpr word<uint32_t> currencies[] = {
    {"USD", 840},
    {"CAD", 124},
    {"EUR", 978},
    {"GBP", 826},
};

constexpr word<Qel_rcpt_ind_t> industries[] = {
    {"retail", QEL_RCPT_IND_RETAIL},   {"mail", QEL_RCPT_IND_MAIL},
    {"ecomm", QEL_RCPT_IND_ECOMM},     {"restaurant", QEL_RCPT_IND_RESTAURANT},
    {"lodging", QEL_RCPT_IND_LODGING}, {"autofuel", QEL_RCPT_IND_AUTOFUEL},
    {"grocery", QEL_RCPT_IND_GROCERY}, {"selfserv", QEL_RCPT_IND_SELFSERV},
    {"unknown", QEL_RCPT_IND_UNKNOWN},
};

[[noreturn]] void reject(const std::string &value, const std::string &expected)
{
    throw std::invalid_argument(in_quotes(value) + " is unknown, expected " + expected);
}

template <const auto &words>
std::vector<std::string_view> names_of()
{
    std::vector<std::string_view> names;
    for (const auto &[name, value] : words)
        names.push_back(name);
    return names;
}

// The word's value, in any case of its letters.
template <typename T, size_t N>
std::optional<T> find_word(const word<T> (&words)[N], const std::string &name)
{
    for (const auto &[known, value] : words) {
        if (Qel_str_caseeq(name.c_str(), known.data()))
            return value;
    }
    return std::nullopt;
}

Qel_rcpt_lang_t to_language(const std::string &value)
{
    const auto language = find_word(languages, value);
    if (!language)
        reject(value, listed(names_of<languages>()));
    return *language;
}

// An ISO code: one of the words, or three digits at most.
template <const auto &words>
uint32_t to_code(const std::string &value)
{
    if (const auto code = find_word(words, value))
        return *code;
    uint32_t code = 0;
    const char *const end = value.data() + value.size();
    const auto [stop, error] = std::from_chars(value.data(), end, code);
    if (error != std::errc() || stop != end || code < 1 || code > 999)
        reject(value, listed(names_of<words>()) + ", or a number from 1 to 999");
    return code;
}

// Names separated by commas, white space around them allowed.
Qel_rcpt_ind_t to_industry(const std::string &value)
{
    uint32_t bits = QEL_RCPT_IND_UNKNOWN;
    for (size_t begin = 0; begin <= value.size();) {
        const size_t end = std::min(value.find(',', begin), value.size());
        const std::string part = value.substr(begin, end - begin);
        const std::string name(qel::view(qel::text(Qel_strdup_trim(part.c_str()))));
        const auto industry = find_word(industries, name);
        if (!industry)
            reject(name, listed(names_of<industries>()));
        bits |= *industry;
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
     [](merchant &m, const std::string &value) { m.lang = to_language(value); },
     names_of<languages>},
    {"customer_lang", "LANG", "language of the customer copy",
     [](merchant &m, const std::string &value) { m.customer_lang = to_language(value); },
     names_of<languages>},
    {"merchant_lang", "LANG", "language of the merchant copy",
     [](merchant &m, const std::string &value) { m.merchant_lang = to_language(value); },
     names_of<languages>},
    {"country", "CODE", "ISO 3166-1 numeric code, or {} (default 840)",
     [](merchant &m, const std::string &value) { m.country = to_code<countries>(value); },
     names_of<countries>},
    {"currency", "CODE", "ISO 4217 numeric code, or {} (default 840)",
     [](merchant &m, const std::string &value) { m.currency = to_code<currencies>(value); },
     names_of<currencies>},
    {"industry", "NAME,...", "{} (default unknown)",
     [](merchant &m, const std::string &value) { m.industry = to_industry(value); },
     names_of<industries>},
    {"timezone", "ZONE", "such as America/Toronto (default: this system's)",
     [](merchant &m, const std::string &value) { m.timezone = to_timezone(value); }, nullptr},
};

// The language of a copy: the option before the file, and the copy's own before that of both.
Qel_rcpt_lang_t copy_language(const merchant &options, const merchant &file,
                              std::optional<Qel_rcpt_lang_t> merchant::*own)
{
    for (const auto &language : {options.*own, options.lang, file.*own, file.lang}) {
        if (language)
            return *language;
    }
    return QEL_RCPT_LANG_EN;
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

Qel_rcpt_config_t merchant_config(const merchant &options, const merchant &file)
{
    constexpr uint32_t united_states = 840;
    constexpr uint32_t us_dollar = 840;
    Qel_rcpt_config_t config{};
    config.cust_lang = copy_language(options, file, &merchant::customer_lang);
    config.merch_lang = copy_language(options, file, &merchant::merchant_lang);
    config.country_code = options.country.value_or(file.country.value_or(united_states));
    config.currency_code = options.currency.value_or(file.currency.value_or(us_dollar));
    config.industry = options.industry.value_or(file.industry.value_or(QEL_RCPT_IND_UNKNOWN));
    config.merch_timezone = options.timezone ? options.timezone.get() : file.timezone.get();
    return config;
}

} // namespace tool
