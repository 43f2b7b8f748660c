// The check of any record, merchant and form: no place outside a value, messages that harm nobody,
// the same findings for the same record, and what is called unreadable is what is left out.
#include "receipt.hpp"

#include <qel_rcpt_check.h>

#include <tuple>

namespace
{

using namespace fuzz;

using finding = std::tuple<std::string, std::string, std::size_t, std::string>;

// Whole characters, and none that controls a terminal.
bool is_harmless(std::string_view text)
{
    const auto is_control = [](char byte) { return (byte >= 0 && byte < ' ') || byte == '\x7F'; };
    for (std::size_t at = text.find('\xC2'); at < text.size(); at = text.find('\xC2', at + 1)) {
        if (static_cast<unsigned char>(text[at + 1]) < 0xA0)
            return false;
    }
    return is_valid_utf8(text) && std::ranges::none_of(text, is_control);
}

struct findings {
    const Qel_hash_dict_t *record;
    std::vector<finding> all;
    std::size_t errors = 0;
};

void take(void *info, const Qel_rcpt_finding_t *found)
{
    auto &taken = *static_cast<findings *>(info);
    taken.errors += found->severity == QEL_RCPT_SEVERITY_ERROR ? 1 : 0;
    const char *value = Qel_hash_dict_get_direct(taken.record, found->key);
    require(found->offset == QEL_RCPT_NO_OFFSET || found->offset <= Qel_str_len(value),
            "the place is inside of the value");
    require(is_harmless(found->message), "the message is fit for a terminal");
    require(!Qel_str_isempty(found->message), "there is a message");
    taken.all.emplace_back(found->rule, found->key, found->offset, found->message);
}

bool has(const findings &found, const char *rule, const char *key)
{
    return std::ranges::any_of(found.all, [&](const finding &one) {
        return std::get<0>(one) == rule && std::get<1>(one) == key;
    });
}

// What the rules say of a value is what the forms make of it.
void compare_with_readers(const findings &found)
{
    const auto value = [&](const char *key) { return Qel_hash_dict_get_direct(found.record, key); };
    if (!Qel_str_isempty(value("amount"))) {
        const qel::text money(Qel_str_dot_money_out(value("amount")));
        require(has(found, "amount-unreadable", "amount") == !money, "an amount is read or not");
    }
    const char *custom = value("rcpt_custom");
    if (!Qel_str_isempty(custom)) {
        const qel::dict fields(
            Qel_hash_dict_deserialize(custom, Qel_str_len(custom), ',', ':', '"', '"', 0));
        require(has(found, "custom-fields-unreadable", "rcpt_custom") == !fields,
                "custom fields are read or not");
    }
}

} // namespace

extern "C" int LLVMFuzzerInitialize(int * /*argc*/, char *** /*argv*/)
{
    Qel_rcpt_init();
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    const receipt_input from(input(data, size));
    for (const Qel_rcpt_form_t form :
         {QEL_RCPT_FORM_GENERAL, QEL_RCPT_FORM_MONERIS, QEL_RCPT_FORM_MONERIS_ECOMM}) {
        findings first{from.record(), {}};
        findings second{from.record(), {}};
        const std::size_t errors = Qel_rcpt_check(from.record(), from.config(), form, take, &first);
        Qel_rcpt_check(from.record(), from.config(), form, take, &second);
        require(first.all == second.all, "the same record gives the same findings");
        require(errors == first.errors, "the errors are counted");
        compare_with_readers(first);
    }
    return 0;
}
