// The XML receipt: a block is an element, its values are elements in it.
#include "qel_rcpt_frame.hpp"
#include "qel_rcpt_rows.hpp"
#include "qel_rcpt_rules.hpp"

using qel_rcpt::block_slot;
using qel_rcpt::row;

namespace
{

struct Qel_rcpt_xml_t : qel_rcpt::receipt {
    qel::xml_doc document; // of all blocks, so that they share its memory
};

// The name outlives the document: it is a constant.
Qel_xml_node_t *add_element(Qel_xml_node_t *parent, const char *name, const char *text = nullptr)
{
    return Qel_xml_create_element_from_tag(name, text, parent);
}

void add_rows(const Qel_rcpt_xml_t &info, const block_slot &slot, std::span<const row> rows,
              Qel_xml_node_t *element)
{
    qel_rcpt::for_each_value(
        info, slot, rows, qel_rcpt::in_data,
        [&](const row &row, const char *text) { add_element(element, row.name, text); });
}

void add_block(const Qel_rcpt_xml_t &info, const block_slot &slot, const Qel_xml_node_t *element)
{
    if (Qel_xml_node_num_children(element) == 0)
        return;
    const qel::text written(Qel_xml_write(element, QEL_XML_WRITER_PRETTYPRINT_SPACE, nullptr));
    Qel_hash_dict_insert(info.blocks, slot.key, written.get());
}

void generate_rows_block(const Qel_rcpt_xml_t &info, const block_slot &slot, const char *name,
                         std::span<const row> rows)
{
    Qel_xml_node_t *element = add_element(info.document.get(), name);
    add_rows(info, slot, rows, element);
    add_block(info, slot, element);
}

void generate_block_merchinfo(Qel_rcpt_xml_t &info, const block_slot &slot)
{
    Qel_xml_node_t *element = add_element(info.document.get(), "merch_info");
    qel_rcpt::for_each_merchant_value(
        info, [&](const char *name, const char *text) { add_element(element, name, text); });
    add_block(info, slot, element);
}

void add_custom_fields(const Qel_rcpt_xml_t &info, Qel_xml_node_t *reference)
{
    const qel::dict fields = qel_rcpt::get_custom_fields(info.kvs);
    if (Qel_hash_dict_num_keys(fields.get()) == 0)
        return;
    Qel_xml_node_t *custom = add_element(reference, "rcpt_custom");
    for (const auto [name, value] : qel::pairs(fields.get()))
        Qel_xml_create_element_with_text(qel_rcpt::clean_field_name(name).get(), value, 0, custom);
}

void generate_block_reference(Qel_rcpt_xml_t &info, const block_slot &slot)
{
    Qel_xml_node_t *element = add_element(info.document.get(), "reference");
    add_rows(info, slot, qel_rcpt::reference_rows, element);
    add_custom_fields(info, element);
    add_block(info, slot, element);
}

void line_item_add(void * /*info*/, const char *name, const char *qty, const char *price,
                   Qel_rcpt_line_item_type_t type, void *ret)
{
    Qel_xml_node_t *item = add_element(static_cast<Qel_xml_node_t *>(ret), "item");
    add_element(item, "name", name);
    add_element(item, "qty", qty);
    add_element(item, "price", price);
    add_element(item, "type", Qel_rcpt_line_item_type_to_str(type));
}

void generate_block_line_items(Qel_rcpt_xml_t &info, const block_slot &slot)
{
    Qel_xml_node_t *items = add_element(info.document.get(), "items");
    Qel_rcpt_generate_line_items(qel_rcpt::get(info.kvs, "line_items"), &info, &info.attrs,
                                 line_item_add, items);
    add_block(info, slot, items);
}

void generate_block_order_money(Qel_rcpt_xml_t &info, const block_slot &slot)
{
    generate_rows_block(info, slot, "order_money", qel_rcpt::order_money_rows);
}

void generate_block_money(Qel_rcpt_xml_t &info, const block_slot &slot)
{
    generate_rows_block(info, slot, "money", qel_rcpt::money_rows);
}

void generate_block_disposition(Qel_rcpt_xml_t &info, const block_slot &slot)
{
    generate_rows_block(info, slot, "disposition", qel_rcpt::disposition_rows);
}

void generate_block_signature(Qel_rcpt_xml_t &info, const block_slot &slot)
{
    generate_rows_block(info, slot, "signature", qel_rcpt::signature_rows);
}

void generate_block_emv(Qel_rcpt_xml_t &info, const block_slot &slot)
{
    generate_rows_block(info, slot, "emv", qel_rcpt::emv_rows);
}

void generate_block_notice(Qel_rcpt_xml_t &info, const block_slot &slot)
{
    generate_rows_block(info, slot, "notice", qel_rcpt::notice_rows);
}

void generate_block_notes(Qel_rcpt_xml_t &info, const block_slot &slot)
{
    generate_rows_block(info, slot, "notes", qel_rcpt::notes_rows);
}

constexpr qel_rcpt::block_builder<Qel_rcpt_xml_t> block_builders[] = {
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
