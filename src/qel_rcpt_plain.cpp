// The general plain-text receipt: lines of any width from 10 characters up.
#include "qel_rcpt_plain.hpp"

#include <algorithm>
#include <array>
#include <string>

using qel_rcpt::block_copies;
using qel_rcpt::block_place;
using qel_rcpt::get;
using qel_rcpt::plain_block;

namespace
{

// The message for a missing phone number is a short one here.
Qel_rcpt_msg_t missing_message(const qel_rcpt::merchant_field &field)
{
    return field.missing == QEL_RCPT_MSG_UNKNOWN_PHONE ? QEL_RCPT_MSG_UNKNOWN_PHONE_S
                                                       : field.missing;
}

void generate_block_merchinfo(Qel_rcpt_plain_t &info, const block_place &place)
{
    plain_block block(info);
    for (const qel_rcpt::merchant_field &field : qel_rcpt::merchant_fields)
        block.center(
            qel_rcpt::get_or_message(info.kvs, field.key, info.attrs.lang, missing_message(field)));
    block.store(place);
}

void add_title(plain_block &block, const Qel_rcpt_plain_t &info)
{
    const char *title = qel_rcpt::get_title(info.kvs, info.attrs.lang);
    if (title == nullptr)
        return;
    block.center(title);
    block.blank();
}

void add_lane(plain_block &block, const Qel_rcpt_plain_t &info)
{
    std::array<char, 32> lane{};
    Qel_snprintf(lane.data(), lane.size(), "%lld",
                 static_cast<long long>(qel_rcpt::get_lane(info.kvs)));
    block.labelled(QEL_RCPT_MSG_LANE, lane.data());
}

void add_cardholder(plain_block &block, const Qel_rcpt_plain_t &info)
{
    const char *name = get(info.kvs, "cardholdername");
    if (!Qel_str_eq(name, "/")) // what a card without a name on it carries
        block.labelled(QEL_RCPT_MSG_CUSTOMER, name);
}

void add_custom_fields(plain_block &block, const Qel_rcpt_plain_t &info)
{
    const qel::dict fields = qel_rcpt::get_custom_fields(info.kvs);
    for (const auto [name, value] : qel::pairs(fields.get()))
        block.left_right(name, value);
}

void generate_block_reference(Qel_rcpt_plain_t &info, const block_place &place)
{
    const Qel_hash_dict_t *kvs = info.kvs;
    plain_block block(info);
    add_title(block, info);
    add_lane(block, info);
    block.left_right(get(kvs, "cardtype"), get(kvs, "rcpt_entry_mode"));
    block.labelled(QEL_RCPT_MSG_ACCOUNT_TYPE, Qel_rcpt_get_acct_type(kvs, info.attrs.lang));
    block.labelled(QEL_RCPT_MSG_CARD, get(kvs, "account"));
    add_cardholder(block, info);
    block.labelled(QEL_RCPT_MSG_TIME, qel::text(Qel_rcpt_format_time(kvs, &info.attrs)).get());
    block.labelled(QEL_RCPT_MSG_ORDER_NUM_S, qel_rcpt::get_order_number(kvs));
    block.labelled(QEL_RCPT_MSG_PO_NUM_S, get(kvs, "custref"));
    block.labelled(QEL_RCPT_MSG_TTID, get(kvs, "ttid"));
    block.labelled(QEL_RCPT_MSG_RESPONSE_CODE_S, qel::text(Qel_rcpt_get_respcode(kvs)).get());
    block.left_right(block.label(QEL_RCPT_MSG_AUTH_NUM).get(), get(kvs, "auth"),
                     block.label(QEL_RCPT_MSG_BATCH).get(), get(kvs, "batch"));
    block.labelled(QEL_RCPT_MSG_STAN, get(kvs, "stan"));
    add_custom_fields(block, info);
    block.store(place);
}

// How a line item writes its name and its price: a format, or absent for the text as it is.
struct line_item_form {
    const char *name;
    const char *price;
};

// By Qel_rcpt_line_item_type_t, up to the notes.
constexpr line_item_form line_item_forms[QEL_RCPT_LINE_ITEM_TYPE_NOTES] = {
    {nullptr, nullptr},  // item
    {"+ %s", nullptr},   // add-on
    {"+ %s", "- %s%%"},  // item discount in percent
    {"+ %s", "- %s"},    // item discount in money
    {nullptr, "- %s%%"}, // order discount in percent
    {nullptr, "- %s"},   // order discount in money
    {nullptr, "- %s%%"}, // cash discount: a percentage
};

using item_text = std::array<char, 256>;

const char *format_item_text(item_text &out, const char *fmt, const char *str)
{
    if (fmt == nullptr)
        return str;
    Qel_snprintf(out.data(), out.size(), fmt, str);
    return out.data();
}

void line_item_add_line(plain_block &block, const char *name, const char *qty, const char *right)
{
    if (Qel_str_caseeq(qty, "1")) {
        block.left_right(name, right);
        return;
    }
    item_text quantity{};
    block.left_right(name, format_item_text(quantity, "(%s)", qty), nullptr, right);
}

void line_item_add(void * /*info*/, const char *name, const char *qty, const char *price,
                   Qel_rcpt_line_item_type_t type, void *ret)
{
    plain_block &block = *static_cast<plain_block *>(ret);
    if (type == QEL_RCPT_LINE_ITEM_TYPE_NOTES)
        block.left(name);
    if (type >= std::size(line_item_forms))
        return;
    item_text name_text{};
    item_text price_text{};
    line_item_add_line(block, format_item_text(name_text, line_item_forms[type].name, name), qty,
                       format_item_text(price_text, line_item_forms[type].price, price));
}

void generate_block_line_items(Qel_rcpt_plain_t &info, const block_place &place)
{
    plain_block block(info);
    Qel_rcpt_generate_line_items(get(info.kvs, "line_items"), &info, &info.attrs, line_item_add,
                                 &block);
    block.store(place);
}

void add_heading(plain_block &block, Qel_rcpt_msg_t heading)
{
    block.center(heading);
    block.blank();
}

void generate_block_order_money(Qel_rcpt_plain_t &info, const block_place &place)
{
    const Qel_hash_dict_t *kvs = info.kvs;
    if (!Qel_rcpt_have_order_money(kvs))
        return;
    plain_block block(info);
    add_heading(block, QEL_RCPT_MSG_ORDER);
    block.labelled(QEL_RCPT_MSG_SUBTOTAL,
                   qel::text(Qel_rcpt_format_order_subtotal(kvs, &info.attrs)).get());
    block.positive_money(QEL_RCPT_MSG_DISCOUNT, get(kvs, "order_discount"), true);
    block.positive_money(QEL_RCPT_MSG_TIP, get(kvs, "order_tip"));
    block.positive_money(QEL_RCPT_MSG_TAX, get(kvs, "order_tax"));
    block.positive_money(QEL_RCPT_MSG_TOTAL, get(kvs, "order_total"));
    block.store(place);
}

void add_discount(plain_block &block, Qel_rcpt_msg_t label, const char *discount)
{
    if (!Qel_str_isempty(discount))
        block.labelled(label, std::string("- ").append(discount).c_str());
}

void add_payment_discounts(plain_block &block, const Qel_rcpt_plain_t &info)
{
    char *discount = nullptr;
    char *cash_discount = nullptr;
    Qel_rcpt_format_payment_discounts(info.kvs, &info.attrs, &discount, &cash_discount);
    add_discount(block, QEL_RCPT_MSG_DISCOUNT, qel::text(discount).get());
    add_discount(block, QEL_RCPT_MSG_CASHDISCOUNT, qel::text(cash_discount).get());
}

// What the amount holds beside the subtotal.
void add_extra_amounts(plain_block &block, const Qel_hash_dict_t *kvs)
{
    struct money_line {
        Qel_rcpt_msg_t label;
        const char *key;
    };
    static constexpr money_line money_lines[] = {
        {QEL_RCPT_MSG_SURCHARGE, "surchargeamount"},
        {QEL_RCPT_MSG_FEE, "fee"},
        {QEL_RCPT_MSG_CONVENIENCEFEE, "convenience_fee"},
        {QEL_RCPT_MSG_SUPPLEMENTALFEE, "supplemental_fee"},
        {QEL_RCPT_MSG_TAX, "tax"},
        {QEL_RCPT_MSG_CASHBACK_S, "cashbackamount"},
    };
    block.positive_money(QEL_RCPT_MSG_TIP, qel_rcpt::get_tip(kvs));
    for (const money_line &line : money_lines)
        block.positive_money(line.label, get(kvs, line.key));
}

// After a partial approval: what was authorised and what is still due.
void add_authorised_amount(plain_block &block, const Qel_rcpt_plain_t &info)
{
    const qel::text authorised(Qel_rcpt_format_authamount(info.kvs, &info.attrs));
    if (!authorised)
        return;
    block.blank();
    block.labelled(QEL_RCPT_MSG_AUTH_AMOUNT_S, authorised.get());
    block.labelled(QEL_RCPT_MSG_AMOUNT_DUE,
                   qel::text(Qel_rcpt_format_amount_due(info.kvs, &info.attrs)).get());
}

void add_balance(plain_block &block, const Qel_hash_dict_t *kvs)
{
    const char *balance = get(kvs, "balance");
    if (Qel_str_isempty(balance))
        return;
    block.blank();
    block.money(QEL_RCPT_MSG_BALANCE, balance);
}

void generate_block_money(Qel_rcpt_plain_t &info, const block_place &place)
{
    const Qel_hash_dict_t *kvs = info.kvs;
    if (qel_rcpt::is_order_paid_in_full(kvs))
        return;
    const bool pays_part_of_order = Qel_rcpt_have_order_money(kvs);

    plain_block block(info);
    if (pays_part_of_order)
        add_heading(block, QEL_RCPT_MSG_PAYMENT);
    block.labelled(QEL_RCPT_MSG_SUBTOTAL,
                   qel::text(Qel_rcpt_format_subtotal(kvs, &info.attrs)).get());
    add_payment_discounts(block, info);
    add_extra_amounts(block, kvs);
    block.labelled(pays_part_of_order ? QEL_RCPT_MSG_PAID : QEL_RCPT_MSG_TOTAL,
                   qel::text(Qel_rcpt_format_total_amount(kvs, &info.attrs)).get());
    add_authorised_amount(block, info);
    if (place.is_custcopy)
        add_balance(block, kvs);
    block.store(place);
}

void generate_block_disposition(Qel_rcpt_plain_t &info, const block_place &place)
{
    const Qel_hash_dict_t *kvs = info.kvs;
    const Qel_rcpt_lang_t lang = info.attrs.lang;
    plain_block block(info);
    block.center(Qel_rcpt_get_card_status(kvs, lang));
    block.center(Qel_rcpt_get_pin_status(kvs, lang));
    if (!block.empty())
        block.blank();
    block.center(Qel_rcpt_get_result(kvs, lang));
    block.blank();

    block.message_prefix(QEL_RCPT_MSG_MODE, Qel_rcpt_get_mode(kvs, lang));

    const char *printdata = get(kvs, "printdata");
    if (!Qel_str_isempty(printdata)) {
        block.blank();
        block.left(printdata);
    }
    block.store(place);
}

void generate_block_signature(Qel_rcpt_plain_t &info, const block_place &place)
{
    const Qel_hash_dict_t *kvs = info.kvs;
    const Qel_rcpt_lang_t lang = info.attrs.lang;
    plain_block block(info);
    if (Qel_rcpt_need_signature_line(kvs)) {
        block.left(QEL_RCPT_MSG_SIGNATURE);
        block.blank();
        block.left(qel::text(Qel_rcpt_get_signature_line(kvs, info.line_len)).get());
        block.center(get(kvs, "cardholdername"));
        block.blank();
        block.center(Qel_rcpt_get_signature_agreement(kvs, lang));
    } else {
        block.center(Qel_rcpt_get_signature_electronic(kvs, lang));
    }
    block.store(place);
}

void generate_block_emv(Qel_rcpt_plain_t &info, const block_place &place)
{
    const Qel_hash_dict_t *kvs = info.kvs;
    plain_block block(info);
    block.left(get(kvs, "rcpt_emv_name"));
    block.message_prefix(QEL_RCPT_MSG_AID, get(kvs, "rcpt_emv_aid"));
    block.message_prefix(QEL_RCPT_MSG_TVR, get(kvs, "rcpt_emv_tvr"));
    block.message_prefix(QEL_RCPT_MSG_TSI, get(kvs, "rcpt_emv_tsi"));
    block.message_prefix(QEL_RCPT_MSG_IAD, get(kvs, "rcpt_emv_iad"));

    const char *cryptogram_type = get(kvs, "rcpt_emv_actype");
    const char *cryptogram = get(kvs, "rcpt_emv_ac");
    if (!Qel_str_isempty(cryptogram_type) && !Qel_str_isempty(cryptogram))
        block.left_prefix(cryptogram_type, cryptogram);

    const char *decline_data = get(kvs, "rcpt_emv_card_decline");
    if (!Qel_str_isempty(decline_data)) {
        block.blank();
        block.message_prefix(QEL_RCPT_MSG_ODD, decline_data);
    }
    block.store(place);
}

void add_alternative_price(plain_block &block, const Qel_rcpt_plain_t &info)
{
    const auto [label, amount] = qel_rcpt::get_alternative_price(info.kvs);
    if (Qel_str_isempty(amount))
        return;
    std::array<char, 256> line{};
    Qel_snprintf(line.data(), line.size(), "%s %s", block.label(label).get(),
                 qel::text(Qel_rcpt_format_money(amount, &info.attrs)).get());
    block.raw(line.data());
    block.blank();
}

void generate_block_notice(Qel_rcpt_plain_t &info, const block_place &place)
{
    const Qel_rcpt_lang_t lang = info.attrs.lang;
    plain_block block(info);
    add_alternative_price(block, info);
    block.center(Qel_rcpt_get_notice(lang));
    if (Qel_rcpt_is_duplicate(info.kvs)) {
        block.blank();
        block.center(Qel_rcpt_get_duplicate(lang));
    }
    block.blank();
    block.center(Qel_rcpt_get_whos_copy(place.is_custcopy, lang));
    block.store(place);
}

void generate_block_notes(Qel_rcpt_plain_t &info, const block_place &place)
{
    plain_block block(info);
    block.center(get(info.kvs, "order_notes"));
    block.center(get(info.kvs, "rcpt_user_notes"));
    block.store(place);
}

constexpr qel_rcpt::block_builder<Qel_rcpt_plain_t> block_builders[] = {
    {"merch_info", generate_block_merchinfo},
    {"reference", generate_block_reference},
    {"items", generate_block_line_items},
    {"order_money", generate_block_order_money},
    {"money", generate_block_money, block_copies::alike_without_balance},
    {"disposition", generate_block_disposition},
    {"signature", generate_block_signature, block_copies::merch_only},
    {"emv", generate_block_emv},
    {"notice", generate_block_notice, block_copies::differing},
    {"notes", generate_block_notes},
};
static_assert(qel_rcpt::makes_blocks_of("plain", block_builders));

constexpr std::size_t default_line_len = 40;
constexpr std::size_t min_line_len = 10;

} // namespace

Qel_hash_dict_t *Qel_rcpt_generate_plain(const Qel_hash_dict_t *kvs,
                                         const Qel_rcpt_config_t *config, std::size_t line_len,
                                         const char *line_break) noexcept
{
    Qel_rcpt_plain_t info{};
    info.kvs = kvs;
    info.line_break = Qel_str_isempty(line_break) ? "\r\n" : line_break;
    info.line_len = line_len == 0 ? default_line_len : std::max(line_len, min_line_len);
    return qel_rcpt::generate_copies(info, config, block_builders);
}
