// Both layouts of the Moneris processor.
#include "plain_text.hpp"

namespace
{

using fuzz::receipt_input;

constexpr std::string_view store_blocks[] = {"merch_info",  "type",      "money", "reference",
                                             "disposition", "signature", "notice"};
constexpr fuzz::shown_value store_values[] = {
    {"merch_info", "merch_name"},   {"merch_info", "merch_addr1"}, {"merch_info", "merch_addr2"},
    {"merch_info", "merch_addr3"},  {"merch_info", "merch_phone"}, {"merch_info", "merch_email"},
    {"merch_info", "merch_url"},    {"reference", "account"},      {"reference", "auth"},
    {"reference", "rcpt_emv_name"}, {"reference", "rcpt_emv_aid"}, {"reference", "rcpt_emv_tvr"},
    {"reference", "rcpt_emv_tsi"},  {"disposition", "ordernum"},   {"disposition", "ttid"},
};

constexpr std::string_view ecomm_blocks[] = {"merch_info", "reference", "line_items",
                                             "customer_info", "refund_policy"};
constexpr fuzz::shown_value ecomm_values[] = {
    {"merch_info", "merch_name"},  {"merch_info", "merch_addr1"}, {"merch_info", "merch_addr2"},
    {"merch_info", "merch_addr3"}, {"merch_info", "merch_url"},   {"reference", "ordernum"},
    {"reference", "auth"},
};

void check_store_receipt(const receipt_input &from)
{
    const auto blocks = fuzz::checked_receipt(from, store_blocks, [&] {
        return Qel_rcpt_generate_plain_moneris(from.record(), from.config());
    });
    for (const fuzz::block &block : blocks)
        fuzz::check_plain_block(from, block, 40, "\r\n", store_values);
}

// What the e-commerce generator leaves of a record.
fuzz::pairs corrected(const receipt_input &from)
{
    const char *custom = from.value("rcpt_custom");
    const qel::dict fields(
        Qel_hash_dict_deserialize(custom, Qel_str_len(custom), ',', ':', '"', '"', 0));
    const bool has_action =
        !Qel_str_isempty(from.value("action_trans")) || !Qel_str_isempty(from.value("action"));
    const bool corrects_purchase =
        has_action &&
        Qel_str_caseeq(Qel_hash_dict_get_direct(fields.get(), "correction_type"), "purchase");
    fuzz::pairs record = fuzz::pairs_of(from.record());
    std::erase_if(record, [&](const auto &pair) {
        const auto &[key, value] = pair;
        return corrects_purchase && value == "0.00" &&
               (key == "surchargeamount" || key == "tax" || key == "examount");
    });
    return record;
}

// The rows hold texts of the record and of the document; only a line break in them shortens a row.
void check_table(const receipt_input &from, const fuzz::block &table)
{
    for (const auto &[key, value] : fuzz::pairs_of(from.record())) {
        if (value.find_first_of("\r\\") != std::string::npos)
            return;
    }
    for (const std::string &row : fuzz::lines_of(table.text, "\r\n"))
        fuzz::require(Qel_utf8_cnt(row.c_str()) == 70, "every row of the table is as wide");
}

void check_ecomm_receipt(const receipt_input &from)
{
    const fuzz::pairs expected = corrected(from);
    const qel::dict first(Qel_rcpt_generate_plain_moneris_ecomm(from.record(), from.config()));
    fuzz::require(fuzz::pairs_of(from.record()) == expected, "the record is corrected");

    const auto blocks = fuzz::checked_receipt(from, ecomm_blocks, [&] {
        return Qel_rcpt_generate_plain_moneris_ecomm(from.record(), from.config());
    });
    fuzz::require(Qel_hash_dict_num_keys(first.get()) == blocks.size(),
                  "a corrected record gives the same");
    if (from.has_industry(QEL_RCPT_IND_ECOMM) && from.is_repeated()) {
        const qel::dict forwarded(Qel_rcpt_generate_plain_moneris(from.record(), from.config()));
        fuzz::require(fuzz::pairs_of(forwarded.get()) == fuzz::pairs_of(first.get()),
                      "the in-store generator hands e-commerce on");
    }
    for (const fuzz::block &block : blocks) {
        fuzz::check_plain_block(from, block, 70, "\r\n", ecomm_values);
        if (block.name == "line_items")
            check_table(from, block);
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    Qel_rcpt_init();
    const receipt_input from(fuzz::input(data, size));
    if (!from.has_industry(QEL_RCPT_IND_ECOMM))
        check_store_receipt(from);
    check_ecomm_receipt(from);
    return 0;
}
