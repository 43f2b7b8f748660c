// The named values of each block, with the conditions under which a receipt has them.
#include "qel_rcpt_values.hpp"

#include <cstddef>

namespace qel_rcpt
{

namespace
{

void add(const block_values &values, const char *name, const char *value)
{
    values.put(values.node, name, value);
}

void add_nonempty(const block_values &values, const char *name, const char *value)
{
    if (!Qel_str_isempty(value))
        add(values, name, value);
}

void add_nonempty(const block_values &values, const char *name, const qel::text &value)
{
    add_nonempty(values, name, value.get());
}

// The record's value under its own key.
void add_field(const block_values &values, const char *key)
{
    add_nonempty(values, key, get(values.kvs, key));
}

void add_money(const block_values &values, const char *name, const char *amount)
{
    if (is_positive(amount))
        add_nonempty(values, name, qel::text(Qel_rcpt_format_money(amount, &values.attrs)));
}

} // namespace

void add_merchinfo_values(const block_values &values)
{
    for (const merchant_field &field : merchant_fields) {
        if (field.missing == QEL_RCPT_MSG_NONE)
            add_field(values, field.key);
        else
            add(values, field.key,
                get_or_message(values.kvs, field.key, values.attrs.lang, field.missing));
    }
}

void add_reference_values(const block_values &values)
{
    const Qel_hash_dict_t *kvs = values.kvs;
    const Qel_rcpt_lang_t lang = values.attrs.lang;
    add_nonempty(values, "action", get_title(kvs, lang));
    add(values, "laneid", Qel_hash_dict_get_direct_default(kvs, "laneid", "1"));
    add_field(values, "cardtype");
    add_field(values, "rcpt_entry_mode");
    add_nonempty(values, "rcpt_acct_type", Qel_rcpt_get_acct_type(kvs, lang));
    add_field(values, "account");
    if (!Qel_str_eq(get(kvs, "cardholdername"), "/")) // what a card without a name on it carries
        add_field(values, "cardholdername");
    add(values, "time", qel::text(Qel_rcpt_format_time(kvs, &values.attrs)).get());
    add_nonempty(values, "ordernum",
                 Qel_hash_dict_get_direct_default(kvs, "ordernum", get(kvs, "ptrannum")));
    for (const char *key :
         {"custref", "ttid", "rcpt_issuer_resp_code", "rcpt_resp_code", "auth", "batch", "stan"})
        add_field(values, key);
}

void add_order_money_values(const block_values &values)
{
    const Qel_hash_dict_t *kvs = values.kvs;
    add_nonempty(values, "subtotal", qel::text(Qel_rcpt_format_order_subtotal(kvs, &values.attrs)));
    add_money(values, "discount", get(kvs, "order_discount"));
    add_money(values, "tip", get(kvs, "order_tip"));
    add_money(values, "tax", get(kvs, "order_tax"));
    add_money(values, "total", get(kvs, "order_total"));
}

void add_money_values(const block_values &values)
{
    const Qel_hash_dict_t *kvs = values.kvs;
    const Qel_rcpt_attrs_t *attrs = &values.attrs;
    add_nonempty(values, "subtotal", qel::text(Qel_rcpt_format_subtotal(kvs, attrs)));
    add_money(values, "discountamount", get(kvs, "discountamount"));
    add_money(values, "tip", get_tip(kvs));
    for (const char *key :
         {"surchargeamount", "fee", "convenience_fee", "supplemental_fee", "tax", "cashbackamount"})
        add_money(values, key, get(kvs, key));
    add_nonempty(values, "totalamount", qel::text(Qel_rcpt_format_total_amount(kvs, attrs)));
    add_nonempty(values, "authamount", qel::text(Qel_rcpt_format_authamount(kvs, attrs)));
    add_nonempty(values, "amountdue", qel::text(Qel_rcpt_format_amount_due(kvs, attrs)));
    if (values.is_custcopy)
        add_money(values, "balance", get(kvs, "balance"));
}

void add_disposition_values(const block_values &values)
{
    const Qel_hash_dict_t *kvs = values.kvs;
    const Qel_rcpt_lang_t lang = values.attrs.lang;
    add_nonempty(values, "card_status", Qel_rcpt_get_card_status(kvs, lang));
    add_nonempty(values, "pin_status", Qel_rcpt_get_pin_status(kvs, lang));
    add_nonempty(values, "auth_result", Qel_rcpt_get_result(kvs, lang));
    add_nonempty(values, "auth_mode", Qel_rcpt_get_mode(kvs, lang));
    add_field(values, "printdata");
}

void add_signature_values(const block_values &values)
{
    constexpr std::size_t signature_line_len = 10;
    const Qel_hash_dict_t *kvs = values.kvs;
    const Qel_rcpt_lang_t lang = values.attrs.lang;
    if (!Qel_rcpt_need_signature_line(kvs)) {
        add_nonempty(values, "sigcaptured", Qel_rcpt_get_signature_electronic(kvs, lang));
        return;
    }
    add(values, "line", qel::text(Qel_rcpt_get_signature_line(kvs, signature_line_len)).get());
    add(values, "agreement", Qel_rcpt_get_signature_agreement(kvs, lang));
    add_field(values, "cardholdername");
}

void add_emv_values(const block_values &values)
{
    for (const emv_field &field : emv_fields)
        add_nonempty(values, field.name, get(values.kvs, field.key));
}

void add_notice_values(const block_values &values)
{
    const Qel_rcpt_lang_t lang = values.attrs.lang;
    add(values, "message", Qel_rcpt_get_notice(lang));
    if (Qel_rcpt_is_duplicate(values.kvs))
        add(values, "duplicate", Qel_rcpt_get_duplicate(lang));
    add(values, "copy", Qel_rcpt_get_whos_copy(values.is_custcopy, lang));
}

void add_notes_values(const block_values &values)
{
    add_field(values, "order_notes");
    add_nonempty(values, "user_notes", get(values.kvs, "rcpt_user_notes"));
}

} // namespace qel_rcpt
