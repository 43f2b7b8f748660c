// The general plain-text receipt: lines of any width from 10 characters up.
#include "qel_rcpt_lines.hpp"
#include "qel_rcpt_rows.hpp"

#include <algorithm>
#include <array>

using qel_rcpt::block_slot;
using qel_rcpt::get;
using qel_rcpt::plain_block;
using qel_rcpt::plain_receipt;
using qel_rcpt::row;

namespace
{

// The message for a missing phone number is a short one here.
Qel_rcpt_msg_t missing_message(const qel_rcpt::merchant_field &field)
{
    return field.missing == QEL_RCPT_MSG_UNKNOWN_PHONE ? QEL_RCPT_MSG_UNKNOWN_PHONE_S
                                                       : field.missing;
}

void generate_block_merchinfo(plain_receipt &info, const block_slot &slot)
{
    plain_block block(info);
    for (const qel_rcpt::merchant_field &field : qel_rcpt::merchant_fields)
        block.center(
            qel_rcpt::get_or_message(info.kvs, field.key, info.attrs.lang, missing_message(field)));
    block.store(slot);
}

template <typename Show>
void for_each_value(const plain_receipt &info, const block_slot &slot, std::span<const row> rows,
                    Show show)
{
    qel_rcpt::for_each_value(info, slot, rows, qel_rcpt::in_plain, show);
}

void add_custom_fields(plain_block &block, const plain_receipt &info)
{
    const qel::dict fields = qel_rcpt::get_custom_fields(info.kvs);
    for (const auto [name, value] : qel::pairs(fields.get()))
        block.left_right(name, value);
}

// Two values share a line: the second where the first is empty makes one alone.
bool follows_on_its_line(const plain_receipt &info, const row &row, const char *second,
                         const char *first)
{
    return row.is(second) && !Qel_str_isempty(get(info.kvs, first));
}

// The title stands above the rest, and two pairs of short values share a line each.
void add_reference_row(plain_block &block, const plain_receipt &info, const row &row,
                       const char *text)
{
    if (follows_on_its_line(info, row, "rcpt_entry_mode", "cardtype") ||
        follows_on_its_line(info, row, "batch", "auth"))
        return;
    if (row.is("action")) {
        block.center(text);
        block.blank();
    } else if (row.is("cardtype") || row.is("rcpt_entry_mode")) {
        block.left_right(qel::view(get(info.kvs, "cardtype")), get(info.kvs, "rcpt_entry_mode"));
    } else if (row.is("auth") || row.is("batch")) {
        block.left_right({block.label(QEL_RCPT_MSG_AUTH_NUM), qel::view(get(info.kvs, "auth")),
                          block.label(QEL_RCPT_MSG_BATCH), qel::view(get(info.kvs, "batch"))});
    } else {
        block.labelled(row.label.brief, text);
    }
}

void generate_block_reference(plain_receipt &info, const block_slot &slot)
{
    plain_block block(info);
    for_each_value(info, slot, qel_rcpt::reference_rows, [&](const row &row, const char *text) {
        add_reference_row(block, info, row, text);
    });
    add_custom_fields(block, info);
    block.store(slot);
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
    item_text quantity;
    block.left_right({name, format_item_text(quantity, "(%s)", qty), {}, qel::view(right)});
}

void line_item_add(void * /*info*/, const char *name, const char *qty, const char *price,
                   Qel_rcpt_line_item_type_t type, void *ret)
{
    plain_block &block = *static_cast<plain_block *>(ret);
    if (type == QEL_RCPT_LINE_ITEM_TYPE_NOTES)
        block.left(name);
    if (type >= std::size(line_item_forms))
        return;
    item_text name_text;
    item_text price_text;
    line_item_add_line(block, format_item_text(name_text, line_item_forms[type].name, name), qty,
                       format_item_text(price_text, line_item_forms[type].price, price));
}

void generate_block_line_items(plain_receipt &info, const block_slot &slot)
{
    plain_block block(info);
    Qel_rcpt_generate_line_items(get(info.kvs, "line_items"), &info, &info.attrs, line_item_add,
                                 &block);
    block.store(slot);
}

void add_heading(plain_block &block, Qel_rcpt_msg_t heading)
{
    block.center(heading);
    block.blank();
}

void generate_block_order_money(plain_receipt &info, const block_slot &slot)
{
    if (!Qel_rcpt_have_order_money(info.kvs))
        return;
    plain_block block(info);
    add_heading(block, QEL_RCPT_MSG_ORDER);
    for_each_value(info, slot, qel_rcpt::order_money_rows, [&](const row &row, const char *text) {
        block.labelled(row.label.brief, text);
    });
    block.store(slot);
}

// Shown also when it is zero.
void add_balance(plain_block &block, const Qel_hash_dict_t *kvs)
{
    const char *balance = get(kvs, "balance");
    if (Qel_str_isempty(balance))
        return;
    block.blank();
    block.money(QEL_RCPT_MSG_BALANCE, balance);
}

void generate_block_money(plain_receipt &info, const block_slot &slot)
{
    if (qel_rcpt::is_order_paid_in_full(info.kvs))
        return;
    plain_block block(info);
    if (Qel_rcpt_have_order_money(info.kvs))
        add_heading(block, QEL_RCPT_MSG_PAYMENT);
    for_each_value(info, slot, qel_rcpt::money_rows, [&](const row &row, const char *text) {
        if (row.is("authamount")) // with what is due after it
            block.blank();
        block.labelled(row.label.brief, text);
    });
    if (slot.is_custcopy)
        add_balance(block, info.kvs);
    block.store(slot);
}

// The result stands apart from what precedes it and what follows.
void add_disposition_row(plain_block &block, const row &row, const char *text)
{
    if (row.is("auth_mode"))
        return block.message_prefix(row.label.brief, text);
    if (row.is("printdata")) {
        block.blank();
        return block.left(text);
    }
    const bool is_result = row.is("auth_result");
    if (is_result && !block.empty())
        block.blank();
    block.center(text);
    if (is_result)
        block.blank();
}

void generate_block_disposition(plain_receipt &info, const block_slot &slot)
{
    plain_block block(info);
    for_each_value(info, slot, qel_rcpt::disposition_rows, [&](const row &row, const char *text) {
        add_disposition_row(block, row, text);
    });
    block.store(slot);
}

void generate_block_signature(plain_receipt &info, const block_slot &slot)
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
    block.store(slot);
}

// The name goes without its label, the cryptogram after its type, and a decline stands apart.
void add_emv_row(plain_block &block, const plain_receipt &info, const row &row, const char *text)
{
    if (row.is("name"))
        return block.left(text);
    if (row.is("actype")) {
        const char *cryptogram = get(info.kvs, "rcpt_emv_ac");
        if (!Qel_str_isempty(cryptogram))
            block.left_prefix(text, cryptogram);
        return;
    }
    if (row.is("ac"))
        return;
    if (row.is("odd"))
        block.blank();
    block.message_prefix(row.label.brief, text);
}

void generate_block_emv(plain_receipt &info, const block_slot &slot)
{
    plain_block block(info);
    for_each_value(info, slot, qel_rcpt::emv_rows,
                   [&](const row &row, const char *text) { add_emv_row(block, info, row, text); });
    block.store(slot);
}

void add_alternative_price(plain_block &block, const plain_receipt &info)
{
    const auto [label, amount] = qel_rcpt::get_alternative_price(info.kvs);
    if (Qel_str_isempty(amount))
        return;
    std::array<char, 256> line{};
    Qel_snprintf(line.data(), line.size(), "%s %s", block.label(label).c_str(),
                 qel::text(Qel_rcpt_format_money(amount, &info.attrs)).get());
    block.raw(line.data());
    block.blank();
}

void generate_block_notice(plain_receipt &info, const block_slot &slot)
{
    plain_block block(info);
    add_alternative_price(block, info);
    for_each_value(info, slot, qel_rcpt::notice_rows, [&](const row &row, const char *text) {
        if (!row.is("message"))
            block.blank();
        block.center(text);
    });
    block.store(slot);
}

void generate_block_notes(plain_receipt &info, const block_slot &slot)
{
    plain_block block(info);
    for_each_value(info, slot, qel_rcpt::notes_rows,
                   [&](const row & /*row*/, const char *text) { block.center(text); });
    block.store(slot);
}

constexpr qel_rcpt::block_builder<plain_receipt> block_builders[] = {
    {"merch_info", generate_block_merchinfo},
    {"reference", generate_block_reference},
    {"items", generate_block_line_items, qel_rcpt::by_symbol},
    {"order_money", generate_block_order_money},
    {"money", generate_block_money, qel_rcpt::by_language | qel_rcpt::by_balance},
    {"disposition", generate_block_disposition},
    {"signature", generate_block_signature, qel_rcpt::merch_only},
    {"emv", generate_block_emv},
    {"notice", generate_block_notice, qel_rcpt::by_copy},
    {"notes", generate_block_notes, qel_rcpt::by_nothing},
};
static_assert(qel_rcpt::makes_blocks_of("plain", block_builders));

constexpr std::size_t default_line_len = 40;
constexpr std::size_t min_line_len = 10;

} // namespace

Qel_hash_dict_t *Qel_rcpt_generate_plain(const Qel_hash_dict_t *kvs,
                                         const Qel_rcpt_config_t *config, std::size_t line_len,
                                         const char *line_break) noexcept
{
    plain_receipt info{};
    info.kvs = kvs;
    info.line_break = Qel_str_isempty(line_break) ? "\r\n" : line_break;
    info.line_len = line_len == 0 ? default_line_len : std::max(line_len, min_line_len);
    return qel_rcpt::generate_copies(info, config, block_builders);
}
