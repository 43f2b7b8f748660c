// The documents inside a record: whether they can be read, and the merchant's fields.
#include "qel_rcpt_check.hpp"
#include "qel_rcpt_moneris_ecomm.hpp"

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

// What a document is and where it begins, behind comments.
class document_kind : public qel::json_handler
{
  public:
    void begin(qel::json_kind kind, std::size_t at) { keep(kind, at); }
    void value(qel::json_kind kind, std::string_view /*text*/, std::size_t at) { keep(kind, at); }

    [[nodiscard]] qel::json_kind kind() const { return kind_; }
    [[nodiscard]] std::size_t offset() const { return offset_; }

  private:
    void keep(qel::json_kind kind, std::size_t at)
    {
        if (offset_ != no_offset)
            return;
        kind_ = kind;
        offset_ = at;
    }

    qel::json_kind kind_ = qel::json_kind::null;
    std::size_t offset_ = no_offset;
};

} // namespace

bool is_document(const subject &record, known_key key, qel::json_kind wanted,
                 const Qel_rcpt_rule_t &rule, const char *lost, report &findings)
{
    const std::string_view text = record.text(key);
    document_kind document;
    const qel::json_fault fault = qel::json_reader(text, document, reading_rules).read();
    if (fault.problem != qel::json_problem::none) {
        findings.add(rule, key.name(), std::min(fault.at, text.size()),
                     {"this cannot be read as JSON, so ", lost, " would be shown; ",
                      fault.at < text.size() ? words_of(fault.problem) : "it ends too early"});
        return false;
    }
    if (document.kind() == wanted)
        return true;
    findings.add(rule, key.name(), document.offset(),
                 {"this is JSON, but not ",
                  wanted == qel::json_kind::array ? "an array" : "an object", ", so ", lost,
                  " would be shown"});
    return false;
}

// The items, fees and addresses behind a Moneris e-commerce receipt

namespace
{

namespace layout = moneris_ecomm;
using data_member = layout::column;

constexpr auto data_customer = [] {
    std::array<data_member, 2 * std::size(layout::addresses)> members{};
    for (std::size_t i = 0; const auto &[bill, ship] : layout::addresses) {
        members[i++] = bill;
        members[i++] = ship;
    }
    return members;
}();

struct data_section {
    std::string_view name;
    std::span<const data_member> members; // none: a text
    bool is_array;
};

constexpr data_section data_sections[] = {
    {"items", layout::items, true},
    {"fees", layout::fees, true},
    {"customer", data_customer, false},
    {"policy", {}, false},
};

class data_handler
{
  public:
    data_handler(const subject &record, report &findings) : record_(record), findings_(findings) {}

    void begin(qel::json_kind kind, std::size_t at)
    {
        const bool is_array = kind == qel::json_kind::array;
        const bool is_section = section_ != nullptr && !section_->members.empty();
        const bool is_wanted = depth_ == 0 || section_ == nullptr ||
                               (is_section && depth_ == 1 && is_array == section_->is_array) ||
                               (is_section && depth_ == 2 && section_->is_array && !is_array);
        if (!is_wanted)
            add_wrong_kind(at);
        ++depth_;
        member_ = nullptr;
    }

    void end(qel::json_kind, std::size_t /*at*/)
    {
        --depth_;
        if (depth_ <= 1)
            section_ = nullptr;
    }

    void name(std::string_view name, std::size_t at)
    {
        if (depth_ == 1) {
            const auto *found = std::ranges::find(data_sections, name, &data_section::name);
            section_ = found == std::end(data_sections) ? nullptr : found;
            if (section_ == nullptr)
                add_unknown_member(key, name, at, data_sections, findings_);
        } else if (section_ != nullptr && depth_ == member_depth()) {
            const auto found = std::ranges::find(section_->members, name, &data_member::name);
            member_ = found == section_->members.end() ? nullptr : &*found;
            if (member_ == nullptr)
                add_unknown_member(key, name, at, section_->members, findings_);
        }
    }

    void value(qel::json_kind kind, std::string_view text, std::size_t at)
    {
        if (kind == qel::json_kind::null)
            return;
        if (kind != qel::json_kind::string || !is_text_wanted())
            return add_wrong_kind(at);
        if (member_ == nullptr || depth_ == 1)
            return;
        look_at_width(text, at);
        if (member_->holds_amount && !text.empty())
            look_at_amount(record_, key, text, at, findings_);
    }

  private:
    static constexpr const char *key = "moneris_rcpt_data";

    [[nodiscard]] std::size_t member_depth() const { return section_->is_array ? 3 : 2; }

    [[nodiscard]] bool is_text_wanted() const
    {
        if (section_ == nullptr)
            return true;
        return section_->members.empty() ? depth_ == 1 : depth_ == member_depth();
    }

    void add_wrong_kind(std::size_t at)
    {
        const bool is_member = section_ != nullptr && depth_ == member_depth();
        if (section_ == nullptr || (is_member && member_ == nullptr) || depth_ > member_depth())
            return;
        if (section_->is_array && depth_ == 2)
            findings_.add(rule_named("entry-not-object"), key, at,
                          "this entry is no JSON object and would stay empty");
        else
            findings_.add(rule_named("member-not-text"), key, at,
                          {wanted_kind(), " should stand here; what does would not be shown"});
    }

    [[nodiscard]] const char *wanted_kind() const
    {
        if (depth_ > 1 || section_->members.empty())
            return "a text in double quotes";
        return section_->is_array ? "a JSON array" : "a JSON object";
    }

    void look_at_width(std::string_view text, std::size_t at)
    {
        if (width_of(text) > member_->width)
            add_cut(key, at, text, findings_);
    }

    const subject &record_;
    report &findings_;
    const data_section *section_ = nullptr;
    const data_member *member_ = nullptr;
    std::size_t depth_ = 0;
};

} // namespace

void look_at_receipt_data(const subject &record, report &findings)
{
    if (!record.is_ecommerce() || !record.has("moneris_rcpt_data") ||
        !is_document(record, "moneris_rcpt_data", qel::json_kind::object,
                     rule_named("receipt-data-unreadable"), "no items, fees, addresses and policy",
                     findings))
        return;
    data_handler handler(record, findings);
    qel::json_reader(record.text("moneris_rcpt_data"), handler, reading_rules).read();
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
        findings.add(rule_named("correction-type-unknown"), "rcpt_custom", each.offset,
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
            findings.add(rule_named("custom-field-repeated"), "rcpt_custom", each.offset,
                         {"the field ", quoted(each.name), " again: one of the two would be lost"});
        if (count < names.size())
            names[count++] = each.name;
    }
    if (fields.fault() != no_offset)
        findings.add(rule_named("custom-fields-unreadable"), "rcpt_custom", fields.fault(),
                     "this is not name:value, so none of the fields would be shown; put names and "
                     "values with a comma, a colon or a quote between double quotes");
}

} // namespace

rule_group document_rules()
{
    static constexpr pass passes[] = {look_at_line_items, look_at_receipt_data,
                                      look_at_custom_fields};
    return {{}, passes};
}

} // namespace qel_rcpt::check
