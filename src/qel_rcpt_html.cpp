// The HTML receipt: a fragment for each block, on whose ids and classes a style sheet selects.
#include "qel_rcpt_int.hpp"

#include <array>
#include <iterator>
#include <span>
#include <utility>
#include <variant>

using qel_rcpt::block_copies;
using qel_rcpt::block_place;
using qel_rcpt::get;

namespace
{

struct Qel_rcpt_html_t {
    Qel_hash_dict_t *blocks;
    const Qel_hash_dict_t *kvs;
    Qel_rcpt_attrs_t attrs;
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

// An id or class, put together when it is compiled where it is a constant.
class joined_name
{
  public:
    constexpr joined_name() = default;
    constexpr joined_name(std::initializer_list<std::string_view> parts)
    {
        char *end = text_.data();
        for (const std::string_view part : parts)
            end = std::ranges::copy(part, end).out;
    }
    [[nodiscard]] constexpr const char *c_str() const { return text_.data(); }

  private:
    std::array<char, 80> text_{}; // the longest are those of custom fields
};

void set_attribute(Qel_xml_node_t *node, const char *name, const char *value)
{
    Qel_xml_node_insert_attribute(node, name, value, 0, true);
}

Qel_xml_node_t *add_element(Qel_xml_node_t *parent, const char *name, const char *text,
                            const char *id, const char *class_name)
{
    Qel_xml_node_t *element = Qel_xml_create_element_with_text(name, text, 0, parent);
    set_attribute(element, "id", id);
    set_attribute(element, "class", class_name);
    return element;
}

// The id and the classes of a block.
struct block_names {
    consteval block_names(const char *name, const char *more_classes = "")
        : id{"rcpt_", name}, class_name{"rcpt_block ", name, *more_classes == '\0' ? "" : " ",
                                        more_classes}
    {
    }

    joined_name id;
    joined_name class_name;
};

html_block create_block(const Qel_rcpt_html_t &info, const block_names &names)
{
    return {info, add_element(info.document.get(), "div", nullptr, names.id.c_str(),
                              names.class_name.c_str())};
}

// Without a text it still gets an end tag: HTML has no self-closed spans.
Qel_xml_node_t *add_span(Qel_xml_node_t *parent, const char *id, const char *class_name,
                         const char *text)
{
    return add_element(parent, "span", Qel_str_safe(text), id, class_name);
}

// The ids and the classes of a value, which stands alone or in a group with its label.
struct value_names {
    constexpr value_names() = default;
    consteval value_names(const char *name, const char *classes)
        : id{name}, group_id{name, "_group"}, label_id{name, "_label"},
          class_name{"rcpt_val ", classes}, group_class{"rcpt_group ", classes}
    {
    }

    joined_name id;
    joined_name group_id;
    joined_name label_id;
    joined_name class_name;
    joined_name group_class;
};

// A value that stands alone; nothing without one.
void add_val(const html_block &block, const value_names &names, const char *value)
{
    if (!Qel_str_isempty(value))
        add_element(block.element, "div", value, names.id.c_str(), names.class_name.c_str());
}

// A value with its label, which may be absent; nothing without a value. The lane has no id.
void add_group(const html_block &block, const value_names &names, const char *label,
               const char *value)
{
    if (Qel_str_isempty(value))
        return;
    Qel_xml_node_t *group = add_element(block.element, "div", nullptr, names.group_id.c_str(),
                                        names.group_class.c_str());
    add_span(group, names.label_id.c_str(), "rcpt_group_label", label);
    const char *id = names.id.c_str();
    add_span(group, *id == '\0' ? nullptr : id, "rcpt_group_val", value);
}

enum class sign { plain, minus };

// An amount of the record with its label; nothing unless it is above zero.
void add_group_money(const html_block &block, const value_names &names, const char *label,
                     const char *amount, sign shown = sign::plain)
{
    if (!qel_rcpt::is_positive(amount))
        return;
    qel::text money(Qel_rcpt_format_money(amount, &block.info.attrs));
    if (money && shown == sign::minus) {
        char *negative = nullptr;
        Qel_asprintf(&negative, "- %s", money.get());
        money.reset(negative);
    }
    add_group(block, names, label, money.get());
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
void add_block(const html_block &block, const block_place &place)
{
    if (Qel_xml_node_num_children(block.element) == 0)
        return;
    std::size_t len = 0;
    qel::text xml(Qel_xml_write(block.element, QEL_XML_WRITER_PRETTYPRINT_SPACE, &len));
    const qel::text html = as_html(std::move(xml), len);
    Qel_hash_dict_insert(block.info.blocks, place.key, html.get());
}

// Rows

// What a row shows: the record's value under a key, or what an operation makes of the record.
using value_source =
    std::variant<const char *,                                                  // a key
                 const char *(*)(const Qel_hash_dict_t *),                      // borrowed text
                 const char *(*)(const Qel_hash_dict_t *, Qel_rcpt_lang_t),     // borrowed text
                 char *(*)(const Qel_hash_dict_t *),                            // new text
                 char *(*)(const Qel_hash_dict_t *, const Qel_rcpt_attrs_t *)>; // new text

class value_finder
{
  public:
    explicit value_finder(const Qel_rcpt_html_t &info) : info_(info) {}

    const char *operator()(const char *key) const { return get(info_.kvs, key); }
    const char *operator()(const char *(*find)(const Qel_hash_dict_t *)) const
    {
        return find(info_.kvs);
    }
    const char *operator()(const char *(*find)(const Qel_hash_dict_t *, Qel_rcpt_lang_t)) const
    {
        return find(info_.kvs, info_.attrs.lang);
    }
    const char *operator()(char *(*format)(const Qel_hash_dict_t *))
    {
        return keep(format(info_.kvs));
    }
    const char *operator()(char *(*format)(const Qel_hash_dict_t *, const Qel_rcpt_attrs_t *))
    {
        return keep(format(info_.kvs, &info_.attrs));
    }

  private:
    const char *keep(char *new_text)
    {
        kept_.reset(new_text);
        return kept_.get();
    }

    const Qel_rcpt_html_t &info_;
    qel::text kept_;
};

enum class element { val, group, money, discount };

struct row {
    consteval row(element row_kind, Qel_rcpt_msg_t row_label, const char *name, const char *classes,
                  value_source row_value)
        : kind(row_kind), label(row_label), names(name, classes), value(row_value)
    {
    }

    element kind;
    Qel_rcpt_msg_t label;
    value_names names;
    value_source value;
};

void add_row(const html_block &block, const row &row)
{
    const char *label = block.message(row.label);
    value_finder find(block.info);
    const char *value = std::visit(find, row.value);
    switch (row.kind) {
    case element::val:
        return add_val(block, row.names, value);
    case element::group:
        return add_group(block, row.names, label, value);
    case element::money:
        return add_group_money(block, row.names, label, value);
    case element::discount:
        return add_group_money(block, row.names, label, value, sign::minus);
    }
}

void add_rows(const html_block &block, std::span<const row> rows)
{
    for (const row &row : rows)
        add_row(block, row);
}

// Blocks

consteval auto merchant_names()
{
    constexpr const char *classes[] = {"name",  "address", "address", "address",
                                       "phone", "email",   "url"};
    std::array<value_names, std::size(qel_rcpt::merchant_fields)> names;
    for (std::size_t i = 0; i < names.size(); ++i)
        names[i] = {qel_rcpt::merchant_fields[i].key, classes[i]};
    return names;
}

void generate_block_merchinfo(Qel_rcpt_html_t &info, const block_place &place)
{
    static constexpr auto names = merchant_names();
    const html_block block = create_block(info, {"merch_info", "merch info"});
    for (std::size_t i = 0; i < names.size(); ++i) {
        const auto &[key, missing] = qel_rcpt::merchant_fields[i];
        add_val(block, names[i], qel_rcpt::get_or_message(info.kvs, key, info.attrs.lang, missing));
    }
    add_block(block, place);
}

char *format_lane(const Qel_hash_dict_t *kvs)
{
    char *lane = nullptr;
    Qel_asprintf(&lane, "%lld", static_cast<long long>(qel_rcpt::get_lane(kvs)));
    return lane;
}

constexpr row reference_rows[] = {
    {element::val, QEL_RCPT_MSG_NONE, "action", "action", qel_rcpt::get_title},
    {element::group, QEL_RCPT_MSG_LANE, "", "x_id", format_lane},
    {element::val, QEL_RCPT_MSG_NONE, "cardtype", "type cardtype", "cardtype"},
    {element::val, QEL_RCPT_MSG_NONE, "entry_mode", "entry mode", "rcpt_entry_mode"},
    {element::group, QEL_RCPT_MSG_ACCOUNT_TYPE, "acct_type", "account type",
     Qel_rcpt_get_acct_type},
    {element::group, QEL_RCPT_MSG_ACCOUNT, "account", "account", "account"},
    {element::group, QEL_RCPT_MSG_CUSTOMER, "cardholdername", "cardholdername", "cardholdername"},
    {element::group, QEL_RCPT_MSG_TIME, "time", "time", Qel_rcpt_format_time},
    {element::group, QEL_RCPT_MSG_ORDER_NUM, "ordernum", "x_id", qel_rcpt::get_order_number},
    {element::group, QEL_RCPT_MSG_PO_NUM, "custref", "x_id", "custref"},
    {element::group, QEL_RCPT_MSG_TTID, "ttid", "x_id", "ttid"},
    {element::group, QEL_RCPT_MSG_RESPONSE_CODE, "resp_code", "code", Qel_rcpt_get_respcode},
    {element::group, QEL_RCPT_MSG_AUTH_NUM, "auth", "auth", "auth"},
    {element::group, QEL_RCPT_MSG_BATCH, "batch", "batch", "batch"},
    {element::group, QEL_RCPT_MSG_STAN, "stan", "stan", "stan"},
};

void add_custom_fields(const html_block &block)
{
    const qel::dict fields = qel_rcpt::get_custom_fields(block.info.kvs);
    for (const auto [name, value] : qel::pairs(fields.get())) {
        std::array<char, 64> id{};
        Qel_snprintf(id.data(), id.size(), "custom_%s", qel_rcpt::clean_field_name(name).get());
        value_names names;
        names.id = {id.data()};
        names.group_id = {id.data(), "_group"};
        names.label_id = {id.data(), "_label"};
        names.group_class = {"rcpt_group custom"};
        add_group(block, names, name, value);
    }
}

void generate_block_reference(Qel_rcpt_html_t &info, const block_place &place)
{
    const html_block block = create_block(info, "reference");
    add_rows(block, reference_rows);
    add_custom_fields(block);
    add_block(block, place);
}

// How a line item looks: its class, and the format of its price where it has one.
struct line_item_form {
    const char *class_name;
    const char *price;
};

// By Qel_rcpt_line_item_type_t.
constexpr line_item_form line_item_forms[] = {
    {"rcpt_group item", "%s"},
    {"rcpt_group addon", "%s"},
    {"rcpt_group item_discount_percent", "- %s%%"},
    {"rcpt_group item_discount_fixed", "- %s"},
    {"rcpt_group order_discount_percent", "- %s%%"},
    {"rcpt_group order_discount_fixed", "- %s"},
    {"rcpt_group order_discount_percent cashdiscount", "- %s%%"},
    {"rcpt_group item notes", nullptr},
};

void add_item_span(Qel_xml_node_t *parent, const char *class_name, const char *fmt,
                   const char *text)
{
    std::array<char, 256> shown{};
    Qel_snprintf(shown.data(), shown.size(), fmt, text);
    add_span(parent, nullptr, class_name, shown.data());
}

void line_item_add(void * /*vinfo*/, const char *name, const char *qty, const char *price,
                   Qel_rcpt_line_item_type_t type, void *vret)
{
    const line_item_form form =
        type < std::size(line_item_forms) ? line_item_forms[type] : line_item_form{};
    Qel_xml_node_t *group = Qel_xml_create_element("div", static_cast<Qel_xml_node_t *>(vret));
    Qel_xml_node_insert_attribute(group, "class", form.class_name, 0, true);

    Qel_xml_node_t *what = Qel_xml_create_element("span", group);
    add_span(what, nullptr, "rcpt_group_label name", name);
    if (!Qel_str_isempty(qty) && !Qel_str_eq(qty, "1"))
        add_item_span(what, "rcpt_group_label qty", "x%s", qty);
    if (form.price != nullptr)
        add_item_span(group, "rcpt_group_val price", form.price, price);
}

void generate_block_line_items(Qel_rcpt_html_t &info, const block_place &place)
{
    const html_block block = create_block(info, "items");
    Qel_rcpt_generate_line_items(get(info.kvs, "line_items"), &info, &info.attrs, line_item_add,
                                 block.element);
    add_block(block, place);
}

void add_heading(const html_block &block, const char *id, Qel_rcpt_msg_t text)
{
    add_element(block.element, "div", block.message(text), id, "money_heading rcpt_title");
}

constexpr row order_money_rows[] = {
    {element::group, QEL_RCPT_MSG_SUBTOTAL, "order_subtotal", "amount order subtotal",
     Qel_rcpt_format_order_subtotal},
    {element::discount, QEL_RCPT_MSG_DISCOUNT, "order_discountamount", "amount order discount",
     "order_discount"},
    {element::money, QEL_RCPT_MSG_TIP, "order_tip", "amount order tip", "order_tip"},
    {element::money, QEL_RCPT_MSG_TAX, "order_tax", "amount order tax", "order_tax"},
    {element::money, QEL_RCPT_MSG_TOTAL, "order_total", "amount order total", "order_total"},
};

void generate_block_order_money(Qel_rcpt_html_t &info, const block_place &place)
{
    if (!Qel_rcpt_have_order_money(info.kvs))
        return;
    const html_block block = create_block(info, "order_money");
    if (Qel_rcpt_is_order_parital_payment(info.kvs))
        add_heading(block, "rcpt_order_money_heading", QEL_RCPT_MSG_ORDER);
    add_rows(block, order_money_rows);
    add_block(block, place);
}

// What the amount holds beside the subtotal.
constexpr row extra_amount_rows[] = {
    {element::money, QEL_RCPT_MSG_TIP, "tip", "amount tip", qel_rcpt::get_tip},
    {element::money, QEL_RCPT_MSG_SURCHARGE, "surchargeamount", "amount surcharge",
     "surchargeamount"},
    {element::money, QEL_RCPT_MSG_FEE, "fee", "amount fee", "fee"},
    {element::money, QEL_RCPT_MSG_CONVENIENCEFEE, "convenience_fee", "amount fee",
     "convenience_fee"},
    {element::money, QEL_RCPT_MSG_SUPPLEMENTALFEE, "supplemental_fee", "amount fee",
     "supplemental_fee"},
    {element::money, QEL_RCPT_MSG_TAX, "tax", "amount tax", "tax"},
    {element::money, QEL_RCPT_MSG_CASHBACK, "cashbackamount", "amount cashback", "cashbackamount"},
};

// After a partial approval: what was authorised and what is still due.
constexpr row authorised_amount_rows[] = {
    {element::group, QEL_RCPT_MSG_AUTH_AMOUNT, "authamount", "amount authorized",
     Qel_rcpt_format_authamount},
    {element::group, QEL_RCPT_MSG_AMOUNT_DUE, "amountdue", "amount due",
     Qel_rcpt_format_amount_due},
};

void add_discount(const html_block &block, const value_names &names, Qel_rcpt_msg_t label,
                  const char *discount)
{
    if (Qel_str_isempty(discount))
        return;
    std::array<char, 32> shown{};
    Qel_snprintf(shown.data(), shown.size(), "- %s", discount);
    add_group(block, names, block.message(label), shown.data());
}

void add_payment_discounts(const html_block &block)
{
    char *discount = nullptr;
    char *cash_discount = nullptr;
    Qel_rcpt_format_payment_discounts(block.info.kvs, &block.info.attrs, &discount, &cash_discount);
    add_discount(block, {"discountamount", "amount discount"}, QEL_RCPT_MSG_DISCOUNT,
                 qel::text(discount).get());
    add_discount(block, {"cash_discount", "amount discount"}, QEL_RCPT_MSG_CASHDISCOUNT,
                 qel::text(cash_discount).get());
}

void generate_block_money(Qel_rcpt_html_t &info, const block_place &place)
{
    const Qel_hash_dict_t *kvs = info.kvs;
    if (qel_rcpt::is_order_paid_in_full(kvs))
        return;
    const bool pays_part_of_order = Qel_rcpt_have_order_money(kvs);

    const html_block block = create_block(info, "money");
    if (pays_part_of_order)
        add_heading(block, "rcpt_money_heading", QEL_RCPT_MSG_PAYMENT);
    add_group(block, {"subtotal", "amount subtotal"}, block.message(QEL_RCPT_MSG_SUBTOTAL),
              qel::text(Qel_rcpt_format_subtotal(kvs, &info.attrs)).get());
    add_payment_discounts(block);
    add_rows(block, extra_amount_rows);
    add_group(block, {"totalamount", "amount total"},
              block.message(pays_part_of_order ? QEL_RCPT_MSG_PAID : QEL_RCPT_MSG_TOTAL),
              qel::text(Qel_rcpt_format_total_amount(kvs, &info.attrs)).get());
    add_rows(block, authorised_amount_rows);
    if (place.is_custcopy)
        add_group_money(block, {"balance", "amount balance"}, block.message(QEL_RCPT_MSG_BALANCE),
                        get(kvs, "balance"));
    add_block(block, place);
}

void generate_block_disposition(Qel_rcpt_html_t &info, const block_place &place)
{
    const Qel_hash_dict_t *kvs = info.kvs;
    const Qel_rcpt_lang_t lang = info.attrs.lang;
    const html_block block = create_block(info, "disposition");
    add_val(block, {"card_status", "status"}, Qel_rcpt_get_card_status(kvs, lang));
    add_val(block, {"pin_status", "status"}, Qel_rcpt_get_pin_status(kvs, lang));
    add_val(block, {"auth_result", "result"}, Qel_rcpt_get_result(kvs, lang));
    add_group(block, {"auth_mode", "mode"}, "Mode",
              Qel_rcpt_get_mode(kvs, lang)); // in any language
    add_val(block, {"printdata", "print"}, get(kvs, "printdata"));
    add_block(block, place);
}

constexpr std::size_t signature_line_len = 10;

void generate_block_signature(Qel_rcpt_html_t &info, const block_place &place)
{
    const Qel_hash_dict_t *kvs = info.kvs;
    const Qel_rcpt_lang_t lang = info.attrs.lang;
    const html_block block = create_block(info, "signature");
    if (Qel_rcpt_need_signature_line(kvs)) {
        add_val(block, {"line", "line"},
                qel::text(Qel_rcpt_get_signature_line(kvs, signature_line_len)).get());
        add_val(block, {"agreement", "agreement"}, Qel_rcpt_get_signature_agreement(kvs, lang));
        add_val(block, {"cardholdername", "name"}, get(kvs, "cardholdername"));
    } else {
        add_val(block, {"sigcaptured", "status"}, Qel_rcpt_get_signature_electronic(kvs, lang));
    }
    add_block(block, place);
}

consteval auto emv_names()
{
    std::array<value_names, std::size(qel_rcpt::emv_fields)> names;
    for (std::size_t i = 0; i < names.size(); ++i)
        names[i] = {qel_rcpt::emv_fields[i].name, "emv_data"};
    return names;
}

void generate_block_emv(Qel_rcpt_html_t &info, const block_place &place)
{
    static constexpr auto names = emv_names();
    const html_block block = create_block(info, "emv");
    for (std::size_t i = 0; i < names.size(); ++i) {
        const auto &[name, label, key] = qel_rcpt::emv_fields[i];
        add_group(block, names[i], block.message(label), get(info.kvs, key));
    }
    add_block(block, place);
}

void generate_block_notice(Qel_rcpt_html_t &info, const block_place &place)
{
    const Qel_rcpt_lang_t lang = info.attrs.lang;
    const html_block block = create_block(info, "notice");
    const auto [label, price] = qel_rcpt::get_alternative_price(info.kvs);
    add_group(block, {"alt_price", "alt_price"}, block.message(label),
              qel::text(Qel_rcpt_format_money(price, &info.attrs)).get());
    add_group(block, {"message", "message"}, nullptr, Qel_rcpt_get_notice(lang));
    if (Qel_rcpt_is_duplicate(info.kvs))
        add_group(block, {"duplicate", "status"}, nullptr, Qel_rcpt_get_duplicate(lang));
    add_group(block, {"copy", "status"}, nullptr, Qel_rcpt_get_whos_copy(place.is_custcopy, lang));
    add_block(block, place);
}

void generate_block_notes(Qel_rcpt_html_t &info, const block_place &place)
{
    const html_block block = create_block(info, "notes");
    add_group(block, {"order_notes", "order notes"}, nullptr, get(info.kvs, "order_notes"));
    add_group(block, {"user_notes", "user notes"}, nullptr, get(info.kvs, "rcpt_user_notes"));
    add_block(block, place);
}

constexpr qel_rcpt::block_builder<Qel_rcpt_html_t> block_builders[] = {
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
