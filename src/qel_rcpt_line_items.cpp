// The line items of an order.
#include "qel_rcpt_rules.hpp"

#include <span>
#include <vector>

namespace
{

struct line_item_kind {
    const char *word;
    Qel_rcpt_line_item_type_t type;
};

constexpr line_item_kind top_kinds[] = {
    {"item", QEL_RCPT_LINE_ITEM_TYPE_ITEM},
    {"addon", QEL_RCPT_LINE_ITEM_TYPE_ITEM_ADDON},
    {"discount_fixed", QEL_RCPT_LINE_ITEM_TYPE_ORDER_DISC_FIXED},
    {"discount_percent", QEL_RCPT_LINE_ITEM_TYPE_ORDER_DISC_PERCENT},
    {"cashdiscount", QEL_RCPT_LINE_ITEM_TYPE_ORDER_DISC_CASH},
};

constexpr line_item_kind modifier_kinds[] = {
    {"addon", QEL_RCPT_LINE_ITEM_TYPE_ITEM_ADDON},
    {"item", QEL_RCPT_LINE_ITEM_TYPE_ITEM_ADDON},
    {"discount_fixed", QEL_RCPT_LINE_ITEM_TYPE_ITEM_DISC_FIXED},
    {"discount_percent", QEL_RCPT_LINE_ITEM_TYPE_ITEM_DISC_PERCENT},
};

Qel_rcpt_line_item_type_t get_line_item_type(const char *word, bool is_modifier)
{
    const std::span<const line_item_kind> kinds =
        is_modifier ? std::span<const line_item_kind>(modifier_kinds) : top_kinds;
    for (const line_item_kind &kind : kinds) {
        if (Qel_str_caseeq(word, kind.word))
            return kind.type;
    }
    return QEL_RCPT_LINE_ITEM_TYPE_ITEM;
}

// Percentages are shown as they are, and so is a cash discount, which is one.
bool is_money(Qel_rcpt_line_item_type_t type)
{
    return type != QEL_RCPT_LINE_ITEM_TYPE_ITEM_DISC_PERCENT &&
           type != QEL_RCPT_LINE_ITEM_TYPE_ORDER_DISC_PERCENT &&
           type != QEL_RCPT_LINE_ITEM_TYPE_ORDER_DISC_CASH;
}

// Recursion is bounded by the nesting that the JSON reader accepts.
void generate_line_items_item(void *info, const Qel_rcpt_attrs_t *attrs,
                              const Qel_json_node_t *item, bool is_modifier, line_item_add_cb cb,
                              void *ret)
{
    const char *name = Qel_json_object_value_string(item, "name");
    if (Qel_str_isempty(name))
        return;

    const Qel_rcpt_line_item_type_t type =
        get_line_item_type(Qel_json_object_value_string(item, "type"), is_modifier);
    const char *price = Qel_json_object_value_string(item, "price");
    const qel::text price_text(is_money(type) ? Qel_rcpt_format_money(price, attrs)
                                              : Qel_strdup(price));
    cb(info, name, Qel_json_object_value_string(item, "qty"), price_text.get(), type, ret);

    const char *notes = Qel_json_object_value_string(item, "notes");
    if (!Qel_str_isempty(notes))
        cb(info, notes, nullptr, nullptr, QEL_RCPT_LINE_ITEM_TYPE_NOTES, ret);

    const Qel_json_node_t *modifiers = Qel_json_object_value(item, "modifiers");
    for (std::size_t i = 0; i < Qel_json_array_len(modifiers); ++i)
        generate_line_items_item(info, attrs, Qel_json_array_at(modifiers, i), true, cb, ret);
}

bool is_order_discount(const Qel_json_node_t *item)
{
    return Qel_str_caseeq_start(Qel_json_object_value_string(item, "type"), "discount");
}

} // namespace

void Qel_rcpt_generate_line_items(const char *items, void *info, const Qel_rcpt_attrs_t *attrs,
                                  line_item_add_cb cb, void *ret) noexcept
{
    const qel::json root(Qel_json_read(items, Qel_str_len(items), QEL_JSON_READER_REPLACE_BAD_CHARS,
                                       nullptr, nullptr, nullptr, nullptr));
    if (Qel_json_node_type(root.get()) != QEL_JSON_TYPE_ARRAY || cb == nullptr)
        return;

    // Discounts on the whole order come after what they are taken from.
    std::vector<const Qel_json_node_t *> discounts;
    for (std::size_t i = 0; i < Qel_json_array_len(root.get()); ++i) {
        const Qel_json_node_t *item = Qel_json_array_at(root.get(), i);
        if (is_order_discount(item))
            discounts.push_back(item);
        else
            generate_line_items_item(info, attrs, item, false, cb, ret);
    }
    for (const Qel_json_node_t *discount : discounts)
        generate_line_items_item(info, attrs, discount, false, cb, ret);
}

const char *Qel_rcpt_line_item_type_to_str(Qel_rcpt_line_item_type_t type) noexcept
{
    switch (type) {
    case QEL_RCPT_LINE_ITEM_TYPE_ITEM:
        return "item";
    case QEL_RCPT_LINE_ITEM_TYPE_ITEM_ADDON:
        return "addon";
    case QEL_RCPT_LINE_ITEM_TYPE_ITEM_DISC_PERCENT:
        return "item_discount_percent";
    case QEL_RCPT_LINE_ITEM_TYPE_ITEM_DISC_FIXED:
        return "item_discount_fixed";
    case QEL_RCPT_LINE_ITEM_TYPE_ORDER_DISC_PERCENT:
        return "order_discount_percent";
    case QEL_RCPT_LINE_ITEM_TYPE_ORDER_DISC_FIXED:
        return "order_discount_fixed";
    case QEL_RCPT_LINE_ITEM_TYPE_ORDER_DISC_CASH:
        return "order_discount_cash";
    case QEL_RCPT_LINE_ITEM_TYPE_NOTES:
        return "note";
    }
    return "unknown";
}
