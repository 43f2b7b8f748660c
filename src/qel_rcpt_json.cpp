// The JSON receipt: a block is an object, its values are members that hold texts.
#include "qel_rcpt_frame.hpp"
#include "qel_rcpt_rows.hpp"
#include "qel_rcpt_rules.hpp"

using qel_rcpt::block_slot;
using qel_rcpt::row;

namespace
{

using Qel_rcpt_json_t = qel_rcpt::receipt;

// Adds nothing for an absent value.
void add_value(Qel_json_node_t *object, const char *name, const char *value)
{
    Qel_json_object_insert_string(object, name, value);
}

void add_rows(const Qel_rcpt_json_t &info, const block_slot &slot, std::span<const row> rows,
              Qel_json_node_t *object)
{
    qel_rcpt::for_each_value(
        info, slot, rows, qel_rcpt::in_data,
        [&](const row &row, const char *text) { add_value(object, row.name, text); });
}

void add_block(const Qel_rcpt_json_t &info, const block_slot &slot, const qel::json &node)
{
    if (Qel_json_object_num_children(node.get()) == 0)
        return;
    const qel::text written(Qel_json_write(node.get(), QEL_JSON_WRITER_PRETTYPRINT_SPACE, nullptr));
    Qel_hash_dict_insert(info.blocks, slot.key, written.get());
}

void generate_rows_block(const Qel_rcpt_json_t &info, const block_slot &slot,
                         std::span<const row> rows)
{
    const qel::json object(Qel_json_node_create(QEL_JSON_TYPE_OBJECT));
    add_rows(info, slot, rows, object.get());
    add_block(info, slot, object);
}

void generate_block_merchinfo(Qel_rcpt_json_t &info, const block_slot &slot)
{
    const qel::json object(Qel_json_node_create(QEL_JSON_TYPE_OBJECT));
    qel_rcpt::for_each_merchant_value(
        info, [&](const char *name, const char *text) { add_value(object.get(), name, text); });
    add_block(info, slot, object);
}

// As the record has them: a reader of data wants the merchant's own names.
void add_custom_fields(const Qel_rcpt_json_t &info, Qel_json_node_t *reference)
{
    const qel::dict fields = qel_rcpt::parse_custom_fields(info.kvs);
    if (Qel_hash_dict_num_keys(fields.get()) == 0)
        return;
    qel::json custom(Qel_json_node_create(QEL_JSON_TYPE_OBJECT));
    for (const auto [name, value] : qel::pairs(fields.get()))
        add_value(custom.get(), name, value);
    Qel_json_object_insert(reference, "rcpt_custom", custom.release());
}

void generate_block_reference(Qel_rcpt_json_t &info, const block_slot &slot)
{
    const qel::json object(Qel_json_node_create(QEL_JSON_TYPE_OBJECT));
    add_rows(info, slot, qel_rcpt::reference_rows, object.get());
    add_custom_fields(info, object.get());
    add_block(info, slot, object);
}

void line_item_add(void * /*info*/, const char *name, const char *qty, const char *price,
                   Qel_rcpt_line_item_type_t type, void *ret)
{
    qel::json item(Qel_json_node_create(QEL_JSON_TYPE_OBJECT));
    add_value(item.get(), "name", name);
    add_value(item.get(), "qty", qty);
    add_value(item.get(), "price", price);
    add_value(item.get(), "type", Qel_rcpt_line_item_type_to_str(type));
    Qel_json_array_insert(static_cast<Qel_json_node_t *>(ret), item.release());
}

void generate_block_line_items(Qel_rcpt_json_t &info, const block_slot &slot)
{
    const qel::json items(Qel_json_node_create(QEL_JSON_TYPE_ARRAY));
    Qel_rcpt_generate_line_items(qel_rcpt::get(info.kvs, "line_items"), &info, &info.attrs,
                                 line_item_add, items.get());
    add_block(info, slot, items);
}

void generate_block_order_money(Qel_rcpt_json_t &info, const block_slot &slot)
{
    generate_rows_block(info, slot, qel_rcpt::order_money_rows);
}

void generate_block_money(Qel_rcpt_json_t &info, const block_slot &slot)
{
    generate_rows_block(info, slot, qel_rcpt::money_rows);
}

void generate_block_disposition(Qel_rcpt_json_t &info, const block_slot &slot)
{
    generate_rows_block(info, slot, qel_rcpt::disposition_rows);
}

void generate_block_signature(Qel_rcpt_json_t &info, const block_slot &slot)
{
    generate_rows_block(info, slot, qel_rcpt::signature_rows);
}

void generate_block_emv(Qel_rcpt_json_t &info, const block_slot &slot)
{
    generate_rows_block(info, slot, qel_rcpt::emv_rows);
}

void generate_block_notice(Qel_rcpt_json_t &info, const block_slot &slot)
{
    generate_rows_block(info, slot, qel_rcpt::notice_rows);
}

void generate_block_notes(Qel_rcpt_json_t &info, const block_slot &slot)
{
    generate_rows_block(info, slot, qel_rcpt::notes_rows);
}

constexpr qel_rcpt::block_builder<Qel_rcpt_json_t> block_builders[] = {
    {"merch_info", generate_block_merchinfo},
    {"reference", generate_block_reference},
    {"items", generate_block_line_items, qel_rcpt::by_symbol},
    {"order_money", generate_block_order_money, qel_rcpt::by_symbol},
    {"money", generate_block_money, qel_rcpt::by_symbol | qel_rcpt::by_balance},
    {"disposition", generate_block_disposition},
    {"signature", generate_block_signature, qel_rcpt::merch_only},
    {"emv", generate_block_emv, qel_rcpt::by_nothing},
    {"notice", generate_block_notice, qel_rcpt::by_copy},
    {"notes", generate_block_notes, qel_rcpt::by_nothing},
};
static_assert(qel_rcpt::makes_blocks_of("json", block_builders));

} // namespace

Qel_hash_dict_t *Qel_rcpt_generate_json(const Qel_hash_dict_t *kvs,
                                        const Qel_rcpt_config_t *config) noexcept
{
    Qel_rcpt_json_t info{};
    info.kvs = kvs;
    return qel_rcpt::generate_copies(info, config, block_builders);
}
