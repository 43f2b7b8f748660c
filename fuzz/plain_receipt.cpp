// The general plain-text receipt, at any width.
#include "plain_text.hpp"

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
    return 0;
}
