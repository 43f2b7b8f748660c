// The HTML receipt: a fragment for each block, on whose ids and classes a style sheet selects.
#include "qel_rcpt_frame.hpp"
#include "qel_rcpt_rows.hpp"
#include "qel_rcpt_rules.hpp"

#include <array>
#include <iterator>
#include <span>
#include <string>
#include <utility>

using qel_rcpt::block_slot;
using qel_rcpt::get;
using qel_rcpt::html_tags;
using qel_rcpt::row;

namespace
{

struct Qel_rcpt_html_t : qel_rcpt::receipt {
    qel::xml_doc document; // of all blocks, so that they share its memory
};

// Elements

// A block in the making.
struct html_block {
    const Qel_rcpt_html_t &info;
    Qel_xml_node_t *element;

    const char *message(Qel_rcpt_msg_t msg) const
    {
        return Qel_rcpt_msg_to_string(info.attrs.lang, msg);
    }
};

// The tag outlives the document: it is a constant.
Qel_xml_node_t *add_element(Qel_xml_node_t *parent, const char *tag, const char *text = nullptr)
{
    return Qel_xml_create_element_from_tag(tag, text, parent);
}

html_block create_block(const Qel_rcpt_html_t &info, const char *tag)
{
    return {info, add_element(info.document.get(), tag)};
}

// Without a text it still gets an end tag: HTML has no self-closed spans.
void add_span(Qel_xml_node_t *parent, const char *tag, const char *text)
{
    add_element(parent, tag, Qel_str_safe(text));
}

// A value that stands alone; nothing without one.
void add_val(const html_block &block, const html_tags &tags, const char *value)
{
    if (!Qel_str_isempty(value))
        add_element(block.element, tags.alone.data(), value);
}

// A value with its label, which may be absent; nothing without a value.
void add_group(const html_block &block, const html_tags &tags, const char *label, const char *value)
{
    if (Qel_str_isempty(value))
        return;
    Qel_xml_node_t *group = add_element(block.element, tags.group.data());
    add_span(group, tags.label.data(), label);
    add_span(group, tags.value.data(), value);
}

// What HTML writes in another way than XML: it has no name for the apostrophe, and a reference to a
// carriage return is an error.
constexpr std::pair<const char *, const char *> references[] = {
    {"&apos;", "&#39;"}, {"&#13;\n", "\n"}, {"&#13;", "\n"}};

qel::text as_html(qel::text xml, std::size_t len)
{
    if (std::string_view(xml.get(), len).find('&') == std::string_view::npos)
        return xml;
    for (const auto &[reference, text] : references) {
        if (std::string_view(xml.get()).find(reference) != std::string_view::npos)
            xml.reset(Qel_strdup_replace_str(xml.get(), reference, text));
    }
    return xml;
}

// Stores the block for the copy, unless nothing is in it.
void add_block(const html_block &block, const block_slot &slot)
{
    if (Qel_xml_node_num_children(block.element) == 0)
        return;
    std::size_t len = 0;
    qel::text xml(Qel_xml_write(block.element, QEL_XML_WRITER_PRETTYPRINT_SPACE, &len));
    const qel::text html = as_html(std::move(xml), len);
    Qel_hash_dict_insert(block.info.blocks, slot.key, html.get());
}

template <typename Show>
void for_each_value(const html_block &block, const block_slot &slot, std::span<const row> rows,
                    Show show)
{
    qel_rcpt::for_each_value(block.info, slot, rows, qel_rcpt::in_html, show);
}

void add_group(const html_block &block, const row &row, const char *text)
{
    add_group(block, row.html, block.message(row.label.full), text);
}

// Values without a label stand alone.
void add_rows(const html_block &block, const block_slot &slot, std::span<const row> rows)
{
    for_each_value(block, slot, rows, [&](const row &row, const char *text) {
        if (row.label.full == QEL_RCPT_MSG_NONE)
            add_val(block, row.html, text);
        else
            add_group(block, row, text);
    });
}

// All in groups, those without a label too.
void add_groups(const html_block &block, const block_slot &slot, std::span<const row> rows)
{
    for_each_value(block, slot, rows,
                   [&](const row &row, const char *text) { add_group(block, row, text); });
}

// Blocks

void generate_block_merchinfo(Qel_rcpt_html_t &info, const block_slot &slot)
{
    const html_block block =
        create_block(info, R"(div id="rcpt_merch_info" class="rcpt_block merch_info merch info")");
    for (const qel_rcpt::merchant_field &field : qel_rcpt::merchant_fields)
        add_val(block, field.html,
                qel_rcpt::get_or_message(info.kvs, field.key, info.attrs.lang, field.missing));
    add_block(block, slot);
}

// An element with an id and a class that the record has a part in.
Qel_xml_node_t *add_custom_element(Qel_xml_node_t *parent, const char *name, const std::string &id,
                                   const char *class_name, const char *text)
{
    Qel_xml_node_t *element = Qel_xml_create_element_with_text(name, text, 0, parent);
    Qel_xml_node_insert_attribute(element, "id", id.c_str(), 0, true);
    Qel_xml_node_insert_attribute(element, "class", class_name, 0, true);
    return element;
}

void add_custom_field(const html_block &block, const char *name, const char *value)
{
    if (Qel_str_isempty(value))
        return;
    std::array<char, 64> cut{};
    Qel_snprintf(cut.data(), cut.size(), "custom_%s", qel_rcpt::clean_field_name(name).get());
    const std::string id(cut.data());
    Qel_xml_node_t *group =
        add_custom_element(block.element, "div", id + "_group", "rcpt_group custom", nullptr);
    add_custom_element(group, "span", id + "_label", "rcpt_group_label", Qel_str_safe(name));
    add_custom_element(group, "span", id, "rcpt_group_val", value);
}

void add_custom_fields(const html_block &block)
{
    const qel::dict fields = qel_rcpt::get_custom_fields(block.info.kvs);
    for (const auto [name, value] : qel::pairs(fields.get()))
        add_custom_field(block, name, value);
}

void generate_block_reference(Qel_rcpt_html_t &info, const block_slot &slot)
{
    const html_block block =
        create_block(info, R"(div id="rcpt_reference" class="rcpt_block reference")");
    add_rows(block, slot, qel_rcpt::reference_rows);
    add_custom_fields(block);
    add_block(block, slot);
}

// How a line item looks: its tag, and the format of its price where it has one.
struct line_item_form {
    const char *tag = "div";
    const char *price;
};

// By Qel_rcpt_line_item_type_t.
constexpr line_item_form line_item_forms[] = {
    {R"(div class="rcpt_group item")", "%s"},
    {R"(div class="rcpt_group addon")", "%s"},
    {R"(div class="rcpt_group item_discount_percent")", "- %s%%"},
    {R"(div class="rcpt_group item_discount_fixed")", "- %s"},
    {R"(div class="rcpt_group order_discount_percent")", "- %s%%"},
    {R"(div class="rcpt_group order_discount_fixed")", "- %s"},
    {R"(div class="rcpt_group order_discount_percent cashdiscount")", "- %s%%"},
    {R"(div class="rcpt_group item notes")", nullptr},
};

void add_item_span(Qel_xml_node_t *parent, const char *tag, const char *fmt, const char *text)
{
    std::array<char, 256> shown{};
    Qel_snprintf(shown.data(), shown.size(), fmt, text);
    add_span(parent, tag, shown.data());
}

void line_item_add(void * /*vinfo*/, const char *name, const char *qty, const char *price,
                   Qel_rcpt_line_item_type_t type, void *vret)
{
    const line_item_form form =
        type < std::size(line_item_forms) ? line_item_forms[type] : line_item_form{};
    Qel_xml_node_t *group = add_element(static_cast<Qel_xml_node_t *>(vret), form.tag);

    Qel_xml_node_t *what = add_element(group, "span");
    add_span(what, R"(span class="rcpt_group_label name")", name);
    if (!Qel_str_isempty(qty) && !Qel_str_eq(qty, "1"))
        add_item_span(what, R"(span class="rcpt_group_label qty")", "x%s", qty);
    if (form.price != nullptr)
        add_item_span(group, R"(span class="rcpt_group_val price")", form.price, price);
}

void generate_block_line_items(Qel_rcpt_html_t &info, const block_slot &slot)
{
    const html_block block = create_block(info, R"(div id="rcpt_items" class="rcpt_block items")");
    Qel_rcpt_generate_line_items(get(info.kvs, "line_items"), &info, &info.attrs, line_item_add,
                                 block.element);
    add_block(block, slot);
}

void generate_block_order_money(Qel_rcpt_html_t &info, const block_slot &slot)
{
    if (!Qel_rcpt_have_order_money(info.kvs))
        return;
    const html_block block =
        create_block(info, R"(div id="rcpt_order_money" class="rcpt_block order_money")");
    if (Qel_rcpt_is_order_parital_payment(info.kvs))
        add_element(block.element,
                    R"(div id="rcpt_order_money_heading" class="money_heading rcpt_title")",
                    block.message(QEL_RCPT_MSG_ORDER));
    add_rows(block, slot, qel_rcpt::order_money_rows);
    add_block(block, slot);
}

// The discounts of a payment are cut at 31 bytes.
void add_money(const html_block &block, const row &row, const char *text)
{
    if (!row.is("discountamount") && !row.is("cash_discount"))
        return add_group(block, row, text);
    std::array<char, 32> shown{};
    Qel_snprintf(shown.data(), shown.size(), "%s", text);
    add_group(block, row, shown.data());
}

void generate_block_money(Qel_rcpt_html_t &info, const block_slot &slot)
{
    if (qel_rcpt::is_order_paid_in_full(info.kvs))
        return;
    const html_block block = create_block(info, R"(div id="rcpt_money" class="rcpt_block money")");
    if (Qel_rcpt_have_order_money(info.kvs))
        add_element(block.element,
                    R"(div id="rcpt_money_heading" class="money_heading rcpt_title")",
                    block.message(QEL_RCPT_MSG_PAYMENT));
    for_each_value(block, slot, qel_rcpt::money_rows,
                   [&](const row &row, const char *text) { add_money(block, row, text); });
    add_block(block, slot);
}

void generate_block_disposition(Qel_rcpt_html_t &info, const block_slot &slot)
{
    const html_block block =
        create_block(info, R"(div id="rcpt_disposition" class="rcpt_block disposition")");
    for_each_value(block, slot, qel_rcpt::disposition_rows, [&](const row &row, const char *text) {
        if (row.is("auth_mode"))
            add_group(block, row.html, "Mode", text); // in any language
        else
            add_val(block, row.html, text);
    });
    add_block(block, slot);
}

void generate_block_signature(Qel_rcpt_html_t &info, const block_slot &slot)
{
    const html_block block =
        create_block(info, R"(div id="rcpt_signature" class="rcpt_block signature")");
    add_rows(block, slot, qel_rcpt::signature_rows);
    add_block(block, slot);
}

void generate_block_emv(Qel_rcpt_html_t &info, const block_slot &slot)
{
    const html_block block = create_block(info, R"(div id="rcpt_emv" class="rcpt_block emv")");
    add_rows(block, slot, qel_rcpt::emv_rows);
    add_block(block, slot);
}

void generate_block_notice(Qel_rcpt_html_t &info, const block_slot &slot)
{
    const html_block block =
        create_block(info, R"(div id="rcpt_notice" class="rcpt_block notice")");
    const auto [label, price] = qel_rcpt::get_alternative_price(info.kvs);
    static constexpr html_tags tags("alt_price", "alt_price");
    add_group(block, tags, block.message(label),
              qel::text(Qel_rcpt_format_money(price, &info.attrs)).get());
    add_groups(block, slot, qel_rcpt::notice_rows);
    add_block(block, slot);
}

void generate_block_notes(Qel_rcpt_html_t &info, const block_slot &slot)
{
    const html_block block = create_block(info, R"(div id="rcpt_notes" class="rcpt_block notes")");
    add_groups(block, slot, qel_rcpt::notes_rows);
    add_block(block, slot);
}

constexpr qel_rcpt::block_builder<Qel_rcpt_html_t> block_builders[] = {
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
static_assert(qel_rcpt::makes_blocks_of("html", block_builders));

} // namespace

Qel_hash_dict_t *Qel_rcpt_generate_html(const Qel_hash_dict_t *kvs,
                                        const Qel_rcpt_config_t *config) noexcept
{
    Qel_rcpt_html_t info{};
    info.kvs = kvs;
    info.document.reset(Qel_xml_create_doc());
    return qel_rcpt::generate_copies(info, config, block_builders);
}
