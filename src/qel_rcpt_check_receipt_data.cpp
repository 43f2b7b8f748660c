// The document of items, fees and addresses behind a Moneris e-commerce receipt.
#include "qel_rcpt_check_documents.hpp"

#include <algorithm>
#include <iterator>

namespace qel_rcpt::check
{

namespace
{

struct data_member {
    std::string_view name;
    std::size_t width; // of its place, in characters
    bool is_amount = false;
};

constexpr data_member data_items[] = {
    {"sku", 8}, {"descr", 27}, {"qty", 5}, {"amount", 14, true}, {"subtotal", 8, true}};
constexpr data_member data_fees[] = {{"name", 14}, {"val", 8, true}};
constexpr data_member data_customer[] = {
    {"bill_name", 34}, {"bill_addr1", 34}, {"bill_addr2", 34}, {"bill_addr3", 34},
    {"bill_city", 34}, {"bill_state", 34}, {"bill_zip", 34},   {"bill_country", 34},
    {"ship_name", 35}, {"ship_addr1", 35}, {"ship_addr2", 35}, {"ship_addr3", 35},
    {"ship_city", 35}, {"ship_state", 35}, {"ship_zip", 35},   {"ship_country", 35},
};

struct data_section {
    std::string_view name;
    std::span<const data_member> members; // none: a text
    bool is_array;
};

constexpr data_section data_sections[] = {
    {"items", data_items, true},
    {"fees", data_fees, true},
    {"customer", data_customer, false},
    {"policy", {}, false},
};

class data_handler
{
  public:
    data_handler(const subject &record, report &findings) : record_(record), findings_(findings) {}

    void begin_object(std::size_t at) { begin('{', at); }
    void begin_array(std::size_t at) { begin('[', at); }
    void end_object(std::size_t /*at*/) { end(); }
    void end_array(std::size_t /*at*/) { end(); }

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

    void string(std::string_view text, std::size_t at)
    {
        if (!is_text_wanted())
            return add_wrong_kind(at);
        if (member_ == nullptr || depth_ == 1)
            return;
        look_at_width(text, at);
        if (member_->is_amount && !text.empty())
            look_at_amount(record_, key, text, at, findings_);
    }

    void scalar(qel::json_scalar kind, std::string_view /*spelling*/, std::size_t at)
    {
        if (kind != qel::json_scalar::null)
            add_wrong_kind(at);
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

    void begin(char bracket, std::size_t at)
    {
        const bool is_section = section_ != nullptr && !section_->members.empty();
        const bool is_wanted =
            depth_ == 0 || section_ == nullptr ||
            (is_section && depth_ == 1 && (bracket == '[') == section_->is_array) ||
            (is_section && depth_ == 2 && section_->is_array && bracket == '{');
        if (!is_wanted)
            add_wrong_kind(at);
        ++depth_;
        member_ = nullptr;
    }

    void end()
    {
        --depth_;
        if (depth_ <= 1)
            section_ = nullptr;
    }

    void add_wrong_kind(std::size_t at)
    {
        const bool is_member = section_ != nullptr && depth_ == member_depth();
        if (section_ == nullptr || (is_member && member_ == nullptr) || depth_ > member_depth())
            return;
        if (section_->is_array && depth_ == 2)
            findings_.add(document_rule("entry-not-object"), key, at,
                          "this entry is no JSON object and would stay empty");
        else
            findings_.add(document_rule("member-not-text"), key, at,
                          {"the value is ", wanted_kind(), " elsewhere, so it would not be shown"});
    }

    [[nodiscard]] const char *wanted_kind() const
    {
        if (depth_ > 1 || section_->members.empty())
            return "a JSON string";
        return section_->is_array ? "a JSON array" : "a JSON object";
    }

    void look_at_width(std::string_view text, std::size_t at)
    {
        if (width_of(text) > member_->width)
            look_at_cut(key, at, text, 0, findings_);
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
        !is_document(record, "moneris_rcpt_data", '{', document_rule("receipt-data-unreadable"),
                     "no items, fees, addresses and policy", findings))
        return;
    data_handler handler(record, findings);
    qel::json_reader(record.text("moneris_rcpt_data"), handler, reading_rules).read();
}

} // namespace qel_rcpt::check
