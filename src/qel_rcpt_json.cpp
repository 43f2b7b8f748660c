// The JSON receipt: a block is an object, its values are members that hold texts.
#include "qel_rcpt_values.hpp"

using qel_rcpt::block_copies;
using qel_rcpt::block_place;

namespace
{

struct Qel_rcpt_json_t {
    Qel_hash_dict_t *blocks;
    const Qel_hash_dict_t *kvs;
    Qel_rcpt_attrs_t attrs;
};

// Adds nothing for an absent value.
void add_value(void *object, const char *name, const char *value)
{
    Qel_json_object_insert_string(static_cast<Qel_json_node_t *>(object), name, value);
}

qel::json create_block(const Qel_rcpt_json_t &info, const qel_rcpt::value_block &block,
                       bool is_custcopy)
{
    qel::json object(Qel_json_node_create(QEL_JSON_TYPE_OBJECT));
    block.add_values({info.kvs, info.attrs, is_custcopy, object.get(), add_value});
    return object;
}

void add_block(const Qel_rcpt_json_t &info, const block_place &place, const qel::json &node)
{
    if (Qel_json_object_num_children(node.get()) == 0)
        return;
    const qel::text written(Qel_json_write(node.get(), QEL_JSON_WRITER_PRETTYPRINT_SPACE, nullptr));
    Qel_hash_dict_insert(info.blocks, place.key, written.get());
}

template <const qel_rcpt::value_block &Block>
void generate_block(Qel_rcpt_json_t &info, const block_place &place)
{
    add_block(info, place, create_block(info, Block, place.is_custcopy));
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

void generate_block_reference(Qel_rcpt_json_t &info, const block_place &place)
{
    const qel::json object = create_block(info, qel_rcpt::reference_block, place.is_custcopy);
    add_custom_fields(info, object.get());
    add_block(info, place, object);
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

void generate_block_line_items(Qel_rcpt_json_t &info, const block_place &place)
{
    const qel::json items(Qel_json_node_create(QEL_JSON_TYPE_ARRAY));
    Qel_rcpt_generate_line_items(qel_rcpt::get(info.kvs, "line_items"), &info, &info.attrs,
                                 line_item_add, items.get());
    add_block(info, place, items);
}

constexpr qel_rcpt::block_builder<Qel_rcpt_json_t> block_builders[] = {
    {qel_rcpt::merchinfo_block.name, generate_block<qel_rcpt::merchinfo_block>},
    {qel_rcpt::reference_block.name, generate_block_reference},
    {"items", generate_block_line_items},
    {qel_rcpt::order_money_block.name, generate_block<qel_rcpt::order_money_block>},
    {qel_rcpt::money_block.name, generate_block<qel_rcpt::money_block>,
     block_copies::alike_without_balance},
    {qel_rcpt::disposition_block.name, generate_block<qel_rcpt::disposition_block>},
    {qel_rcpt::signature_block.name, generate_block<qel_rcpt::signature_block>,
     block_copies::merch_only},
    {qel_rcpt::emv_block.name, generate_block<qel_rcpt::emv_block>},
    {qel_rcpt::notice_block.name, generate_block<qel_rcpt::notice_block>, block_copies::differing},
    {qel_rcpt::notes_block.name, generate_block<qel_rcpt::notes_block>},
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
