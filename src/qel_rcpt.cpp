// The receipt core: attributes, money, transaction status, line items, transaction types.
#include "qel_rcpt_int.hpp"

#include <algorithm>
#include <array>
#include <charconv>
#include <limits>
#include <span>

using qel_rcpt::get;
using qel_rcpt::get_nonempty;
using qel_rcpt::is_one_of;
using qel_rcpt::key_contains;
using qel_rcpt::key_is;
using qel_rcpt::key_is_true;

namespace
{

constexpr std::uint32_t country_us = 840;        // ISO 3166-1
constexpr std::uint32_t country_canada = 124;    // ISO 3166-1
constexpr std::uint32_t currency_canada = 124;   // ISO 4217
constexpr std::uint32_t currency_euro = 978;     // ISO 4217
constexpr std::uint32_t currency_sterling = 826; // ISO 4217

const char *Qel_rcpt_get_currency_symbol(std::uint32_t currency_code)
{
    switch (currency_code) {
    case currency_euro:
        return "€";
    case currency_sterling:
        return "£";
    default:
        return "$";
    }
}

char Qel_rcpt_get_currency_dec(std::uint32_t currency_code)
{
    return currency_code == currency_euro ? ',' : '.';
}

bool Qel_rcpt_is_currency_symbol_right_side(Qel_rcpt_lang_t lang, std::uint32_t currency_code,
                                            std::uint32_t country_code)
{
    return lang == QEL_RCPT_LANG_FR && currency_code == currency_canada &&
           country_code == country_canada;
}

constexpr Qel_rcpt_attrs_t default_attrs = {QEL_RCPT_LANG_EN, "$", '.', false, country_us, nullptr};

const Qel_rcpt_attrs_t &attrs_or_default(const Qel_rcpt_attrs_t *attrs)
{
    return attrs == nullptr ? default_attrs : *attrs;
}

} // namespace

// Lifecycle, configuration and attributes

void Qel_rcpt_init() noexcept
{
    Qel_rcpt_lang_init();
}

void Qel_rcpt_deinit() noexcept
{
    Qel_rcpt_lang_deinit();
}

Qel_rcpt_lang_t Qel_rcpt_lang_from_str(const char *lang) noexcept
{
    struct language {
        const char *code;
        Qel_rcpt_lang_t lang;
    };
    static constexpr language languages[] = {
        {"en", QEL_RCPT_LANG_EN}, {"fr", QEL_RCPT_LANG_FR}, {"es", QEL_RCPT_LANG_ES},
        {"de", QEL_RCPT_LANG_DE}, {"it", QEL_RCPT_LANG_IT},
    };
    for (const language &known : languages) {
        if (Qel_str_caseeq(lang, known.code))
            return known.lang;
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

// Money

namespace
{

using hundredths = std::int64_t;

// Sums and differences of amounts stop at the ends of the range instead of wrapping round.
hundredths saturating_add(hundredths a, hundredths b)
{
    hundredths sum = 0;
    if (!__builtin_add_overflow(a, b, &sum))
        return sum;
    return b > 0 ? std::numeric_limits<hundredths>::max() : std::numeric_limits<hundredths>::min();
}

hundredths saturating_subtract(hundredths a, hundredths b)
{
    hundredths difference = 0;
    if (!__builtin_sub_overflow(a, b, &difference))
        return difference;
    return b < 0 ? std::numeric_limits<hundredths>::max() : std::numeric_limits<hundredths>::min();
}

// An amount as decimal text: -150 is -1.50.
class amount_text
{
  public:
    explicit amount_text(hundredths value)
    {
        const bool negative = value < 0;
        const auto bits = static_cast<std::uint64_t>(value);
        const std::uint64_t magnitude = negative ? 0 - bits : bits;
        char *end = text_.data();
        if (negative)
            *end++ = '-';
        end = std::to_chars(end, text_.data() + text_.size(), magnitude / 100).ptr;
        *end++ = '.';
        *end++ = static_cast<char>('0' + magnitude / 10 % 10);
        *end++ = static_cast<char>('0' + magnitude % 10);
    }
    [[nodiscard]] const char *c_str() const { return text_.data(); }

  private:
    std::array<char, 32> text_{};
};

char *format_hundredths(hundredths value, const Qel_rcpt_attrs_t *attrs)
{
    return Qel_rcpt_format_money(amount_text(value).c_str(), attrs);
}

// True when no digit but 0 occurs.
bool Qel_rcpt_is_zero_money(const char *money)
{
    return std::ranges::none_of(qel::view(money),
                                [](char chr) { return Qel_chr_isdigit(chr) && chr != '0'; });
}

// The amount with a '-' put in front of its text.
hundredths get_negated(const char *amount)
{
    std::array<char, 32> negated{};
    Qel_snprintf(negated.data(), negated.size(), "-%s", amount);
    return Qel_atofi100(negated.data());
}

enum class sign { plus, minus };

struct money_term {
    const char *key;
    sign how;
};

// The amount under the required key with the terms that the record holds added and subtracted;
// absent without the required one.
char *format_sum(const Qel_hash_dict_t *kvs, const Qel_rcpt_attrs_t *attrs, const char *required,
                 std::span<const money_term> terms)
{
    const char *amount = get(kvs, required);
    if (Qel_str_isempty(amount))
        return nullptr;
    hundredths sum = Qel_atofi100(amount);
    for (const money_term &term : terms) {
        const char *value = get(kvs, term.key);
        if (!Qel_str_isempty(value))
            sum = saturating_add(sum, term.how == sign::minus ? get_negated(value)
                                                              : Qel_atofi100(value));
    }
    return format_hundredths(sum, attrs);
}

// What the issuer authorised beside what was asked for.
struct authorisation {
    bool known; // the record holds both amounts
    hundredths amount;
    hundredths authorised;
};

authorisation get_authorisation(const Qel_hash_dict_t *kvs)
{
    const char *amount = get(kvs, "amount");
    const char *authorised = get(kvs, "authamount");
    return {!Qel_str_isempty(amount) && !Qel_str_isempty(authorised), Qel_atofi100(amount),
            Qel_atofi100(authorised)};
}

// A key of the outcome; orig holds that of the transaction being corrected or completed.
struct outcome_key {
    const char *orig;
    const char *own;
};

constexpr outcome_key outcome_code = {"orig_code", "code"};
constexpr outcome_key outcome_msoft_code = {"orig_msoft_code", "msoft_code"};
constexpr outcome_key outcome_phard_code = {"orig_phard_code", "phard_code"};

const char *Qel_rcpt_get_orig(const Qel_hash_dict_t *kvs, const outcome_key &key)
{
    return get_nonempty(kvs, key.orig, key.own);
}

} // namespace

char *Qel_rcpt_format_money(const char *amount, const Qel_rcpt_attrs_t *attrs) noexcept
{
    const qel::text out(Qel_str_dot_money_out(amount));
    if (!out)
        return nullptr;

    const Qel_rcpt_attrs_t &style = attrs_or_default(attrs);
    char *dot = out.get() + Qel_str_len(out.get()) - 3;
    if (style.currency_dec == 0)
        Qel_mem_move(dot, dot + 1, 3); // both decimals and the end of the text
    else
        *dot = style.currency_dec;

    char *money = nullptr;
    Qel_asprintf(&money, "%s%s%s", style.csym_right ? "" : style.currency_sym, out.get(),
                 style.csym_right ? style.currency_sym : "");
    return money;
}

char *Qel_rcpt_format_order_subtotal(const Qel_hash_dict_t *kvs,
                                     const Qel_rcpt_attrs_t *attrs) noexcept
{
    static constexpr money_term terms[] = {
        {"order_tip", sign::minus},
        {"order_tax", sign::minus},
    };
    return format_sum(kvs, attrs, "order_total", terms);
}

char *Qel_rcpt_format_subtotal(const Qel_hash_dict_t *kvs, const Qel_rcpt_attrs_t *attrs) noexcept
{
    static constexpr money_term terms[] = {
        {"examount", sign::minus},
        {"tax", sign::minus},
        {"cashbackamount", sign::minus},
        {"surchargeamount", sign::minus},
        {"fee", sign::minus},
        {"convenience_fee", sign::minus},
        {"supplemental_fee", sign::minus},
        {"discountamount", sign::plus},
    };
    return format_sum(kvs, attrs, "amount", terms);
}

char *Qel_rcpt_format_total_amount(const Qel_hash_dict_t *kvs,
                                   const Qel_rcpt_attrs_t *attrs) noexcept
{
    static constexpr money_term terms[] = {
        {"u_tip", sign::plus},
        {"u_cashback", sign::plus},
    };
    return format_sum(kvs, attrs, "amount", terms);
}

char *Qel_rcpt_format_amount_due(const Qel_hash_dict_t *kvs, const Qel_rcpt_attrs_t *attrs) noexcept
{
    const authorisation auth = get_authorisation(kvs);
    const hundredths due = saturating_subtract(auth.amount, auth.authorised);
    if (!auth.known || due <= 0)
        return nullptr;
    return format_hundredths(due, attrs);
}

char *Qel_rcpt_format_authamount(const Qel_hash_dict_t *kvs, const Qel_rcpt_attrs_t *attrs) noexcept
{
    const authorisation auth = get_authorisation(kvs);
    if (!auth.known || auth.authorised == 0 || auth.authorised == auth.amount)
        return nullptr;
    return format_hundredths(auth.authorised, attrs);
}

namespace
{

struct payment_discounts {
    qel::text discount;
    qel::text cash_discount;
};

qel::text drop_zero(qel::text money)
{
    return Qel_rcpt_is_zero_money(money.get()) ? qel::text() : std::move(money);
}

payment_discounts get_payment_discounts(const Qel_hash_dict_t *kvs, const Qel_rcpt_attrs_t *attrs)
{
    const char *discount = get(kvs, "discountamount");
    if (Qel_atofi100(discount) == 0)
        return {};

    const char *cash_discount = get(kvs, "order_cash_discount");
    const bool has_cash_discount = Qel_str_caseeq(get(kvs, "cardtype"), "cash") &&
                                   !Qel_rcpt_have_order_money(kvs) &&
                                   !Qel_str_isempty(cash_discount);
    if (!has_cash_discount)
        return {qel::text(Qel_rcpt_format_money(discount, attrs)), {}};

    const hundredths rest = saturating_add(Qel_atofi100(discount), get_negated(cash_discount));
    return {drop_zero(qel::text(format_hundredths(rest, attrs))),
            drop_zero(qel::text(Qel_rcpt_format_money(cash_discount, attrs)))};
}

} // namespace

void Qel_rcpt_format_payment_discounts(const Qel_hash_dict_t *kvs, const Qel_rcpt_attrs_t *attrs,
                                       char **discount_out, char **cash_discount_out) noexcept
{
    payment_discounts discounts = get_payment_discounts(kvs, attrs);
    if (discount_out != nullptr)
        *discount_out = discounts.discount.release();
    if (cash_discount_out != nullptr)
        *cash_discount_out = discounts.cash_discount.release();
}

bool Qel_rcpt_have_order_money(const Qel_hash_dict_t *kvs) noexcept
{
    return Qel_atofi100(get(kvs, "order_total")) != 0;
}

bool Qel_rcpt_is_order_parital_payment(const Qel_hash_dict_t *kvs) noexcept
{
    const hundredths total = Qel_atofi100(get(kvs, "order_total"));
    return total != 0 && Qel_atofi100(get(kvs, "amount")) != total;
}

// Transaction status

namespace
{

bool orig_is(const Qel_hash_dict_t *kvs, const outcome_key &key, const char *word)
{
    return Qel_str_caseeq(Qel_rcpt_get_orig(kvs, key), word);
}

bool was_canceled(const Qel_hash_dict_t *kvs)
{
    return key_is(kvs, "u_errorcode", "canceled") ||
           key_is(kvs, "reversal_reason", "CUSTOMERCANCEL");
}

bool was_voided(const Qel_hash_dict_t *kvs)
{
    return key_contains(kvs, "txnstatus", "VOIDED");
}

bool was_approved(const Qel_hash_dict_t *kvs)
{
    return is_one_of(Qel_rcpt_get_orig(kvs, outcome_code), {"auth", "success"});
}

bool was_partially_approved(const Qel_hash_dict_t *kvs)
{
    return was_approved(kvs) && !Qel_str_isempty(get(kvs, "authamount"));
}

bool is_call_issuer(const Qel_hash_dict_t *kvs)
{
    return orig_is(kvs, outcome_code, "call") || orig_is(kvs, outcome_phard_code, "call");
}

bool was_declined_by_issuer(const Qel_hash_dict_t *kvs)
{
    return key_is_true(kvs, "issuer_decline");
}

bool was_declined_by_processor(const Qel_hash_dict_t *kvs)
{
    const char *phard_code = Qel_rcpt_get_orig(kvs, outcome_phard_code);
    return !Qel_str_isempty(phard_code) && !Qel_str_caseeq(phard_code, "unknown");
}

bool was_declined_by_card(const Qel_hash_dict_t *kvs)
{
    return key_is(kvs, "u_errorcode", "emv_card_deny") ||
           key_is(kvs, "reversal_reason", "carddecline") ||
           key_is(kvs, "offline_decline", "carddecline");
}

bool was_chip_swiped(const Qel_hash_dict_t *kvs)
{
    return key_is(kvs, "rcpt_entry_mode", "f");
}

// A condition of the record and the message that it calls for.
struct status_rule {
    bool (*holds)(const Qel_hash_dict_t *kvs);
    Qel_rcpt_msg_t msg;
};

// The message of the first rule that holds, else the one given.
const char *first_status(const Qel_hash_dict_t *kvs, Qel_rcpt_lang_t lang,
                         std::span<const status_rule> rules, Qel_rcpt_msg_t otherwise)
{
    const auto rule =
        std::ranges::find_if(rules, [&](const status_rule &r) { return r.holds(kvs); });
    return Qel_rcpt_msg_to_string(lang, rule == rules.end() ? otherwise : rule->msg);
}

// Only a request of the payment flow itself has a mode and an offline response code.
bool is_payment_action(const Qel_hash_dict_t *kvs)
{
    const char *action = get(kvs, "u_action");
    return Qel_str_isempty(action) || is_one_of(action, {"txnrequest", "txnfinish", "txnquick"});
}

bool is_approval_of_issuer(const Qel_hash_dict_t *kvs)
{
    return key_is(kvs, "code", "auth") &&
           (orig_is(kvs, outcome_phard_code, "success") || key_is_true(kvs, "u_standin"));
}

bool is_decline_of_issuer(const Qel_hash_dict_t *kvs)
{
    const char *error = get(kvs, "u_errorcode");
    return (Qel_str_isempty(error) || Qel_str_caseeq(error, "paxtrel_proc_error")) &&
           orig_is(kvs, outcome_code, "deny") && orig_is(kvs, outcome_msoft_code, "int_success");
}

bool was_host_out_of_reach(const Qel_hash_dict_t *kvs)
{
    return key_is(kvs, "u_errorcode", "PAXTREL_CONNFAIL") ||
           orig_is(kvs, outcome_code, "TIMEOUT") ||
           is_one_of(Qel_rcpt_get_orig(kvs, outcome_msoft_code),
                     {"CONN_MAXATTEMPTS", "CONN_MAXSENDS"}) ||
           orig_is(kvs, outcome_phard_code, "NOREPLY");
}

// The EMV authorisation response code of a transaction that was decided without the host.
char *Qel_rcpt_get_respcode_offline(const Qel_hash_dict_t *kvs)
{
    if (!is_payment_action(kvs))
        return nullptr;
    if (orig_is(kvs, outcome_code, "auth"))
        return key_is_true(kvs, "u_standin") ? Qel_strdup("Y3") : nullptr;
    if (was_host_out_of_reach(kvs))
        return Qel_strdup("Z3");
    if (was_declined_by_card(kvs))
        return Qel_strdup("Z1");
    return nullptr;
}

} // namespace

const char *Qel_rcpt_get_result(const Qel_hash_dict_t *kvs, Qel_rcpt_lang_t lang) noexcept
{
    static constexpr status_rule rules[] = {
        {was_canceled, QEL_RCPT_MSG_CANCELED},
        {was_voided, QEL_RCPT_MSG_VOIDED},
        {was_partially_approved, QEL_RCPT_MSG_PARTIAL_APPROVAL},
        {was_approved, QEL_RCPT_MSG_APPROVED},
        {is_call_issuer, QEL_RCPT_MSG_DECLINE_CALL},
        {was_declined_by_issuer, QEL_RCPT_MSG_NOT_APPROVED},
        {was_declined_by_processor, QEL_RCPT_MSG_DECLINED},
    };
    return first_status(kvs, lang, rules, QEL_RCPT_MSG_NOT_COMPLETE);
}

const char *Qel_rcpt_get_mode(const Qel_hash_dict_t *kvs, Qel_rcpt_lang_t lang) noexcept
{
    if (!is_payment_action(kvs))
        return nullptr;
    if (was_declined_by_card(kvs))
        return Qel_rcpt_msg_to_string(lang, QEL_RCPT_MSG_CARD);
    if (!is_approval_of_issuer(kvs) && !is_decline_of_issuer(kvs))
        return nullptr;
    return Qel_rcpt_msg_to_string(lang, key_is_true(kvs, "u_standin") ? QEL_RCPT_MSG_ISSUER_STANDIN
                                                                      : QEL_RCPT_MSG_ISSUER);
}

const char *Qel_rcpt_get_card_status(const Qel_hash_dict_t *kvs, Qel_rcpt_lang_t lang) noexcept
{
    static constexpr status_rule rules[] = {
        {qel_rcpt::was_card_removed, QEL_RCPT_MSG_CARD_REMOVED},
        {was_declined_by_card, QEL_RCPT_MSG_DECLINE_BY_CARD},
        {was_chip_swiped, QEL_RCPT_MSG_CHIP_SWIPED},
    };
    return first_status(kvs, lang, rules, QEL_RCPT_MSG_NONE);
}

const char *Qel_rcpt_get_pin_status(const Qel_hash_dict_t *kvs, Qel_rcpt_lang_t lang) noexcept
{
    if (is_one_of(Qel_rcpt_get_orig(kvs, outcome_code), {"deny", "timeout"}) ||
        orig_is(kvs, outcome_phard_code, "bad_pin"))
        return nullptr;
    if (key_is_true(kvs, "rcpt_emv_pinbypass"))
        return Qel_rcpt_msg_to_string(lang, QEL_RCPT_MSG_PIN_BYPASSED);
    if (is_one_of(get(kvs, "rcpt_emv_cvm"), {"pin", "pinsig"}))
        return Qel_rcpt_msg_to_string(lang, QEL_RCPT_MSG_VERIED_PIN);
    return nullptr;
}

char *Qel_rcpt_get_respcode(const Qel_hash_dict_t *kvs) noexcept
{
    const char *issuer_code = get(kvs, "rcpt_issuer_resp_code");
    const char *server_code = get(kvs, "rcpt_resp_code");
    if (Qel_str_isempty(issuer_code) && Qel_str_isempty(server_code))
        return Qel_rcpt_get_respcode_offline(kvs);

    qel::buf code(Qel_buf_create());
    Qel_buf_add_str(code.get(), issuer_code);
    if (!Qel_str_isempty(issuer_code) && !Qel_str_isempty(server_code))
        Qel_buf_add_byte(code.get(), '/');
    Qel_buf_add_str(code.get(), server_code);
    return qel::finish(std::move(code)).release();
}

const char *Qel_rcpt_get_acct_type(const Qel_hash_dict_t *kvs, Qel_rcpt_lang_t lang) noexcept
{
    const char *acct_type = get(kvs, "rcpt_acct_type");
    if (!key_is(kvs, "cardtype", "Interac") || Qel_str_isempty(acct_type))
        return nullptr;
    if (Qel_str_caseeq_max(acct_type, "flash", 5) || key_is(kvs, "rcpt_entry_mode", "t"))
        return Qel_rcpt_msg_to_string(lang, QEL_RCPT_MSG_FLASH_DEFAULT);
    if (is_one_of(acct_type, {"checking", "chequing"}))
        return Qel_rcpt_msg_to_string(lang, QEL_RCPT_MSG_CHECKING_ENCA);
    if (Qel_str_caseeq(acct_type, "savings"))
        return Qel_rcpt_msg_to_string(lang, QEL_RCPT_MSG_SAVINGS);
    return acct_type;
}

namespace
{

Qel_time_localtm_t get_local_time(const Qel_hash_dict_t *kvs, const Qel_time_tz_t *zone)
{
    Qel_time_localtm_t localtm{};
    const char *host_time = get(kvs, "rcpt_host_ts");
    if (!Qel_str_isempty(host_time)) {
        Qel_time_parsefmt(host_time, "%m%d%y%H%M%S", &localtm); // zeros where it does not parse
        return localtm;
    }
    const char *timestamp = get(kvs, "timestamp");
    const Qel_time_t t = Qel_str_isempty(timestamp) ? Qel_time() : Qel_str_to_int64(timestamp);
    if (t >= 0)
        Qel_time_tolocal(t, &localtm, zone);
    return localtm;
}

} // namespace

char *Qel_rcpt_format_time(const Qel_hash_dict_t *kvs, const Qel_rcpt_attrs_t *attrs) noexcept
{
    const Qel_rcpt_attrs_t &style = attrs_or_default(attrs);
    const Qel_time_localtm_t localtm = get_local_time(kvs, style.timezone);
    return Qel_time_to_str(
        style.country_code == country_us ? "%m/%d/%y %H:%M:%S" : "%d/%m/%y %H:%M:%S", &localtm);
}

bool Qel_rcpt_need_signature_line(const Qel_hash_dict_t *kvs) noexcept
{
    return key_is_true(kvs, "u_need_signature");
}

char *Qel_rcpt_get_signature_line(const Qel_hash_dict_t *kvs, std::size_t len) noexcept
{
    if (!Qel_rcpt_need_signature_line(kvs))
        return nullptr;
    qel::buf line(Qel_buf_create());
    Qel_buf_add_byte(line.get(), 'X');
    Qel_buf_add_fill(line.get(), '_', len == 0 ? 0 : len - 1);
    return qel::finish(std::move(line)).release();
}

const char *Qel_rcpt_get_signature_agreement(const Qel_hash_dict_t *kvs,
                                             Qel_rcpt_lang_t lang) noexcept
{
    return Qel_rcpt_need_signature_line(kvs) ? Qel_rcpt_msg_to_string(lang, QEL_RCPT_MSG_AGREEMENT)
                                             : nullptr;
}

bool Qel_rcpt_was_signature_electronic(const Qel_hash_dict_t *kvs) noexcept
{
    return key_contains(kvs, "u_flowflags", "SIGCAPTURED");
}

const char *Qel_rcpt_get_signature_electronic(const Qel_hash_dict_t *kvs,
                                              Qel_rcpt_lang_t lang) noexcept
{
    return Qel_rcpt_was_signature_electronic(kvs)
               ? Qel_rcpt_msg_to_string(lang, QEL_RCPT_MSG_SIG_ELECTRONIC)
               : nullptr;
}

const char *Qel_rcpt_get_notice(Qel_rcpt_lang_t lang) noexcept
{
    return Qel_rcpt_msg_to_string(lang, QEL_RCPT_MSG_NOTICE);
}

const char *Qel_rcpt_get_duplicate(Qel_rcpt_lang_t lang) noexcept
{
    return Qel_rcpt_msg_to_string(lang, QEL_RCPT_MSG_DUPLICATE);
}

const char *Qel_rcpt_get_whos_copy(bool is_custcopy, Qel_rcpt_lang_t lang) noexcept
{
    return Qel_rcpt_msg_to_string(lang,
                                  is_custcopy ? QEL_RCPT_MSG_CUST_COPY : QEL_RCPT_MSG_MERCH_COPY);
}

bool Qel_rcpt_is_duplicate(const Qel_hash_dict_t *kvs) noexcept
{
    return key_is_true(kvs, "rcpt_duplicate") || key_is_true(kvs, "u_rcpt_duplicate") ||
           key_is_true(kvs, "u_duplicate");
}

// Line items

namespace
{

struct line_item_kind {
    const char *word;
    Qel_rcpt_line_item_type_t type;
};

constexpr line_item_kind top_kinds[] = {
    {"addon", QEL_RCPT_LINE_ITEM_TYPE_ITEM_ADDON},
    {"discount_fixed", QEL_RCPT_LINE_ITEM_TYPE_ORDER_DISC_FIXED},
    {"discount_percent", QEL_RCPT_LINE_ITEM_TYPE_ORDER_DISC_PERCENT},
    {"cashdiscount", QEL_RCPT_LINE_ITEM_TYPE_ORDER_DISC_CASH},
};

constexpr line_item_kind modifier_kinds[] = {
    {"addon", QEL_RCPT_LINE_ITEM_TYPE_ITEM_ADDON},
    {"item", QEL_RCPT_LINE_ITEM_TYPE_ITEM_ADDON},
    {"discount_fixed", QEL_RCPT_LINE_ITEM_TYPE_ITEM_DISC_FIXED},
    {"discount_percent", QEL_RCPT_LINE_ITEM_TYPE_ITEM_DISC_PERCENT},
};

Qel_rcpt_line_item_type_t get_line_item_type(const char *word, bool is_modifier)
{
    const std::span<const line_item_kind> kinds =
        is_modifier ? std::span<const line_item_kind>(modifier_kinds) : top_kinds;
    for (const line_item_kind &kind : kinds) {
        if (Qel_str_caseeq(word, kind.word))
            return kind.type;
    }
    return QEL_RCPT_LINE_ITEM_TYPE_ITEM;
}

// Percentages are shown as they are, and so is a cash discount, which is one.
bool is_money(Qel_rcpt_line_item_type_t type)
{
    return type != QEL_RCPT_LINE_ITEM_TYPE_ITEM_DISC_PERCENT &&
           type != QEL_RCPT_LINE_ITEM_TYPE_ORDER_DISC_PERCENT &&
           type != QEL_RCPT_LINE_ITEM_TYPE_ORDER_DISC_CASH;
}

// Recursion is bounded by the nesting that the JSON reader accepts.
void generate_line_items_item(void *info, const Qel_rcpt_attrs_t *attrs,
                              const Qel_json_node_t *item, bool is_modifier, line_item_add_cb cb,
                              void *ret)
{
    const char *name = Qel_json_object_value_string(item, "name");
    if (Qel_str_isempty(name))
        return;

    const Qel_rcpt_line_item_type_t type =
        get_line_item_type(Qel_json_object_value_string(item, "type"), is_modifier);
    const char *price = Qel_json_object_value_string(item, "price");
    const qel::text price_text(is_money(type) ? Qel_rcpt_format_money(price, attrs)
                                              : Qel_strdup(price));
    cb(info, name, Qel_json_object_value_string(item, "qty"), price_text.get(), type, ret);

    const char *notes = Qel_json_object_value_string(item, "notes");
    if (!Qel_str_isempty(notes))
        cb(info, notes, nullptr, nullptr, QEL_RCPT_LINE_ITEM_TYPE_NOTES, ret);

    const Qel_json_node_t *modifiers = Qel_json_object_value(item, "modifiers");
    for (std::size_t i = 0; i < Qel_json_array_len(modifiers); ++i)
        generate_line_items_item(info, attrs, Qel_json_array_at(modifiers, i), true, cb, ret);
}

bool is_order_discount(const Qel_json_node_t *item)
{
    return Qel_str_caseeq_start(Qel_json_object_value_string(item, "type"), "discount");
}

} // namespace

void Qel_rcpt_generate_line_items(const char *items, void *info, const Qel_rcpt_attrs_t *attrs,
                                  line_item_add_cb cb, void *ret) noexcept
{
    const qel::json root(Qel_json_read(items, Qel_str_len(items), QEL_JSON_READER_REPLACE_BAD_CHARS,
                                       nullptr, nullptr, nullptr, nullptr));
    if (Qel_json_node_type(root.get()) != QEL_JSON_TYPE_ARRAY || cb == nullptr)
        return;

    // Discounts on the whole order come after what they are taken from.
    for (const bool discounts : {false, true}) {
        for (std::size_t i = 0; i < Qel_json_array_len(root.get()); ++i) {
            const Qel_json_node_t *item = Qel_json_array_at(root.get(), i);
            if (is_order_discount(item) == discounts)
                generate_line_items_item(info, attrs, item, false, cb, ret);
        }
    }
}

const char *Qel_rcpt_line_item_type_to_str(Qel_rcpt_line_item_type_t type) noexcept
{
    switch (type) {
    case QEL_RCPT_LINE_ITEM_TYPE_ITEM:
        return "item";
    case QEL_RCPT_LINE_ITEM_TYPE_ITEM_ADDON:
        return "addon";
    case QEL_RCPT_LINE_ITEM_TYPE_ITEM_DISC_PERCENT:
        return "item_discount_percent";
    case QEL_RCPT_LINE_ITEM_TYPE_ITEM_DISC_FIXED:
        return "item_discount_fixed";
    case QEL_RCPT_LINE_ITEM_TYPE_ORDER_DISC_PERCENT:
        return "order_discount_percent";
    case QEL_RCPT_LINE_ITEM_TYPE_ORDER_DISC_FIXED:
        return "order_discount_fixed";
    case QEL_RCPT_LINE_ITEM_TYPE_ORDER_DISC_CASH:
        return "order_discount_cash";
    case QEL_RCPT_LINE_ITEM_TYPE_NOTES:
        return "note";
    }
    return "unknown";
}

// Transaction types

const char *Qel_rcpt_get_cardclass(const Qel_hash_dict_t *kvs) noexcept
{
    return Qel_str_safe(get_nonempty(kvs, "u_cardclass", "card_cardclass"));
}

const char *Qel_rcpt_get_tran_type(const char *action, Qel_rcpt_lang_t lang,
                                   const char *cardclass) noexcept
{
    struct tran_type {
        const char *action;
        Qel_rcpt_msg_t msg;
    };
    static constexpr tran_type tran_types[] = {
        {"sale", QEL_RCPT_MSG_PURCHASE},
        {"redemption", QEL_RCPT_MSG_PURCHASE},
        {"force", QEL_RCPT_MSG_PURCHASE},
        {"tip", QEL_RCPT_MSG_PURCHASE},
        {"ebtcbcash", QEL_RCPT_MSG_PURCHASE},
        {"ebtcbsale", QEL_RCPT_MSG_PURCHASE},
        {"ebtfssale", QEL_RCPT_MSG_PURCHASE},
        {"ebtfsvoucher", QEL_RCPT_MSG_PURCHASE},
        {"incremental", QEL_RCPT_MSG_PURCHASE},
        {"preauth", QEL_RCPT_MSG_AUTHORIZATION},
        {"activate", QEL_RCPT_MSG_ACTIVATE},
        {"issue", QEL_RCPT_MSG_ACTIVATE},
        {"return", QEL_RCPT_MSG_REFUND},
        {"merchreturn", QEL_RCPT_MSG_REFUND},
        {"ebtfsreturn", QEL_RCPT_MSG_REFUND},
        {"void", QEL_RCPT_MSG_REFUND},
        {"refund", QEL_RCPT_MSG_REFUND},
        {"reload", QEL_RCPT_MSG_RELOAD},
        {"credit", QEL_RCPT_MSG_RELOAD},
        {"balanceinq", QEL_RCPT_MSG_BALANCE_INQ},
        {"ebtcbbalance", QEL_RCPT_MSG_BALANCE_INQ},
        {"ebtfsbalance", QEL_RCPT_MSG_BALANCE_INQ},
        {"avsonly", QEL_RCPT_MSG_AVSONLY},
        {"verifyonly", QEL_RCPT_MSG_AVSONLY},
        {"admin", QEL_RCPT_MSG_ADMIN},
        {"cardtype", QEL_RCPT_MSG_ADMIN},
        {"cashout", QEL_RCPT_MSG_CASHOUT},
    };
    const auto *type = std::ranges::find_if(
        tran_types, [&](const tran_type &t) { return Qel_str_caseeq(action, t.action); });
    if (type == std::end(tran_types))
        return action;
    if (type->msg != QEL_RCPT_MSG_PURCHASE)
        return Qel_rcpt_msg_to_string(lang, type->msg);
    if (Qel_str_caseeq(cardclass, "debit"))
        return Qel_rcpt_msg_to_string(lang, QEL_RCPT_MSG_PURCHASE_DEBIT);
    if (Qel_str_caseeq(cardclass, "credit"))
        return Qel_rcpt_msg_to_string(lang, QEL_RCPT_MSG_PURCHASE_CREDIT);
    return Qel_rcpt_msg_to_string(lang, QEL_RCPT_MSG_PURCHASE);
}

const char *Qel_rcpt_get_tran_type_moneris(const char *action, const char *orig_action,
                                           Qel_rcpt_lang_t lang, const char *cardclass) noexcept
{
    // An absent orig_action in a row stands for any.
    struct tran_type {
        const char *action;
        const char *orig_action;
        const char *title;
    };
    static constexpr tran_type tran_types[] = {
        {"sale", nullptr, "Purchase"},
        {"incremental", nullptr, "Purchase"},
        {"preauth", nullptr, "Pre-authorization"},
        {"force", nullptr, "Pre-authorization Completion"},
        {"preauthcomplete", nullptr, "Pre-authorization Completion"},
        {"return", nullptr, "Refund"},
        {"refund", nullptr, "Refund"},
        {"reversal", "purchase", "Purchase Correction"},
        {"void", "purchase", "Purchase Correction"},
        {"reversal", "refund", "Refund Correction"},
        {"void", "refund", "Refund Correction"},
        {"reversal", "preauth", "Pre-authorization Completion"},
        {"void", "preauth", "Pre-authorization Completion"},
        {"reversal", nullptr, "Correction"},
        {"void", nullptr, "Correction"},
        {"avsonly", nullptr, "Card Verification"},
        {"verifyonly", nullptr, "Card Verification"},
    };
    for (const tran_type &type : tran_types) {
        const bool any_orig = type.orig_action == nullptr;
        if (Qel_str_caseeq(action, type.action) &&
            (any_orig || Qel_str_caseeq(orig_action, type.orig_action)))
            return type.title;
    }
    return Qel_rcpt_get_tran_type(action, lang, cardclass);
}

// What the forms share

namespace qel_rcpt
{

const char *get_nonempty(const Qel_hash_dict_t *kvs, const char *key, const char *fallback)
{
    const char *value = get(kvs, key);
    return Qel_str_isempty(value) ? get(kvs, fallback) : value;
}

const char *get_or_message(const Qel_hash_dict_t *kvs, const char *key, Qel_rcpt_lang_t lang,
                           Qel_rcpt_msg_t missing)
{
    return Qel_hash_dict_get_direct_default(kvs, key, Qel_rcpt_msg_to_string(lang, missing));
}

bool was_card_removed(const Qel_hash_dict_t *kvs)
{
    return key_is(kvs, "u_errorcode", "emv_card_removed") ||
           key_is(kvs, "reversal_reason", "cardremoved");
}

namespace
{

const char *get_action(const Qel_hash_dict_t *kvs)
{
    return get_nonempty(kvs, "action_trans", "action");
}

} // namespace

const char *get_title(const Qel_hash_dict_t *kvs, Qel_rcpt_lang_t lang)
{
    const char *action = get_action(kvs);
    if (Qel_str_isempty(action))
        return nullptr;
    return Qel_rcpt_get_tran_type(action, lang, Qel_rcpt_get_cardclass(kvs));
}

const char *get_title_moneris(const Qel_hash_dict_t *kvs, Qel_rcpt_lang_t lang,
                              const char *correction_type)
{
    const char *action = get_action(kvs);
    if (Qel_str_isempty(action))
        return nullptr;
    return Qel_rcpt_get_tran_type_moneris(action, correction_type, lang,
                                          Qel_rcpt_get_cardclass(kvs));
}

std::int64_t get_lane(const Qel_hash_dict_t *kvs)
{
    return std::max<std::int64_t>(1, Qel_str_to_int64(get(kvs, "laneid")));
}

const char *get_order_number(const Qel_hash_dict_t *kvs)
{
    const char *order_number = get(kvs, "ordernum");
    if (!Qel_str_isempty(order_number))
        return order_number;
    const char *transaction_number = get(kvs, "ptrannum");
    return is_positive(transaction_number) ? transaction_number : nullptr;
}

qel::dict parse_custom_fields(const Qel_hash_dict_t *kvs)
{
    const char *custom = get(kvs, "rcpt_custom");
    if (Qel_str_isempty(custom))
        return {};
    return qel::dict(Qel_hash_dict_deserialize(custom, Qel_str_len(custom), ',', ':', '"', '"', 0));
}

qel::dict get_custom_fields(const Qel_hash_dict_t *kvs)
{
    qel::dict parsed = parse_custom_fields(kvs);
    if (!parsed)
        return {};
    Qel_hash_dict_t *sorted = Qel_hash_dict_create(
        Qel_hash_dict_num_keys(parsed.get()), 75,
        QEL_HASH_DICT_CASECMP | QEL_HASH_DICT_KEYS_ORDERED | QEL_HASH_DICT_KEYS_SORTASC);
    Qel_hash_dict_merge(&sorted, parsed.release());
    return qel::dict(sorted);
}

qel::text clean_field_name(const char *name)
{
    static constexpr std::string_view bad_chars = " -`~!@#$%^&*()-+=\n\t\r\b/\\?<>|,";
    return qel::text(Qel_strdup_replace_charset(name, bad_chars.data(), bad_chars.size(), "_"));
}

const char *get_tip(const Qel_hash_dict_t *kvs)
{
    return Qel_hash_dict_get_direct_default(kvs, "examount", get(kvs, "u_tip"));
}

bool is_order_paid_in_full(const Qel_hash_dict_t *kvs)
{
    return Qel_rcpt_have_order_money(kvs) && !Qel_rcpt_is_order_parital_payment(kvs);
}

alternative_price get_alternative_price(const Qel_hash_dict_t *kvs)
{
    if (Qel_str_caseeq(get(kvs, "cardtype"), "cash"))
        return {QEL_RCPT_MSG_NONCASH_PRICE, get(kvs, "order_noncash_price")};
    return {QEL_RCPT_MSG_CASH_PRICE, get(kvs, "order_cash_price")};
}

} // namespace qel_rcpt
