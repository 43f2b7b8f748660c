// The XML receipt: a block is an element, its values are elements in it.
#include "qel_rcpt_values.hpp"

using qel_rcpt::block_copies;
using qel_rcpt::block_place;

namespace
{

struct Qel_rcpt_xml_t {
    Qel_hash_dict_t *blocks;
    const Qel_hash_dict_t *kvs;
    Qel_rcpt_attrs_t attrs;
    qel::xml_doc document; // of all blocks, so that they share its memory
};

void add_value(void *element, const char *name, const char *value)
{
    Qel_xml_create_element_with_text(name, value, 0, static_cast<Qel_xml_node_t *>(element));
}

Qel_xml_node_t *create_block(const Qel_rcpt_xml_t &info, const qel_rcpt::value_block &block,
                             bool is_custcopy)
{
    Qel_xml_node_t *element = Qel_xml_create_element(block.name, info.document.get());
    block.add_values({info.kvs, info.attrs, is_custcopy, element, add_value});
    return element;
}

void add_block(const Qel_rcpt_xml_t &info, const block_place &place, const Qel_xml_node_t *element)
{
    if (Qel_xml_node_num_children(element) == 0)
        return;
    const qel::text written(Qel_xml_write(element, QEL_XML_WRITER_PRETTYPRINT_SPACE, nullptr));
    Qel_hash_dict_insert(info.blocks, place.key, written.get());
}

template <const qel_rcpt::value_block &Block>
void generate_block(Qel_rcpt_xml_t &info, const block_place &place)
{
    add_block(info, place, create_block(info, Block, place.is_custcopy));
}

void add_custom_fields(const Qel_rcpt_xml_t &info, Qel_xml_node_t *reference)
{
    const qel::dict fields = qel_rcpt::get_custom_fields(info.kvs);
    if (Qel_hash_dict_num_keys(fields.get()) == 0)
        return;
    Qel_xml_node_t *custom = Qel_xml_create_element("rcpt_custom", reference);
    for (const auto [name, value] : qel::pairs(fields.get()))
        add_value(custom, qel_rcpt::clean_field_name(name).get(), value);
}

void generate_block_reference(Qel_rcpt_xml_t &info, const block_place &place)
{
    Qel_xml_node_t *element = create_block(info, qel_rcpt::reference_block, place.is_custcopy);
    add_custom_fields(info, element);
    add_block(info, place, element);
}

void line_item_add(void * /*info*/, const char *name, const char *qty, const char *price,
                   Qel_rcpt_line_item_type_t type, void *ret)
{
    Qel_xml_node_t *item = Qel_xml_create_element("item", static_cast<Qel_xml_node_t *>(ret));
    add_value(item, "name", name);
    add_value(item, "qty", qty);
    add_value(item, "price", price);
    add_value(item, "type", Qel_rcpt_line_item_type_to_str(type));
}

void generate_block_line_items(Qel_rcpt_xml_t &info, const block_place &place)
{
    Qel_xml_node_t *items = Qel_xml_create_element("items", info.document.get());
    Qel_rcpt_generate_line_items(qel_rcpt::get(info.kvs, "line_items"), &info, &info.attrs,
                                 line_item_add, items);
    add_block(info, place, items);
}

constexpr qel_rcpt::block_builder<Qel_rcpt_xml_t> block_builders[] = {
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
static_assert(qel_rcpt::makes_blocks_of("xml", block_builders));

} // namespace

Qel_hash_dict_t *Qel_rcpt_generate_xml(const Qel_hash_dict_t *kvs,
                                       const Qel_rcpt_config_t *config) noexcept
{
    Qel_rcpt_xml_t info{};
    info.kvs = kvs;
    info.document.reset(Qel_xml_create_doc());
    return qel_rcpt::generate_copies(info, config, block_builders);
}
