// Life cycle, and the attributes of a copy.
#include "qel_rcpt_rules.hpp"
#include "qel_rcpt_tables.hpp"

namespace
{

const char *Qel_rcpt_get_currency_symbol(std::uint32_t currency_code)
{
    return qel_rcpt::currency_of(currency_code).symbol;
}

char Qel_rcpt_get_currency_dec(std::uint32_t currency_code)
{
    return qel_rcpt::currency_of(currency_code).dec;
}

bool Qel_rcpt_is_currency_symbol_right_side(Qel_rcpt_lang_t lang, std::uint32_t currency_code,
                                            std::uint32_t country_code)
{
    const qel_rcpt::country *country = qel_rcpt::find_code(qel_rcpt::countries, country_code);
    return country != nullptr && country->symbol_right == lang &&
           country->own_currency == currency_code;
}

constexpr Qel_rcpt_attrs_t default_attrs = {QEL_RCPT_LANG_EN,
                                            qel_rcpt::currencies[0].symbol,
                                            qel_rcpt::currencies[0].dec,
                                            false,
                                            qel_rcpt::countries[0].code,
                                            nullptr};

} // namespace

void Qel_rcpt_init() noexcept
{
    Qel_rcpt_lang_init();
    Qel_time_localtm_t now{};
    Qel_time_tolocal(0, &now, nullptr); // the system's zone is read, before descriptors are scarce
}

void Qel_rcpt_deinit() noexcept
{
    Qel_rcpt_lang_deinit();
}

Qel_rcpt_lang_t Qel_rcpt_lang_from_str(const char *lang) noexcept
{
    for (const qel_rcpt::language &known : qel_rcpt::languages) {
        if (Qel_str_caseeq(lang, known.code))
            return known.id;
    }
    return QEL_RCPT_LANG_EN;
}

bool Qel_rcpt_generate_merch_copy(Qel_rcpt_ind_t industry) noexcept
{
    return (industry & (QEL_RCPT_IND_AUTOFUEL | QEL_RCPT_IND_SELFSERV)) == 0;
}

void Qel_rcpt_setup_rcpt_attrs(Qel_rcpt_attrs_t *attrs, const Qel_rcpt_config_t *config,
                               bool is_custcopy) noexcept
{
    if (attrs == nullptr)
        return;
    if (config == nullptr) {
        *attrs = default_attrs;
        return;
    }
    const Qel_rcpt_lang_t lang = is_custcopy ? config->cust_lang : config->merch_lang;
    *attrs = {
        .lang = lang,
        .currency_sym = Qel_rcpt_get_currency_symbol(config->currency_code),
        .currency_dec = Qel_rcpt_get_currency_dec(config->currency_code),
        .csym_right = Qel_rcpt_is_currency_symbol_right_side(lang, config->currency_code,
                                                             config->country_code),
        .country_code = config->country_code,
        .timezone = config->merch_timezone,
    };
}

namespace qel_rcpt
{

const Qel_rcpt_attrs_t &attrs_or_default(const Qel_rcpt_attrs_t *attrs)
{
    return attrs == nullptr ? default_attrs : *attrs;
}

} // namespace qel_rcpt
