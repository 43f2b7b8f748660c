// Rules that several forms follow: time, signature, marks, order number, custom fields.
#include "qel_rcpt_rules.hpp"
#include "qel_rcpt_tables.hpp"

#include <algorithm>

using qel_rcpt::get;
using qel_rcpt::key_contains;
using qel_rcpt::key_is_true;

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
    const Qel_rcpt_attrs_t &style = qel_rcpt::attrs_or_default(attrs);
    const Qel_time_localtm_t localtm = get_local_time(kvs, style.timezone);
    const qel_rcpt::country *country = qel_rcpt::find_code(qel_rcpt::countries, style.country_code);
    const bool month_first = country != nullptr && country->month_first;
    return Qel_time_to_str(month_first ? "%m/%d/%y %H:%M:%S" : "%d/%m/%y %H:%M:%S", &localtm);
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
    Qel_buf_add_fill(line.get(), '_', std::clamp<std::size_t>(len, 1, qel_rcpt::most_columns) - 1);
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

bool was_declined_by_chip(const Qel_hash_dict_t *kvs)
{
    return key_is(kvs, "reversal_reason", "carddecline") ||
           key_is(kvs, "offline_decline", "carddecline");
}

bool was_declined_by_card(const Qel_hash_dict_t *kvs)
{
    return key_is(kvs, "u_errorcode", "emv_card_deny") || was_declined_by_chip(kvs);
}

bool was_declined_by_issuer(const Qel_hash_dict_t *kvs)
{
    return key_is_true(kvs, "issuer_decline");
}

const char *get_action(const Qel_hash_dict_t *kvs)
{
    const char *action = get_nonempty(kvs, "action_trans", "action");
    return Qel_str_isempty(action) ? nullptr : action;
}

const char *get_title(const Qel_hash_dict_t *kvs, Qel_rcpt_lang_t lang)
{
    const char *action = get_action(kvs);
    if (action == nullptr)
        return nullptr;
    return Qel_rcpt_get_tran_type(action, lang, Qel_rcpt_get_cardclass(kvs));
}

const char *get_title_moneris(const Qel_hash_dict_t *kvs, Qel_rcpt_lang_t lang,
                              const char *correction_type)
{
    const char *action = get_action(kvs);
    if (action == nullptr)
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
