// The rules of the check, all in one table; docs/requirements.md is made from it. When a record
// breaks one, and what the finding says, stands where the rule's name is called.
#ifndef QEL_RCPT_CHECK_RULES_HPP
#define QEL_RCPT_CHECK_RULES_HPP

#include <qel_rcpt_check.h>

#include <string_view>

namespace qel_rcpt::check
{

namespace table
{

inline constexpr Qel_rcpt_severity_t note = QEL_RCPT_SEVERITY_NOTE;
inline constexpr Qel_rcpt_severity_t warning = QEL_RCPT_SEVERITY_WARNING;
inline constexpr Qel_rcpt_severity_t error = QEL_RCPT_SEVERITY_ERROR;

inline constexpr Qel_rcpt_rule_group_t values = QEL_RCPT_RULES_VALUES;
inline constexpr Qel_rcpt_rule_group_t contradictions = QEL_RCPT_RULES_CONTRADICTIONS;
inline constexpr Qel_rcpt_rule_group_t secrets = QEL_RCPT_RULES_SECRETS;
inline constexpr Qel_rcpt_rule_group_t required = QEL_RCPT_RULES_REQUIRED;

// Where rules come from, and when that was read.
inline constexpr const char *ours = "";
inline constexpr const char *adyen = "Adyen's summary of scheme requirements";
inline constexpr const char *facta = "FACTA, 15 USC 1681c(g)";
inline constexpr const char *guides = "certification guides of processors";
inline constexpr const char *moneris = "Moneris receipt requirements";
inline constexpr const char *stripe = "Stripe Terminal receipt details";
inline constexpr const char *surcharges = "Forte; Visa's requirements for surcharging";
inline constexpr const char *usda = "USDA FNS, EBT receipt requirements";
inline constexpr const char *seen = "2026-11";

// When rules apply.
inline constexpr const char *general_forms = "the general forms";
inline constexpr const char *ecommerce_form = "Moneris e-commerce";
inline constexpr const char *both_forms =
    "line_items in the general forms, moneris_rcpt_data in Moneris e-commerce";
inline constexpr const char *both_keys = "line_items, moneris_rcpt_data";

// Name, severity, group, what it wants, when it applies, keys, source, date.
inline constexpr Qel_rcpt_rule_t rules[] = {
    // Values that cannot be used
    {"amount-unreadable", error, values, "amounts as decimal text with a point, such as 12.34", "",
     "every amount", ours, ""},
    {"amount-decimals", error, values, "at most two decimals that are not zero", "", "every amount",
     ours, ""},
    {"amount-too-large", error, values, "amounts of at most 15 digits before the point", "",
     "every amount", ours, ""},
    {"amount-negative", warning, values, "amounts above zero; the action says what is paid back",
     "", "every amount but balance", ours, ""},
    {"host-time-unreadable", error, values, "a date of the calendar as mmddyyHHMMSS", "",
     "rcpt_host_ts", ours, ""},
    {"timestamp-unreadable", error, values, "seconds since 1970 as digits alone",
     "without rcpt_host_ts", "timestamp", ours, ""},
    {"timestamp-implausible", warning, values, "a time from the years 2000 to 2099",
     "without rcpt_host_ts", "timestamp", ours, ""},
    {"number-unreadable", warning, values, "a whole number above zero", "", "laneid, ptrannum",
     ours, ""},
    {"flag-unclear", warning, values,
     "1, y, yes, t, true or on to set a flag; 0, n, no, f, false, off or nothing not to", "",
     "every flag", ours, ""},
    {"result-unknown", warning, values, "AUTH, SUCCESS, DENY, CALL, TIMEOUT or TOUT", "",
     "code, orig_code", ours, ""},
    {"reason-unknown", note, values, "the words that the rules of the outcome know", "",
     "u_errorcode, reversal_reason, offline_decline", ours, ""},
    {"action-unknown", warning, values, "an action that has a title", "", "action_trans, action",
     ours, ""},
    {"entry-mode-unknown", note, values, "C, T, R, S, F or M, as docs/record.md has them", "",
     "rcpt_entry_mode", ours, ""},
    {"currency-unknown", error, values,
     "a currency of two decimals whose sign the library knows, such as $, € and £", "",
     "the configuration's currency_code", ours, ""},
    {"currency-misnamed", error, values,
     "the currency that the layout names: one that the library knows by the number of the "
     "country, such as 124 (CAD) and 826 (GBP), USD for all others",
     "Moneris e-commerce", "the configuration's currency_code and country_code", ours, ""},
    {"chip-value-malformed", warning, values,
     "hexadecimal digits: 10 to 32 of an AID, 10 of the TVR, 4 of the TSI, 16 of a cryptogram, "
     "pairs of all others",
     "",
     "rcpt_emv_aid, rcpt_emv_tvr, rcpt_emv_tsi, rcpt_emv_iad, rcpt_emv_ac, "
     "rcpt_emv_card_decline, rcpt_emv_form_factor",
     "EMV Book 3, annex A; ISO/IEC 7816-5 (AID)", seen},
    {"value-cut", warning, values, "texts that fit the line that they stand on", "",
     "rcpt_issuer_resp_code, rcpt_resp_code, rcpt_custom, line_items, moneris_rcpt_data, amount, "
     "tax, surchargeamount, examount",
     ours, ""},
    {"unknown-key", warning, values, "keys that the library reads", "", "any other key", ours, ""},

    // The documents inside a record
    {"line-items-unreadable", error, values, "a JSON array of objects", general_forms, "line_items",
     ours, ""},
    {"receipt-data-unreadable", error, values, "a JSON object", ecommerce_form, "moneris_rcpt_data",
     ours, ""},
    {"entry-not-object", error, values, "entries that are JSON objects", both_forms, both_keys,
     ours, ""},
    {"entry-without-name", error, values, "a name in each entry", general_forms, "line_items", ours,
     ""},
    {"member-unknown", warning, values, "members that the library reads", both_forms, both_keys,
     ours, ""},
    {"member-not-text", error, values,
     "members that are JSON strings; modifiers, items and fees "
     "that are arrays, customer an object",
     both_forms, both_keys, ours, ""},
    {"item-type-unknown", warning, values,
     "item, addon, discount_fixed, discount_percent or, at the top, cashdiscount", general_forms,
     "line_items", ours, ""},
    {"item-quantity-missing", note, values, "a quantity in each entry", general_forms, "line_items",
     ours, ""},
    {"item-percentage-unreadable", error, values, "percentages as decimal text without %",
     general_forms, "line_items", ours, ""},
    {"custom-fields-unreadable", error, values, "name:value pairs with commas between them", "",
     "rcpt_custom", ours, ""},
    {"custom-field-repeated", warning, values, "each field once, whatever its case", "",
     "rcpt_custom", ours, ""},
    {"correction-type-unknown", warning, values, "purchase, refund or preauth", "the Moneris forms",
     "rcpt_custom", ours, ""},

    // Values that contradict each other
    {"subtotal-negative", error, contradictions,
     "tip, tax, cash back, surcharge and fees that are part of the amount",
     "an amount of zero or above",
     "amount, examount, tax, cashbackamount, surchargeamount, fee, convenience_fee, "
     "supplemental_fee",
     ours, ""},
    {"order-subtotal-negative", error, contradictions, "tip and tax that are part of the order",
     "an order_total of zero or above", "order_total, order_tip, order_tax", ours, ""},
    {"amount-above-order", warning, contradictions, "a payment of at most the order's total",
     "order_total", "amount, order_total", ours, ""},
    {"discount-negative", error, contradictions,
     "an order_cash_discount that is part of discountamount",
     "the general forms, cardtype cash without order_total", "order_cash_discount, discountamount",
     ours, ""},
    {"authamount-above-amount", error, contradictions,
     "at most the amount that was asked for is authorized", "amount", "authamount, amount", ours,
     ""},
    {"approval-not-partial", error, contradictions, "authamount only after a partial approval",
     "an approval, all forms but Moneris e-commerce", "authamount", ours, ""},
    {"decline-called-partial", error, contradictions, "authamount only after a partial approval",
     "Moneris in-store, a decline", "authamount", ours, ""},
    {"tip-twice", warning, contradictions, "the tip once", "", "examount, u_tip", ours, ""},
    {"cash-back-twice", warning, contradictions, "the cash back once", "",
     "cashbackamount, u_cashback", ours, ""},
    {"items-total", warning, contradictions, "line items that add up to the subtotal",
     "items with prices and no percentages", "line_items, amount, order_total", ours, ""},
    {"approval-without-code", error, contradictions, "an authorization code",
     "an approved sale or authorization by card, but for stand-in", "auth",
     "Stripe Terminal receipt details; Visa's notice of August 2025", seen},
    {"approval-refused-by-chip", error, contradictions,
     "a cryptogram of a transaction that the card approved", "an approval", "rcpt_emv_actype",
     "EMV Book 3, 6.5.5", seen},
    {"decline-accepted-by-chip", warning, contradictions,
     "no cryptogram of a transaction that the card approved", "a decline", "rcpt_emv_actype",
     "EMV Book 3, 6.5.5", seen},
    {"approval-declined", error, contradictions, "nobody's decline", "an approval",
     "issuer_decline, offline_decline, reversal_reason, u_errorcode", ours, ""},
    {"chip-data-without-chip", warning, contradictions,
     "the chip's data of a chip transaction only", "an entry mode other than C and T",
     "rcpt_entry_mode", ours, ""},
    {"chip-without-chip-data", warning, contradictions, "data of a chip with a chip's entry mode",
     "declined payments with entry mode C or T; approved ones are asked for each datum",
     "rcpt_entry_mode", ours, ""},
    {"entry-mode-missing", warning, contradictions, "the entry mode with a chip's data", "",
     "rcpt_entry_mode", ours, ""},
    {"signature-twice", warning, contradictions,
     "either a signature line or a signature captured electronically", "",
     "u_need_signature, u_flowflags", ours, ""},
    {"pin-bypassed-and-verified", error, contradictions, "either a PIN verified or a PIN bypassed",
     "", "rcpt_emv_cvm, rcpt_emv_pinbypass", ours, ""},
    {"balance-without-account", warning, contradictions, "a balance of a card that has one only",
     "cash, and credit cards", "balance", ours, ""},
    {"cash-with-card", warning, contradictions, "no data of a card with a payment in cash",
     "cardtype cash", "cardtype, account, cardholdername, rcpt_emv_aid", ours, ""},
    {"time-out-called-decline", note, contradictions,
     "a time-out that reads \"Transaction Not Completed\"", "the general forms, code TIMEOUT",
     "phard_code", ours, ""},

    // What must not be shown
    {"card-number", error, secrets, "no whole card number in any value", "", "any key",
     "PCI DSS 4.0.1, 3.4.1; PCI SSC FAQ 1136", seen},
    {"account-digits-us", error, secrets, "at most the last five digits of the account",
     "country 840 (United States)", "account", facta, seen},
    {"account-digits-canada", error, secrets, "the last four digits of the account only",
     "country 124 (Canada)", "account",
     "Moneris help; Visa's notice of August 2025 asks for the last four too", seen},
    {"account-digits", error, secrets,
     "at most the first six and the last four digits of the account", "", "account",
     "PCI SSC FAQ 1136", seen},
    {"track-data", error, secrets, "no data of the magnetic stripe or of its image in a chip", "",
     "any key", "PCI DSS 4.0.1, 3.3.1.1", seen},
    {"verification-value", error, secrets,
     "no verification value (CVV2 and the like) and no PIN, not even unprinted", "",
     "any key, fields of rcpt_custom", "PCI DSS 4.0.1, 3.3.1.2 and 3.3.1.3", seen},
    {"expiry-shown", error, secrets, "no expiry date", "", "account, fields of rcpt_custom",
     "FACTA, 15 USC 1681c(g); Moneris help; Adyen's summary of scheme requirements", seen},
    {"expiry-kept", warning, secrets, "no expiry date in the record, where logs would keep it", "",
     "any other key", ours, ""},
    {"benefit-name", error, secrets, "no customer's name", "SNAP and EBT", "cardholdername", usda,
     seen},
    {"interac-debit", error, secrets, "INTERAC, never DEBIT", "cardtype Interac",
     "u_cardclass, rcpt_emv_name", moneris, seen},
    {"control-character", warning, secrets,
     "no control characters but tab and line breaks, and none that turn the direction of writing",
     "", "any key", ours, ""},
    {"broken-utf8", warning, secrets, "texts in UTF-8", "", "any key", ours, ""},

    // What must be shown
    {"merchant-name-missing", error, required, "the merchant's trading name, as the first line", "",
     "merch_name", "Adyen's summary of scheme requirements; Adyen card receipts", seen},
    {"merchant-address-missing", error, required, "the merchant's location", "", "merch_addr1",
     adyen, seen},
    {"merchant-number-missing", note, required, "the merchant's number", "all but cash",
     "rcpt_custom, merch_addr3", "Adyen's summary of scheme requirements; Cybersource", seen},
    {"time-missing", warning, required, "the date and time of the transaction", "",
     "rcpt_host_ts, timestamp", adyen, seen},
    {"action-missing", error, required, "the type of transaction", "", "action_trans, action",
     adyen, seen},
    {"amount-missing", error, required, "the amount", "a sale or an authorization", "amount", adyen,
     seen},
    {"description-missing", note, required, "what was bought",
     "approved payments, but for Moneris in-store", "line_items, moneris_rcpt_data",
     "Adyen's summary of scheme requirements; Visa's notice of August 2025", seen},
    {"account-missing", error, required, "the masked account number",
     "a sale or an authorization by card that is approved, or has a cardtype, but for Moneris "
     "e-commerce",
     "account", "Visa's notice of August 2025; Regulation E, 12 CFR 1005.9(a)(4); USDA FNS", seen},
    {"result-missing", warning, required, "the outcome", "all forms but Moneris e-commerce",
     "code, phard_code", guides, seen},
    {"decline-unstated", error, required, "the outcome of a transaction that was not approved",
     "Moneris e-commerce", "code", guides, seen},
    {"response-code-missing", note, required, "the issuer's or the server's response code",
     "payments by card that were approved, or declined by the issuer",
     "rcpt_issuer_resp_code, rcpt_resp_code", stripe, seen},
    {"chip-identifier-missing", error, required, "the application identifier (AID)",
     "approved payments by chip and contactless", "rcpt_emv_aid",
     "Stripe Terminal receipt details; Adyen's summary of scheme requirements", seen},
    {"chip-name-missing", error, required, "the application's preferred name or label",
     "approved payments by chip and contactless", "rcpt_emv_name", stripe, seen},
    {"chip-tvr-missing", warning, required, "the terminal verification results (TVR)",
     "approved payments by chip and contactless", "rcpt_emv_tvr", stripe, seen},
    {"chip-tsi-missing", warning, required, "the transaction status information (TSI)",
     "approved payments by chip and contactless", "rcpt_emv_tsi", stripe, seen},
    {"chip-cryptogram-missing", note, required, "the cryptogram, which most leave to the merchant",
     "approved payments by chip and contactless, the general forms", "rcpt_emv_ac",
     "Stripe Terminal receipt details; Adyen's summary of scheme requirements", seen},
    {"chip-cryptogram-half", warning, required, "a cryptogram with its type", "the general forms",
     "rcpt_emv_ac, rcpt_emv_actype", ours, ""},
    {"chip-verification-missing", note, required, "a statement about the PIN",
     "approved payments by chip", "rcpt_emv_cvm, rcpt_emv_pinbypass", adyen, seen},
    {"decline-data-missing", warning, required, "the chip's data of the decision",
     "declined transactions by chip, the general forms",
     "rcpt_emv_ac, rcpt_emv_actype, rcpt_emv_card_decline",
     "certification guides of processors, such as Elavon's", seen},
    {"interac-card-type", error, required, "cardtype Interac, without further words", "Interac",
     "cardtype", moneris, seen},
    {"interac-heading", warning, required,
     "the heading TRANSACTION RECORD or RELEVE DE TRANSACTION", "Interac in the general forms",
     "cardtype", moneris, seen},
    {"interac-heading-language", warning, required,
     "the heading TRANSACTION RECORD or RELEVE DE TRANSACTION",
     "Interac in Moneris in-store, copies in other languages", "cardtype", moneris, seen},
    {"interac-account-type", error, required, "CHEQUING, SAVINGS or FLASH DEFAULT",
     "Interac, but for Moneris e-commerce", "rcpt_acct_type", moneris, seen},
    {"signature-nowhere", error, required, "a signature line on the merchant's copy",
     "u_need_signature", "u_need_signature", guides, seen},
    {"surcharge-name", warning, required, "a surcharge that is named one", "copies in French",
     "surchargeamount", surcharges, seen},
    {"surcharge-hidden", error, required, "a surcharge as a line between subtotal and total",
     "the general forms, an order paid in full", "surchargeamount, order_total", surcharges, seen},
    {"duplicate-unmarked", error, required, "a reprint that is marked as a duplicate",
     "Moneris e-commerce", "rcpt_duplicate, u_rcpt_duplicate, u_duplicate", "Square and others",
     seen},
    {"partial-approval-unmarked", error, required, "a partial approval that is stated",
     "response code 10 (ISO 8583, partial approval)", "authamount", "Moneris", seen},
    {"partial-approval-hidden", error, required, "a partial approval with the amount still due",
     "Moneris e-commerce, an authamount below amount", "authamount", "Moneris", seen},
    {"debit-account-type", note, required, "the type of account", "debit cards in country 840",
     "rcpt_custom", "Regulation E, 12 CFR 1005.9(a)(3)", seen},
    {"benefit-balance-missing", error, required, "the remaining balance", "SNAP and EBT, approved",
     "balance", usda, seen},
    {"benefit-balance-zero", warning, required, "the remaining balance, zero too",
     "SNAP and EBT, the general forms", "balance", usda, seen},
    {"benefit-program-missing", warning, required, "the program", "SNAP and EBT",
     "cardtype, rcpt_custom", usda, seen},
};

// Called where the code is compiled, it is an error that names what is missing.
inline void no_such_rule() {}

} // namespace table

// The rule with that name, found when the code is compiled.
consteval const Qel_rcpt_rule_t &rule_named(std::string_view name)
{
    for (const Qel_rcpt_rule_t &rule : table::rules) {
        if (name == rule.name)
            return rule;
    }
    table::no_such_rule(); // ends the compilation
    return table::rules[0];
}

} // namespace qel_rcpt::check

#endif
