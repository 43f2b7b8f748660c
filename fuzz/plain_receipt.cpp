// The general plain-text receipt, at any width, and the record without control characters.
#include "plain_text.hpp"

#include <qelstdlib_json.hpp>

namespace
{

// Only where they are not empty; what decides over a row beyond that is left out.
constexpr fuzz::shown_value shown_values[] = {
    {"merch_info", "merch_name"},
    {"merch_info", "merch_addr1"},
    {"merch_info", "merch_addr2"},
    {"merch_info", "merch_addr3"},
    {"merch_info", "merch_phone"},
    {"merch_info", "merch_email"},
    {"merch_info", "merch_url"},
    {"reference", "cardtype"},
    {"reference", "rcpt_entry_mode"},
    {"reference", "account"},
    {"reference", "ordernum"},
    {"reference", "custref"},
    {"reference", "ttid"},
    {"reference", "auth"},
    {"reference", "batch"},
    {"reference", "stan"},
    {"disposition", "printdata"},
    {"emv", "rcpt_emv_name"},
    {"emv", "rcpt_emv_aid"},
    {"emv", "rcpt_emv_tvr"},
    {"emv", "rcpt_emv_tsi"},
    {"emv", "rcpt_emv_iad"},
    {"emv", "rcpt_emv_card_decline"},
    {"notes", "order_notes"},
    {"notes", "rcpt_user_notes"},
};

std::size_t expected_width(std::size_t asked)
{
    return asked == 0 ? 40 : std::max<std::size_t>(asked, 10);
}

std::string without_control(std::string_view text)
{
    std::string clean;
    for (std::size_t at = 0; at < text.size(); ++at) {
        auto code = static_cast<unsigned char>(text[at]);
        if (code == 0xC2 && at + 1 < text.size() && (text[at + 1] & 0xE0) == 0x80)
            code = static_cast<unsigned char>(text[++at]); // U+0080 to U+009F
        else if (code >= 0x20 && code != 0x7F) {
            clean += text[at];
            continue;
        }
        clean += (code >= '\t' && code <= '\r') || code == 0x85 ? ' ' : '?';
    }
    return clean;
}

// What a document says, control characters aside. One of them marks the ends of names and values.
struct reading : qel::json_handler {
    explicit reading(std::string_view document)
    {
        constexpr qel::json_rules as_forms_read = {512, true, false};
        const qel::json_fault fault = qel::json_reader(document, *this, as_forms_read).read();
        is_readable = fault.problem == qel::json_problem::none;
    }

    void begin(qel::json_kind kind, std::size_t /*offset*/) { add(kind, ""); }
    void end(qel::json_kind /*kind*/, std::size_t /*offset*/) { said += '\x02'; }
    void name(std::string_view text, std::size_t /*offset*/) { add({}, text); }
    void value(qel::json_kind kind, std::string_view text, std::size_t /*offset*/)
    {
        add(kind, text);
    }

    std::string said;
    bool is_readable = false;
    bool has_control = false;

  private:
    void add(qel::json_kind kind, std::string_view text)
    {
        const std::string clean = without_control(text);
        has_control = has_control || clean != text;
        said += static_cast<char>('0' + static_cast<int>(kind));
        said.append(clean).append(1, '\x01');
    }
};

void check_stripped_document(std::string_view before, std::string_view after)
{
    const reading from(before);
    if (!from.is_readable)
        return;
    const reading to(after);
    fuzz::require(to.is_readable && to.said == from.said, "the document says the same");
    fuzz::require(!to.has_control, "no escape for a control character is left");
}

// No value has a control character left, nor a string in a document, and nothing else changes.
void check_stripped(const fuzz::receipt_input &from)
{
    const fuzz::pairs before = fuzz::pairs_of(from.record());
    Qel_rcpt_strip_control(from.record());
    const fuzz::pairs after = fuzz::pairs_of(from.record());
    fuzz::require(before.size() == after.size(), "every value stays");
    for (std::size_t i = 0; i < before.size(); ++i) {
        const auto &[key, value] = before[i];
        const std::string &clean = after[i].second;
        const bool is_document = Qel_str_caseeq(key.c_str(), "line_items") ||
                                 Qel_str_caseeq(key.c_str(), "moneris_rcpt_data");
        fuzz::require(clean == without_control(clean), "no control character is left");
        if (!fuzz::is_valid_utf8(value))
            continue; // broken bytes may be control characters of eight bits
        if (is_document)
            check_stripped_document(value, clean);
        else
            fuzz::require(clean == without_control(value), "what is visible stays");
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    Qel_rcpt_init();
    const fuzz::receipt_input from(fuzz::input(data, size));
    const auto generate = [&](const char *line_break) {
        return Qel_rcpt_generate_plain(from.record(), from.config(), from.width(), line_break);
    };
    const auto blocks =
        fuzz::checked_receipt(from, fuzz::common_blocks, [&] { return generate("\n"); });
    for (const fuzz::block &block : blocks)
        fuzz::check_plain_block(from, block, expected_width(from.width()), "\n", shown_values);

    if (!from.is_repeated())
        return 0;
    const qel::dict standard(generate(nullptr));
    fuzz::require(Qel_hash_dict_num_keys(standard.get()) == blocks.size(),
                  "the line break decides over no block");
    check_stripped(from);
    return 0;
}
