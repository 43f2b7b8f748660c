// The documents inside a record: whether they can be read, and the merchant's fields.
#include "qel_rcpt_check_documents.hpp"

#include <algorithm>

namespace qel_rcpt::check
{

namespace
{

// What is wrong with a JSON text, in words.
const char *words_of(qel::json_problem problem)
{
    switch (problem) {
    case qel::json_problem::none:
        break;
    case qel::json_problem::unexpected:
        return "something else should stand here";
    case qel::json_problem::overlong_number:
    case qel::json_problem::incomplete_number:
        return "this is not a number";
    case qel::json_problem::unclosed_string:
        return "the closing quote is missing";
    case qel::json_problem::control_character:
        return "a control character stands in a string";
    case qel::json_problem::unknown_escape:
    case qel::json_problem::incomplete_escape:
    case qel::json_problem::lone_surrogate:
        return "this is not an escape";
    case qel::json_problem::broken_utf8:
        return "this is not UTF-8";
    case qel::json_problem::unclosed_comment:
    case qel::json_problem::lone_slash:
        return "this is not a comment";
    case qel::json_problem::too_deep:
        return "it is nested too deeply";
    }
    return "";
}

// Takes a document's events and does nothing with them.
struct no_handler {
    void begin_object(std::size_t) {}
    void end_object(std::size_t) {}
    void begin_array(std::size_t) {}
    void end_array(std::size_t) {}
    void name(std::string_view, std::size_t) {}
    void string(std::string_view, std::size_t) {}
    void scalar(qel::json_scalar, std::string_view, std::size_t) {}
};

} // namespace

bool is_document(const subject &record, known_key key, char begin, const Qel_rcpt_rule_t &rule,
                 const char *lost, report &findings)
{
    const std::string_view text = record.text(key);
    no_handler handler;
    const qel::json_fault fault = qel::json_reader(text, handler, reading_rules).read();
    if (fault.problem != qel::json_problem::none) {
        findings.add(rule, key.name(), std::min(fault.at, text.size()),
                     {"this cannot be read as JSON, so ", lost, " would be shown; ",
                      words_of(fault.problem)});
        return false;
    }
    const std::size_t first = text.find_first_of("{[\"0123456789tfn-");
    if (text[first] == begin)
        return true;
    findings.add(rule, key.name(), first,
                 {"this is JSON, but not ", begin == '[' ? "an array" : "an object", ", so ", lost,
                  " would be shown"});
    return false;
}

// The merchant's fields

bool field_reader::fail(std::size_t at)
{
    fault_ = at;
    return false;
}

// A text up to one of the ends, or between quotes; a quote inside of these stands twice.
bool field_reader::take_text(std::string_view ends, std::string_view &out)
{
    const std::size_t begin = at_;
    if (text_.substr(at_, 1) != "\"") {
        at_ = std::min(text_.find_first_of(ends, at_), text_.size());
        out = text_.substr(begin, at_ - begin);
        return true;
    }
    for (at_ = begin + 1; at_ < text_.size(); ++at_) {
        if (text_[at_] != '"')
            continue;
        if (text_.substr(at_ + 1, 1) != "\"") {
            out = text_.substr(begin + 1, at_ - begin - 1);
            ++at_;
            return true;
        }
        ++at_;
    }
    return fail(begin);
}

bool field_reader::next(field &out)
{
    while (text_.substr(at_, 1) == ",")
        ++at_;
    if (at_ >= text_.size() || fault_ != no_offset)
        return false;
    out.offset = at_;
    if (!take_text(",:", out.name))
        return false;
    if (text_.substr(at_, 1) != ":")
        return fail(at_);
    ++at_;
    if (!take_text(",", out.value))
        return false;
    return at_ == text_.size() || text_[at_] == ',' || fail(at_);
}

namespace
{

void look_at_field(const subject &record, const field &each, report &findings)
{
    constexpr std::size_t most_number = 250;
    static constexpr std::string_view corrections[] = {"purchase", "refund", "preauth"};
    if (record.is_general())
        return;
    if (each.name == "refnum")
        look_at_cut("rcpt_custom", each.offset, each.value, most_number, findings);
    if (each.name == "correction_type" && !is_word(each.value, corrections))
        findings.add(document_rule("correction-type-unknown"), "rcpt_custom", each.offset,
                     {quoted(each.value), " is none of purchase, refund and preauth; the receipt "
                                          "would say \"Correction\""});
}

void look_at_custom_fields(const subject &record, report &findings)
{
    std::array<std::string_view, 32> names; // of more fields none is compared
    std::size_t count = 0;
    field_reader fields(record.text("rcpt_custom"));
    for (field each; fields.next(each);) {
        look_at_field(record, each, findings);
        if (is_word(each.name, {names.data(), count}))
            findings.add(document_rule("custom-field-repeated"), "rcpt_custom", each.offset,
                         {"the field ", quoted(each.name), " again: one of the two would be lost"});
        if (count < names.size())
            names[count++] = each.name;
    }
    if (fields.fault() != no_offset)
        findings.add(document_rule("custom-fields-unreadable"), "rcpt_custom", fields.fault(),
                     "this is not name:value, so none of the fields would be shown; put names and "
                     "values with a comma, a colon or a quote between double quotes");
}

} // namespace

rule_group document_rules()
{
    static constexpr pass passes[] = {look_at_line_items, look_at_receipt_data,
                                      look_at_custom_fields};
    return {document_rules_table, passes};
}

} // namespace qel_rcpt::check
