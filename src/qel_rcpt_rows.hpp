// What the general forms show: each row of a block once, with its names, its labels and its value.
// A form walks the rows and renders them; how it does that, and what it does otherwise, is its own.
#ifndef QEL_RCPT_ROWS_HPP
#define QEL_RCPT_ROWS_HPP

#include "qel_rcpt_frame.hpp"
#include "qel_rcpt_int.h"
#include "qel_rcpt_rules.hpp"

#include <qelstdlib.hpp>

#include <algorithm>
#include <array>
#include <initializer_list>
#include <span>
#include <string_view>
#include <variant>

namespace qel_rcpt
{

// A copy of a receipt, as far as the values of its rows depend on it.
struct copy {
    const Qel_hash_dict_t *kvs;
    const Qel_rcpt_attrs_t &attrs;
    bool is_custcopy;
};

// An amount of the record: formatted, and shown when it is above zero.
struct amount_of {
    const char *key;
};

// Where a row's value comes from. What is absent or empty is not shown.
using value_source =
    std::variant<const char *, // the record's value under this key
                 amount_of,    //
                 const char *(*)(const Qel_hash_dict_t *kvs, Qel_rcpt_lang_t lang), // borrowed text
                 char *(*)(const Qel_hash_dict_t *kvs),                             // new text
                 char *(*)(const Qel_hash_dict_t *kvs, const Qel_rcpt_attrs_t *attrs)>; // new text

// The forms that show a row.
enum form_set : unsigned {
    in_plain = 1,
    in_html = 2,
    in_data = 4,  // XML and JSON
    in_store = 8, // the Moneris in-store layout, which shares the chip's rows
    in_layouts = in_plain | in_html,
    in_markup = in_html | in_data,
    in_all = in_plain | in_html | in_data,
    in_all_and_store = in_all | in_store,
};

enum class of_copy { both, customer, merchant };

// The labels of a row: in plain text a shorter one where there is one.
struct row_labels {
    constexpr row_labels(Qel_rcpt_msg_t label) : full(label), brief(label) {}
    constexpr row_labels(Qel_rcpt_msg_t label, Qel_rcpt_msg_t short_label)
        : full(label), brief(short_label)
    {
    }
    Qel_rcpt_msg_t full;
    Qel_rcpt_msg_t brief;
};

// The start tags of a value in HTML, alone or in a group with its label. They are put together when
// the code is compiled.
struct html_tags {
    using text = std::array<char, 96>;

    constexpr html_tags() = default;
    consteval html_tags(std::string_view id, std::string_view classes)
        : alone(joined({"div id=\"", id, "\" class=\"rcpt_val ", classes})),
          group(joined({"div id=\"", id, "_group\" class=\"rcpt_group ", classes})),
          label(joined({"span id=\"", id, "_label\" class=\"rcpt_group_label"})),
          value(id.empty() ? joined({"span class=\"rcpt_group_val"})
                           : joined({"span id=\"", id, "\" class=\"rcpt_group_val"}))
    {
    }

    text alone{};
    text group{};
    text label{};
    text value{}; // in the group

  private:
    static consteval text joined(std::initializer_list<std::string_view> parts)
    {
        text whole{};
        char *end = whole.data();
        for (const std::string_view part : parts)
            end = std::ranges::copy(part, end).out;
        *end++ = '"';
        *end = '\0'; // in the array, or it does not compile
        return whole;
    }
};

// The merchant's lines from top to bottom, each with the message for a record without the key.
struct merchant_field {
    const char *key;
    Qel_rcpt_msg_t missing;
    html_tags html;
};
inline constexpr merchant_field merchant_fields[] = {
    {"merch_name", QEL_RCPT_MSG_UNKNOWN_NAME, {"merch_name", "name"}},
    {"merch_addr1", QEL_RCPT_MSG_UNKNOWN_ADDR, {"merch_addr1", "address"}},
    {"merch_addr2", QEL_RCPT_MSG_NONE, {"merch_addr2", "address"}},
    {"merch_addr3", QEL_RCPT_MSG_NONE, {"merch_addr3", "address"}},
    {"merch_phone", QEL_RCPT_MSG_UNKNOWN_PHONE, {"merch_phone", "phone"}},
    {"merch_email", QEL_RCPT_MSG_NONE, {"merch_email", "email"}},
    {"merch_url", QEL_RCPT_MSG_NONE, {"merch_url", "url"}},
};

// The merchant's lines as data: show(name, text). A value that has a message for its absence stays
// when it is empty.
template <typename State, typename Show>
void for_each_merchant_value(const State &info, Show show)
{
    for (const merchant_field &field : merchant_fields) {
        const char *text = get_or_message(info.kvs, field.key, info.attrs.lang, field.missing);
        if (field.missing != QEL_RCPT_MSG_NONE || !Qel_str_isempty(text))
            show(field.key, text);
    }
}

struct row {
    const char *name; // of the XML element and the JSON member
    html_tags html;
    row_labels label;
    value_source value;
    form_set shown = in_all;
    of_copy copies = of_copy::both;
    bool keeps_empty = false; // data have it also when it is empty

    [[nodiscard]] constexpr bool is(std::string_view other) const { return other == name; }
};

// The rows of each block in the order of the receipt. The custom fields follow the reference rows.
extern const std::span<const row> reference_rows;
extern const std::span<const row> order_money_rows;
extern const std::span<const row> money_rows;
extern const std::span<const row> disposition_rows;
extern const std::span<const row> signature_rows; // of HTML, XML and JSON
extern const std::span<const row> emv_rows;
extern const std::span<const row> notice_rows;
extern const std::span<const row> notes_rows;

// A value of the record or the catalogue, or one of its own.
class row_text
{
  public:
    row_text() = default;
    row_text(const char *borrowed) : text_(borrowed) {}
    row_text(qel::text own) : own_(std::move(own)), text_(own_.get()) {}

    [[nodiscard]] const char *get() const { return text_; }
    [[nodiscard]] bool empty() const { return Qel_str_isempty(text_); }

  private:
    qel::text own_;
    const char *text_ = nullptr;
};

// The row's value in the copy; absent or empty where the copy does not show it.
row_text find_value(const row &row, const copy &copy);

// The rows that a form shows in the copy, with their values: show(row, text) for each. State is the
// generator's state record.
template <typename State, typename Show>
void for_each_value(const State &info, const block_slot &slot, std::span<const row> rows,
                    form_set form, Show show)
{
    const copy copy = {info.kvs, info.attrs, slot.is_custcopy};
    for (const row &row : rows) {
        if ((row.shown & form) == 0)
            continue;
        const row_text text = find_value(row, copy);
        if (!text.empty() || (row.keeps_empty && text.get() != nullptr))
            show(row, text.get());
    }
}

} // namespace qel_rcpt

#endif
