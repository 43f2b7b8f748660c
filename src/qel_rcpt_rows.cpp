// The rows of the general forms' blocks.
#include "qel_rcpt_rows.hpp"
#include "qel_rcpt_keys.hpp"
#include "qel_rcpt_rules.hpp"

#include <algorithm>
#include <iterator>

namespace qel_rcpt
{

namespace
{

// Values that are more than a key or an operation of the core

char *format_lane(const Qel_hash_dict_t *kvs)
{
    char *lane = nullptr;
    Qel_asprintf(&lane, "%lld", static_cast<long long>(get_lane(kvs)));
    return lane;
}

const char *get_lane_id(const Qel_hash_dict_t *kvs, Qel_rcpt_lang_t /*lang*/)
{
    return Qel_hash_dict_get_direct_default(kvs, "laneid", "1");
}

// A card without a name on it carries "/".
const char *get_name_on_card(const Qel_hash_dict_t *kvs, Qel_rcpt_lang_t /*lang*/)
{
    const char *name = get(kvs, "cardholdername");
    return Qel_str_eq(name, "/") ? nullptr : name;
}

const char *get_order_number_shown(const Qel_hash_dict_t *kvs, Qel_rcpt_lang_t /*lang*/)
{
    return get_order_number(kvs);
}

const char *get_order_or_transaction_number(const Qel_hash_dict_t *kvs, Qel_rcpt_lang_t /*lang*/)
{
    return Qel_hash_dict_get_direct_default(kvs, "ordernum", get(kvs, "ptrannum"));
}

char *format_positive(const char *amount, const Qel_rcpt_attrs_t *attrs)
{
    return is_positive(amount) ? Qel_rcpt_format_money(amount, attrs) : nullptr;
}

char *format_tip(const Qel_hash_dict_t *kvs, const Qel_rcpt_attrs_t *attrs)
{
    return format_positive(get_tip(kvs), attrs);
}

// A deduction: the amount with a minus in front.
char *with_minus(const qel::text &amount)
{
    if (Qel_str_isempty(amount.get()))
        return nullptr;
    qel::buf deduction(Qel_buf_create());
    Qel_buf_add_str(deduction.get(), "- ");
    Qel_buf_add_str(deduction.get(), amount.get());
    return qel::finish(std::move(deduction)).release();
}

char *format_order_discount(const Qel_hash_dict_t *kvs, const Qel_rcpt_attrs_t *attrs)
{
    return with_minus(qel::text(format_positive(get(kvs, "order_discount"), attrs)));
}

char *format_discount(const Qel_hash_dict_t *kvs, const Qel_rcpt_attrs_t *attrs)
{
    char *discount = nullptr;
    Qel_rcpt_format_payment_discounts(kvs, attrs, &discount, nullptr);
    return with_minus(qel::text(discount));
}

char *format_cash_discount(const Qel_hash_dict_t *kvs, const Qel_rcpt_attrs_t *attrs)
{
    char *discount = nullptr;
    Qel_rcpt_format_payment_discounts(kvs, attrs, nullptr, &discount);
    return with_minus(qel::text(discount));
}

// The total of a payment towards an order, and of any other: a transaction has one of them.
char *format_paid(const Qel_hash_dict_t *kvs, const Qel_rcpt_attrs_t *attrs)
{
    return Qel_rcpt_have_order_money(kvs) ? Qel_rcpt_format_total_amount(kvs, attrs) : nullptr;
}

char *format_total(const Qel_hash_dict_t *kvs, const Qel_rcpt_attrs_t *attrs)
{
    return Qel_rcpt_have_order_money(kvs) ? nullptr : Qel_rcpt_format_total_amount(kvs, attrs);
}

char *format_rest_of_authorization(const Qel_hash_dict_t *kvs, const Qel_rcpt_attrs_t *attrs)
{
    const qel::text authorized(Qel_rcpt_format_authamount(kvs, attrs));
    return authorized ? Qel_rcpt_format_amount_due(kvs, attrs) : nullptr;
}

constexpr std::size_t signature_line_len = 10;

char *format_signature_line(const Qel_hash_dict_t *kvs)
{
    return Qel_rcpt_get_signature_line(kvs, signature_line_len);
}

const char *get_signer(const Qel_hash_dict_t *kvs, Qel_rcpt_lang_t /*lang*/)
{
    return Qel_rcpt_need_signature_line(kvs) ? get(kvs, "cardholdername") : nullptr;
}

const char *get_captured_signature(const Qel_hash_dict_t *kvs, Qel_rcpt_lang_t lang)
{
    return Qel_rcpt_need_signature_line(kvs) ? nullptr
                                             : Qel_rcpt_get_signature_electronic(kvs, lang);
}

const char *get_notice(const Qel_hash_dict_t * /*kvs*/, Qel_rcpt_lang_t lang)
{
    return Qel_rcpt_get_notice(lang);
}

const char *get_duplicate(const Qel_hash_dict_t *kvs, Qel_rcpt_lang_t lang)
{
    return Qel_rcpt_is_duplicate(kvs) ? Qel_rcpt_get_duplicate(lang) : nullptr;
}

const char *get_customer_copy(const Qel_hash_dict_t * /*kvs*/, Qel_rcpt_lang_t lang)
{
    return Qel_rcpt_get_whos_copy(true, lang);
}

const char *get_merchant_copy(const Qel_hash_dict_t * /*kvs*/, Qel_rcpt_lang_t lang)
{
    return Qel_rcpt_get_whos_copy(false, lang);
}

// The tables, a row a line: name; id and classes in HTML; label, and a shorter one for plain text;
// value; which forms and copies show it, if not all
// clang-format off

constexpr row reference_table[] = {
    {"action", {"action", "action"}, QEL_RCPT_MSG_NONE, get_title},
    {"laneid", {"", "x_id"}, QEL_RCPT_MSG_LANE, format_lane, in_layouts},
    {"laneid", {}, QEL_RCPT_MSG_LANE, get_lane_id, in_data, of_copy::both, true},
    {"cardtype", {"cardtype", "type cardtype"}, QEL_RCPT_MSG_NONE, "cardtype"},
    {"rcpt_entry_mode", {"entry_mode", "entry mode"}, QEL_RCPT_MSG_NONE, "rcpt_entry_mode"},
    {"rcpt_acct_type", {"acct_type", "account type"}, QEL_RCPT_MSG_ACCOUNT_TYPE, Qel_rcpt_get_acct_type},
    {"account", {"account", "account"}, {QEL_RCPT_MSG_ACCOUNT, QEL_RCPT_MSG_CARD}, "account"},
    {"cardholdername", {"cardholdername", "cardholdername"}, QEL_RCPT_MSG_CUSTOMER, "cardholdername", in_html},
    {"cardholdername", {}, QEL_RCPT_MSG_CUSTOMER, get_name_on_card, form_set(in_plain | in_data)},
    {"time", {"time", "time"}, QEL_RCPT_MSG_TIME, Qel_rcpt_format_time},
    {"ordernum", {"ordernum", "x_id"}, {QEL_RCPT_MSG_ORDER_NUM, QEL_RCPT_MSG_ORDER_NUM_S}, get_order_number_shown, in_layouts},
    {"ordernum", {}, QEL_RCPT_MSG_ORDER_NUM, get_order_or_transaction_number, in_data},
    {"custref", {"custref", "x_id"}, {QEL_RCPT_MSG_PO_NUM, QEL_RCPT_MSG_PO_NUM_S}, "custref"},
    {"ttid", {"ttid", "x_id"}, QEL_RCPT_MSG_TTID, "ttid"},
    {"resp_code", {"resp_code", "code"}, {QEL_RCPT_MSG_RESPONSE_CODE, QEL_RCPT_MSG_RESPONSE_CODE_S}, Qel_rcpt_get_respcode, in_layouts},
    {"rcpt_issuer_resp_code", {}, QEL_RCPT_MSG_RESPONSE_CODE, "rcpt_issuer_resp_code", in_data},
    {"rcpt_resp_code", {}, QEL_RCPT_MSG_RESPONSE_CODE, "rcpt_resp_code", in_data},
    {"auth", {"auth", "auth"}, QEL_RCPT_MSG_AUTH_NUM, "auth"},
    {"batch", {"batch", "batch"}, QEL_RCPT_MSG_BATCH, "batch"},
    {"stan", {"stan", "stan"}, QEL_RCPT_MSG_STAN, "stan"},
};

constexpr row order_money_table[] = {
    {"subtotal", {"order_subtotal", "amount order subtotal"}, QEL_RCPT_MSG_SUBTOTAL, Qel_rcpt_format_order_subtotal},
    {"discount", {"order_discountamount", "amount order discount"}, QEL_RCPT_MSG_DISCOUNT, format_order_discount, in_layouts},
    {"discount", {}, QEL_RCPT_MSG_DISCOUNT, amount_of{"order_discount"}, in_data},
    {"tip", {"order_tip", "amount order tip"}, QEL_RCPT_MSG_TIP, amount_of{"order_tip"}},
    {"tax", {"order_tax", "amount order tax"}, QEL_RCPT_MSG_TAX, amount_of{"order_tax"}},
    {"total", {"order_total", "amount order total"}, QEL_RCPT_MSG_TOTAL, amount_of{"order_total"}},
};

constexpr row money_table[] = {
    {"subtotal", {"subtotal", "amount subtotal"}, QEL_RCPT_MSG_SUBTOTAL, Qel_rcpt_format_subtotal},
    {"discountamount", {"discountamount", "amount discount"}, QEL_RCPT_MSG_DISCOUNT, format_discount, in_layouts},
    {"cash_discount", {"cash_discount", "amount discount"}, QEL_RCPT_MSG_CASHDISCOUNT, format_cash_discount, in_layouts},
    {"discountamount", {}, QEL_RCPT_MSG_DISCOUNT, amount_of{"discountamount"}, in_data},
    {"tip", {"tip", "amount tip"}, QEL_RCPT_MSG_TIP, format_tip},
    {"surchargeamount", {"surchargeamount", "amount surcharge"}, QEL_RCPT_MSG_SURCHARGE, amount_of{"surchargeamount"}},
    {"fee", {"fee", "amount fee"}, QEL_RCPT_MSG_FEE, amount_of{"fee"}},
    {"convenience_fee", {"convenience_fee", "amount fee"}, QEL_RCPT_MSG_CONVENIENCEFEE, amount_of{"convenience_fee"}},
    {"supplemental_fee", {"supplemental_fee", "amount fee"}, QEL_RCPT_MSG_SUPPLEMENTALFEE, amount_of{"supplemental_fee"}},
    {"tax", {"tax", "amount tax"}, QEL_RCPT_MSG_TAX, amount_of{"tax"}},
    {"cashbackamount", {"cashbackamount", "amount cashback"}, {QEL_RCPT_MSG_CASHBACK, QEL_RCPT_MSG_CASHBACK_S}, amount_of{"cashbackamount"}},
    {"totalamount", {"totalamount", "amount total"}, QEL_RCPT_MSG_PAID, format_paid},
    {"totalamount", {"totalamount", "amount total"}, QEL_RCPT_MSG_TOTAL, format_total},
    {"authamount", {"authamount", "amount authorized"}, {QEL_RCPT_MSG_AUTH_AMOUNT, QEL_RCPT_MSG_AUTH_AMOUNT_S}, Qel_rcpt_format_authamount},
    {"amountdue", {"amountdue", "amount due"}, QEL_RCPT_MSG_AMOUNT_DUE, Qel_rcpt_format_amount_due, in_markup},
    {"amountdue", {}, QEL_RCPT_MSG_AMOUNT_DUE, format_rest_of_authorization, in_plain},
    {"balance", {"balance", "amount balance"}, QEL_RCPT_MSG_BALANCE, amount_of{"balance"}, in_markup, of_copy::customer},
};

constexpr row disposition_table[] = {
    {"card_status", {"card_status", "status"}, QEL_RCPT_MSG_NONE, Qel_rcpt_get_card_status},
    {"pin_status", {"pin_status", "status"}, QEL_RCPT_MSG_NONE, Qel_rcpt_get_pin_status},
    {"auth_result", {"auth_result", "result"}, QEL_RCPT_MSG_NONE, Qel_rcpt_get_result},
    {"auth_mode", {"auth_mode", "mode"}, QEL_RCPT_MSG_MODE, Qel_rcpt_get_mode},
    {"printdata", {"printdata", "print"}, QEL_RCPT_MSG_NONE, "printdata"},
};

constexpr row signature_table[] = {
    {"line", {"line", "line"}, QEL_RCPT_MSG_NONE, format_signature_line},
    {"agreement", {"agreement", "agreement"}, QEL_RCPT_MSG_NONE, Qel_rcpt_get_signature_agreement},
    {"cardholdername", {"cardholdername", "name"}, QEL_RCPT_MSG_NONE, get_signer},
    {"sigcaptured", {"sigcaptured", "status"}, QEL_RCPT_MSG_NONE, get_captured_signature},
};

constexpr row emv_table[] = {
    {"name", {"name", "emv_data"}, QEL_RCPT_MSG_NAME, "rcpt_emv_name", in_all_and_store},
    {"aid", {"aid", "emv_data"}, QEL_RCPT_MSG_AID, "rcpt_emv_aid", in_all_and_store},
    {"tvr", {"tvr", "emv_data"}, QEL_RCPT_MSG_TVR, "rcpt_emv_tvr", in_all_and_store},
    {"tsi", {"tsi", "emv_data"}, QEL_RCPT_MSG_TSI, "rcpt_emv_tsi", in_all_and_store},
    {"iad", {"iad", "emv_data"}, QEL_RCPT_MSG_IAD, "rcpt_emv_iad"},
    {"actype", {"actype", "emv_data"}, QEL_RCPT_MSG_AC_TYPE, "rcpt_emv_actype"},
    {"ac", {"ac", "emv_data"}, QEL_RCPT_MSG_AC, "rcpt_emv_ac"},
    {"odd", {"odd", "emv_data"}, QEL_RCPT_MSG_ODD, "rcpt_emv_card_decline"},
};

constexpr row notice_table[] = {
    {"message", {"message", "message"}, QEL_RCPT_MSG_NONE, get_notice},
    {"duplicate", {"duplicate", "status"}, QEL_RCPT_MSG_NONE, get_duplicate},
    {"copy", {"copy", "status"}, QEL_RCPT_MSG_NONE, get_customer_copy, in_all, of_copy::customer},
    {"copy", {"copy", "status"}, QEL_RCPT_MSG_NONE, get_merchant_copy, in_all, of_copy::merchant},
};

constexpr row notes_table[] = {
    {"order_notes", {"order_notes", "order notes"}, QEL_RCPT_MSG_NONE, "order_notes"},
    {"user_notes", {"user_notes", "user notes"}, QEL_RCPT_MSG_NONE, "rcpt_user_notes"},
};
// clang-format on

// The key of an amount or of a value as it stands; empty for another source.
constexpr std::string_view key_of(const row &row)
{
    if (const amount_of *amount = std::get_if<amount_of>(&row.value))
        return amount->key;
    const char *const *key = std::get_if<const char *>(&row.value);
    return key == nullptr ? "" : *key;
}

template <std::size_t Count>
consteval bool has_known_keys(const row (&rows)[Count])
{
    return std::ranges::all_of(rows, [](const row &row) {
        return key_of(row).empty() || std::ranges::find(record_keys, key_of(row),
                                                        &record_key::name) != std::end(record_keys);
    });
}
static_assert(has_known_keys(reference_table) && has_known_keys(order_money_table) &&
                  has_known_keys(money_table) && has_known_keys(disposition_table) &&
                  has_known_keys(emv_table) && has_known_keys(notes_table),
              "a row's key is missing in the table of record keys, qel_rcpt_keys.hpp");

consteval bool add_up()
{
    return std::ranges::all_of(money_table, [](const row &row) {
        return !std::holds_alternative<amount_of>(row.value) || row.is("balance") ||
               std::ranges::any_of(subtotal_terms,
                                   [&](const money_term &term) { return key_of(row) == term.key; });
    });
}
static_assert(add_up(), "a row of the amount is missing in subtotal_terms, qel_rcpt_rules.hpp");

// Finds a row's value in a copy.
struct value_finder {
    const copy &in;

    row_text operator()(const char *key) const { return get(in.kvs, key); }
    row_text operator()(amount_of amount) const
    {
        return qel::text(format_positive(get(in.kvs, amount.key), &in.attrs));
    }
    row_text operator()(const char *(*find)(const Qel_hash_dict_t *, Qel_rcpt_lang_t)) const
    {
        return find(in.kvs, in.attrs.lang);
    }
    row_text operator()(char *(*format)(const Qel_hash_dict_t *)) const
    {
        return qel::text(format(in.kvs));
    }
    row_text operator()(char *(*format)(const Qel_hash_dict_t *, const Qel_rcpt_attrs_t *)) const
    {
        return qel::text(format(in.kvs, &in.attrs));
    }
};

} // namespace

constinit const std::span<const row> reference_rows = reference_table;
constinit const std::span<const row> order_money_rows = order_money_table;
constinit const std::span<const row> money_rows = money_table;
constinit const std::span<const row> disposition_rows = disposition_table;
constinit const std::span<const row> signature_rows = signature_table;
constinit const std::span<const row> emv_rows = emv_table;
constinit const std::span<const row> notice_rows = notice_table;
constinit const std::span<const row> notes_rows = notes_table;

row_text find_value(const row &row, const copy &copy)
{
    if (row.copies != of_copy::both && (row.copies == of_copy::customer) != copy.is_custcopy)
        return {};
    return std::visit(value_finder{copy}, row.value);
}

} // namespace qel_rcpt
