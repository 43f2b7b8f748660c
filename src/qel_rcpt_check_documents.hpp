// The rules of the documents inside a record, and how these are read.
#ifndef QEL_RCPT_CHECK_DOCUMENTS_HPP
#define QEL_RCPT_CHECK_DOCUMENTS_HPP

#include "qel_rcpt_check_int.hpp"

#include <qelstdlib_json.hpp>

namespace qel_rcpt::check
{

inline constexpr Qel_rcpt_rule_group_t values = QEL_RCPT_RULES_VALUES;
inline constexpr const char *general_forms = "the general forms";
inline constexpr const char *ecommerce_form = "Moneris e-commerce";
inline constexpr const char *both_forms =
    "line_items in the general forms, moneris_rcpt_data in Moneris "
    "e-commerce";
inline constexpr const char *both_keys = "line_items, moneris_rcpt_data";

inline constexpr rule document_rules_table[] = {
    {{"line-items-unreadable", error, values, "a JSON array of objects", general_forms,
      "line_items", no_source, ""}},
    {{"receipt-data-unreadable", error, values, "a JSON object", ecommerce_form,
      "moneris_rcpt_data", no_source, ""}},
    {{"entry-not-object", error, values, "entries that are JSON objects", both_forms, both_keys,
      no_source, ""}},
    {{"entry-without-name", error, values, "a name in each entry", general_forms, "line_items",
      no_source, ""}},
    {{"member-unknown", warning, values, "members that the library reads", both_forms, both_keys,
      no_source, ""}},
    {{"member-not-text", error, values,
      "members that are JSON strings; modifiers, items and fees "
      "that are arrays, customer an object",
      both_forms, both_keys, no_source, ""}},
    {{"item-type-unknown", warning, values,
      "item, addon, discount_fixed, discount_percent or, at the top, cashdiscount", general_forms,
      "line_items", no_source, ""}},
    {{"item-quantity-missing", note, values, "a quantity in each entry", general_forms,
      "line_items", no_source, ""}},
    {{"item-percentage-unreadable", error, values, "percentages as decimal text without %",
      general_forms, "line_items", no_source, ""}},
    {{"custom-fields-unreadable", error, values, "name:value pairs with commas between them", "",
      "rcpt_custom", no_source, ""}},
    {{"custom-field-repeated", warning, values, "each field once, whatever its case", "",
      "rcpt_custom", no_source, ""}},
    {{"correction-type-unknown", warning, values, "purchase, refund or preauth",
      "the Moneris forms", "rcpt_custom", no_source, ""}},
};

// The facts of one of these rules.
consteval const Qel_rcpt_rule_t &document_rule(std::string_view name)
{
    return facts_of(document_rules_table, name);
}

inline constexpr qel::json_rules reading_rules = {512, true, false}; // as the forms read

// Whether the whole text is the JSON object or array that it should be, by the bracket with which
// it begins; of any other nothing is used, so what would be shown is lost.
bool is_document(const subject &record, known_key key, char begin, const Qel_rcpt_rule_t &rule,
                 const char *lost, report &findings);

template <typename Members>
void add_unknown_member(const char *key, std::string_view name, std::size_t offset,
                        const Members &members, report &findings)
{
    nearest_word nearest(name);
    for (const auto &member : members)
        nearest.offer(member.name);
    const Qel_rcpt_rule_t &rule = document_rule("member-unknown");
    if (nearest.found().empty())
        findings.add(rule, key, offset, {"nothing reads the member ", quoted(name)});
    else
        findings.add(rule, key, offset,
                     {"nothing reads the member ", quoted(name), "; did you mean ",
                      quoted(nearest.found()), "?"});
}

void look_at_line_items(const subject &record, report &findings);
void look_at_receipt_data(const subject &record, report &findings);

} // namespace qel_rcpt::check

#endif
