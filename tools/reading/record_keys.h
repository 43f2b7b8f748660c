// The keys of a transaction record that the library reads.
#ifndef QELRCPT_TOOLS_RECORD_KEYS_H
#define QELRCPT_TOOLS_RECORD_KEYS_H

#include <algorithm>
#include <string_view>

namespace tool
{

// In ascending order, for a binary search.
inline constexpr std::string_view record_keys[] = {
    "account",
    "action",
    "action_trans",
    "amount",
    "auth",
    "authamount",
    "balance",
    "batch",
    "card_cardclass",
    "cardholdername",
    "cardtype",
    "cashbackamount",
    "code",
    "convenience_fee",
    "custref",
    "discountamount",
    "examount",
    "fee",
    "issuer_decline",
    "laneid",
    "line_items",
    "merch_addr1",
    "merch_addr2",
    "merch_addr3",
    "merch_email",
    "merch_name",
    "merch_phone",
    "merch_url",
    "moneris_rcpt_data",
    "msoft_code",
    "offline_decline",
    "order_cash_discount",
    "order_cash_price",
    "order_discount",
    "order_noncash_price",
    "order_notes",
    "order_tax",
    "order_tip",
    "order_total",
    "ordernum",
    "orig_code",
    "orig_msoft_code",
    "orig_phard_code",
    "phard_code",
    "printdata",
    "ptrannum",
    "rcpt_acct_type",
    "rcpt_custom",
    "rcpt_duplicate",
    "rcpt_emv_ac",
    "rcpt_emv_actype",
    "rcpt_emv_aid",
    "rcpt_emv_card_decline",
    "rcpt_emv_cvm",
    "rcpt_emv_form_factor",
    "rcpt_emv_iad",
    "rcpt_emv_name",
    "rcpt_emv_pinbypass",
    "rcpt_emv_tsi",
    "rcpt_emv_tvr",
    "rcpt_entry_mode",
    "rcpt_host_ts",
    "rcpt_issuer_resp_code",
    "rcpt_resp_code",
    "rcpt_user_notes",
    "recurring",
    "reversal_reason",
    "stan",
    "supplemental_fee",
    "surchargeamount",
    "tax",
    "timestamp",
    "ttid",
    "txnstatus",
    "u_action",
    "u_cardclass",
    "u_cashback",
    "u_duplicate",
    "u_emv_chip_malfunction",
    "u_errorcode",
    "u_flowflags",
    "u_need_signature",
    "u_rcpt_duplicate",
    "u_standin",
    "u_tip",
};

static_assert(std::ranges::is_sorted(record_keys));

bool is_record_key(std::string_view key);

// The record key that was probably meant, whatever the case of its letters; empty when none is
// near.
std::string_view nearest_record_key(std::string_view key);

} // namespace tool

#endif
