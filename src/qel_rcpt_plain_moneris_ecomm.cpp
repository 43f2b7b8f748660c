// The Moneris processor's e-commerce receipt: plain text of 70 columns, with the order's items and
// addresses from a JSON document of their own.
#include "qel_rcpt_lines.hpp"
#include "qel_rcpt_moneris_ecomm.hpp"

#include <array>
#include <cstdint>
#include <string>

using qel_rcpt::block_slot;
using qel_rcpt::get;
using qel_rcpt::key_is;
using qel_rcpt::plain_block;

namespace
{

namespace layout = qel_rcpt::moneris_ecomm;

struct ecomm_receipt : qel_rcpt::plain_receipt {
    Qel_hash_dict_t *record; // kvs, to be changed
    qel::json rcpt_data;     // the document of "moneris_rcpt_data"; absent when it is unreadable
};

qel::json read_rcpt_data(const Qel_hash_dict_t *kvs)
{
    const char *text = get(kvs, "moneris_rcpt_data");
    return qel::json(Qel_json_read(text, Qel_str_len(text), QEL_JSON_READER_REPLACE_BAD_CHARS,
                                   nullptr, nullptr, nullptr, nullptr));
}

const Qel_json_node_t *get_moneris_rcpt_node(const ecomm_receipt &info, const char *name)
{
    return Qel_json_object_value(info.rcpt_data.get(), name);
}

void generate_block_merchinfo(ecomm_receipt &info, const block_slot &slot)
{
    const Qel_hash_dict_t *kvs = info.kvs;
    const Qel_rcpt_lang_t lang = info.attrs.lang;
    plain_block block(info);
    block.center(QEL_RCPT_MSG_ONLINERCPT);
    block.blank();
    block.center(qel_rcpt::get_or_message(kvs, "merch_name", lang, QEL_RCPT_MSG_UNKNOWN_NAME));
    block.center(qel_rcpt::get_or_message(kvs, "merch_addr1", lang, QEL_RCPT_MSG_UNKNOWN_ADDR));
    block.center(get(kvs, "merch_addr2"));
    block.center(get(kvs, "merch_addr3"));
    block.blank();
    block.center(qel_rcpt::get_or_message(kvs, "merch_url", lang, QEL_RCPT_MSG_UNKNOWN_URL));
    block.store(slot);
}

// A corrected purchase shows no rows of nothing.
void remove_zero_amounts(Qel_hash_dict_t *record)
{
    for (const char *key : {"surchargeamount", "tax", "examount"}) {
        if (key_is(record, key, "0.00"))
            Qel_hash_dict_remove(record, key);
    }
}

// What the issuer and the server answered; a mere "/" without either.
void add_reference_number(plain_block &block, const Qel_hash_dict_t *kvs, const char *number)
{
    std::array<char, 256> codes{};
    Qel_snprintf(codes.data(), codes.size(), "%s/%s", get(kvs, "rcpt_issuer_resp_code"),
                 get(kvs, "rcpt_resp_code"));
    block.left_right({"REFERENCE: ", qel::view(number), "Response / ISO Code: ", codes.data()});
}

void generate_block_reference(ecomm_receipt &info, const block_slot &slot)
{
    const Qel_hash_dict_t *kvs = info.kvs;
    const qel::dict custom = qel_rcpt::parse_custom_fields(kvs);
    const char *correction_type = get(custom.get(), "correction_type");
    const char *title = qel_rcpt::get_title_moneris(kvs, info.attrs.lang, correction_type);
    if (title != nullptr && Qel_str_caseeq(correction_type, "purchase"))
        remove_zero_amounts(info.record);

    plain_block block(info);
    block.label_prefix(QEL_RCPT_MSG_TRANTYPE, title);
    block.label_prefix(QEL_RCPT_MSG_ORDER_NUM, qel_rcpt::get_nonempty(kvs, "ordernum", "custref"));
    block.left_right({block.label(QEL_RCPT_MSG_TIME),
                      qel::view(qel::text(Qel_rcpt_format_time(kvs, &info.attrs))),
                      block.label(QEL_RCPT_MSG_APPROVAL_CODE), qel::view(get(kvs, "auth"))});
    add_reference_number(block, kvs, get(custom.get(), "refnum"));
    block.store(slot);
}

// Table of items

// A line made of cells, each of a fixed number of characters.
class table_row
{
  public:
    explicit table_row(const char *start) { text(start); }

    table_row &text(const char *str)
    {
        Qel_buf_add_str(line_.get(), str);
        return *this;
    }

    // The text from the left, cut or filled up with blanks.
    table_row &cell(const char *str, std::size_t width)
    {
        Qel_buf_add_str_just(line_.get(), str, QEL_STR_JUSTIFY_LEFT_TRUNC_RIGHT, ' ', width);
        return *this;
    }

    void store(plain_block &block) const { block.raw(Qel_buf_peek(line_.get())); }

  private:
    qel::buf line_{Qel_buf_create()};
};

void add_item(plain_block &block, const Qel_json_node_t *item)
{
    table_row row("|");
    for (const layout::column &column : layout::items)
        row.text(" ").cell(Qel_json_object_value_string(item, column.name), column.width);
    row.text(layout::table_edge).store(block);
}

void add_label_and_value(plain_block &block, const char *label, const char *value)
{
    table_row(layout::to_amount_column)
        .cell(label, layout::label_width)
        .text(" ")
        .cell(value, layout::value_width)
        .text(layout::table_edge)
        .store(block);
}

void add_fee(plain_block &block, const Qel_json_node_t *fee)
{
    const auto &[name, value] = layout::fees;
    add_label_and_value(block, Qel_json_object_value_string(fee, name.name),
                        Qel_json_object_value_string(fee, value.name));
}

void add_items_table_kvs(plain_block &block, const ecomm_receipt &info, const char *key,
                         Qel_rcpt_msg_t msg)
{
    const char *value = get(info.kvs, key);
    if (!Qel_str_isempty(value))
        add_label_and_value(block, Qel_rcpt_msg_to_string(info.attrs.lang, msg), value);
}

// The layout takes the currency's name from the country's number, which many currencies share.
const char *currency_name_of_country(std::uint32_t country_code)
{
    return qel_rcpt::currency_of(country_code).name;
}

// The amount and its currency share the last column.
void add_items_table_kvs_USD(plain_block &block, const ecomm_receipt &info, const char *key,
                             Qel_rcpt_msg_t msg)
{
    const char *value = get(info.kvs, key);
    if (Qel_str_isempty(value))
        return;
    table_row(layout::to_amount_column)
        .cell(Qel_rcpt_msg_to_string(info.attrs.lang, msg), layout::label_width)
        .text(" ")
        .cell(value, layout::total_width)
        .cell(currency_name_of_country(info.attrs.country_code), layout::currency_width)
        .text(layout::table_edge)
        .store(block);
}

void add_each(plain_block &block, const Qel_json_node_t *array,
              void (*add)(plain_block &block, const Qel_json_node_t *element))
{
    for (std::size_t i = 0; i < Qel_json_array_len(array); ++i)
        add(block, Qel_json_array_at(array, i));
}

void generate_block_items(ecomm_receipt &info, const block_slot &slot)
{
    const Qel_hash_dict_t *kvs = info.kvs;
    plain_block block(info);
    block.raw(layout::table_rule);
    block.raw(layout::table_heading);
    add_each(block, get_moneris_rcpt_node(info, "items"), add_item);
    add_each(block, get_moneris_rcpt_node(info, "fees"), add_fee);
    if (!key_is(kvs, "action_trans", "reversal")) {
        add_items_table_kvs(block, info, "surchargeamount", QEL_RCPT_MSG_SURCHARGE);
        add_items_table_kvs(block, info, "tax", QEL_RCPT_MSG_TAX);
        add_items_table_kvs(block, info, "examount", QEL_RCPT_MSG_TIP);
    }
    add_items_table_kvs_USD(block, info, "amount",
                            key_is(kvs, "action_trans", "preauth") ? QEL_RCPT_MSG_AUTH_AMOUNT
                                                                   : QEL_RCPT_MSG_TOTAL);
    block.raw(layout::table_rule);
    block.store(slot);
}

// Addresses

void generate_block_customer_info(ecomm_receipt &info, const block_slot &slot)
{
    const bool is_recurring = Qel_str_eq(get(info.kvs, "recurring"), "recurring");
    const Qel_json_node_t *customer = get_moneris_rcpt_node(info, "customer");
    plain_block block(info);
    block.raw("Customer Information");
    block.raw(is_recurring ? "                                   Ship To:"
                           : "Bill To:                           Ship To:");
    for (const auto &[bill_column, ship_column] : layout::addresses) {
        const char *bill =
            is_recurring ? nullptr : Qel_json_object_value_string(customer, bill_column.name);
        const char *ship = Qel_json_object_value_string(customer, ship_column.name);
        if (!Qel_str_isempty(bill) || !Qel_str_isempty(ship))
            table_row("")
                .cell(bill, bill_column.width)
                .text(" ")
                .cell(ship, ship_column.width)
                .store(block);
    }
    block.store(slot);
}

void generate_block_refund_policy(ecomm_receipt &info, const block_slot &slot)
{
    plain_block block(info);
    block.center("RETURNS & REFUND POLICY");
    block.center(Qel_json_object_value_string(info.rcpt_data.get(), "policy"));
    block.store(slot);
}

constexpr qel_rcpt::block_builder<ecomm_receipt> block_builders[] = {
    {"merch_info", generate_block_merchinfo},
    {"reference", generate_block_reference},
    {"line_items", generate_block_items},
    {"customer_info", generate_block_customer_info, qel_rcpt::by_nothing},
    {"refund_policy", generate_block_refund_policy, qel_rcpt::by_nothing},
};
static_assert(qel_rcpt::makes_blocks_of("moneris-ecomm", block_builders));

} // namespace

Qel_hash_dict_t *Qel_rcpt_generate_plain_moneris_ecomm(Qel_hash_dict_t *kvs,
                                                       const Qel_rcpt_config_t *config) noexcept
{
    ecomm_receipt info{};
    info.kvs = kvs;
    info.record = kvs;
    info.rcpt_data = read_rcpt_data(kvs);
    info.line_break = "\r\n";
    info.line_len = 70;
    return qel_rcpt::generate_copies(info, config, block_builders);
}
