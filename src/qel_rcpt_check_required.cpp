// What a receipt must show.
#include "qel_rcpt_check.hpp"

namespace qel_rcpt::check
{

namespace
{

bool lacks_name(const subject &record)
{
    return !record.has("merch_name");
}

bool lacks_address(const subject &record)
{
    return !record.has("merch_addr1");
}

// A number of its own field, or on an address line that is named so.
bool lacks_merchant_number(const subject &record)
{
    if (record.is_cash())
        return false;
    for (const known_key line : {known_key("merch_addr2"), known_key("merch_addr3")}) {
        if (record.holds(line, "mid") || record.holds(line, "merchant"))
            return false;
    }
    field_reader fields(record.text("rcpt_custom"));
    for (field each; fields.next(each);) {
        static constexpr std::string_view names[] = {"mid",      "merchant id", "merchant number",
                                                     "merchant", "merchant no", "merchant no."};
        if (is_word(each.name, names))
            return false;
    }
    return true;
}

bool lacks_time(const subject &record)
{
    return !record.has("rcpt_host_ts") && !record.has("timestamp");
}

bool lacks_action(const subject &record)
{
    return record.action() == nullptr;
}

bool lacks_amount(const subject &record)
{
    return !record.has("amount") && (record.is_payment() || record.action() == nullptr);
}

bool is_purchase(const subject &record)
{
    return record.is_payment() && record.is_approved();
}

bool lacks_items(const subject &record)
{
    return is_purchase(record) && record.is_general() && !record.has("line_items");
}

bool lacks_receipt_data(const subject &record)
{
    return is_purchase(record) && record.is_ecommerce() && !record.has("moneris_rcpt_data");
}

constexpr const char *undescribed =
    "the receipt does not say what was bought; some schemes ask for it";

bool lacks_result(const subject &record)
{
    return !record.is_ecommerce() && record.result() == outcome::open && !record.has("code") &&
           !record.has("orig_code") && !record.has("phard_code") && !record.has("orig_phard_code");
}

bool is_decline_unstated(const subject &record)
{
    return record.is_ecommerce() && record.result() != outcome::approved &&
           record.result() != outcome::voided;
}

// Where the payment came to nothing, perhaps no card was read.
bool lacks_account(const subject &record)
{
    return record.is_card_payment() && !record.is_ecommerce() && !record.has("account") &&
           (record.is_approved() || record.has("cardtype"));
}

// Chip

bool is_chip_payment(const subject &record)
{
    return record.is_payment() && record.is_chip_entry() && record.is_approved() &&
           !record.is_ecommerce();
}

bool lacks_aid(const subject &record)
{
    return is_chip_payment(record) && !record.has("rcpt_emv_aid");
}

bool lacks_application_name(const subject &record)
{
    return is_chip_payment(record) && !record.has("rcpt_emv_name");
}

bool lacks_verification_results(const subject &record)
{
    return is_chip_payment(record) && !record.has("rcpt_emv_tvr");
}

bool lacks_status_information(const subject &record)
{
    return is_chip_payment(record) && !record.has("rcpt_emv_tsi");
}

bool lacks_cryptogram(const subject &record)
{
    return is_chip_payment(record) && record.is_general() && !record.has("rcpt_emv_ac");
}

// In plain text the type is the cryptogram's label.
bool has_half_a_cryptogram(const subject &record)
{
    return record.is_general() && record.has("rcpt_emv_ac") != record.has("rcpt_emv_actype");
}

bool lacks_verification_method(const subject &record)
{
    return is_chip_payment(record) && record.is("rcpt_entry_mode", "c") &&
           !record.has("rcpt_emv_cvm") && !record.is_set("rcpt_emv_pinbypass");
}

bool lacks_decline_data(const subject &record)
{
    return record.result() == outcome::declined && record.is("rcpt_entry_mode", "c") &&
           record.is_general() && !record.has("rcpt_emv_ac");
}

bool lacks_response_code(const subject &record)
{
    return record.is_card_payment() && !record.has("rcpt_issuer_resp_code") &&
           !record.has("rcpt_resp_code") && record.has("code") &&
           (record.is_approved() || record.is_set("issuer_decline"));
}

// Interac

bool is_interac_misspelt(const subject &record)
{
    return !record.is_interac() && record.holds("cardtype", "interac");
}

bool lacks_interac_heading(const subject &record)
{
    return record.is_interac() && record.is_general();
}

bool has_interac_heading_in_other_language(const subject &record)
{
    return record.is_interac() && record.is_in_store() &&
           (record.has_language(QEL_RCPT_LANG_ES) || record.has_language(QEL_RCPT_LANG_DE) ||
            record.has_language(QEL_RCPT_LANG_IT));
}

bool lacks_interac_account_type(const subject &record)
{
    static constexpr std::string_view types[] = {"checking", "chequing", "savings"};
    const bool is_known = is_word(record.text("rcpt_acct_type"), types) ||
                          Qel_str_caseeq_start(record.get("rcpt_acct_type"), "flash");
    return record.is_interac() && !is_known && !record.is_ecommerce() &&
           (record.is_payment() || record.has("rcpt_acct_type"));
}

// Signature, surcharge, marks

bool lacks_copy_to_sign(const subject &record)
{
    return record.is_set("u_need_signature") &&
           (!record.has_merchant_copy() || record.is_ecommerce());
}

bool has_surcharge_called_fee(const subject &record)
{
    return record.amount("surchargeamount") > 0 && record.has_language(QEL_RCPT_LANG_FR);
}

// An order paid in full shows the order's money alone.
bool hides_surcharge(const subject &record)
{
    return record.is_general() && record.amount("surchargeamount") > 0 &&
           is_order_paid_in_full(record.record());
}

bool hides_duplicate(const subject &record)
{
    return record.is_ecommerce() && Qel_rcpt_is_duplicate(record.record());
}

bool lacks_authorized_amount(const subject &record)
{
    return record.is("rcpt_issuer_resp_code", "10") && record.is_approved() &&
           !record.has("authamount");
}

bool hides_partial_approval(const subject &record)
{
    return record.is_ecommerce() && record.has("authamount") &&
           record.amount("authamount") < record.amount("amount");
}

// Regulation E and benefits

bool is_us_debit(const subject &record)
{
    return record.is_in(country_us) && record.is_debit() && record.is_payment() &&
           record.is_approved();
}

bool lacks_us_account_type(const subject &record)
{
    field_reader fields(record.text("rcpt_custom"));
    bool is_named = false;
    for (field each; fields.next(each);) {
        static constexpr std::string_view names[] = {"account", "account type", "acct type",
                                                     "from account", "type of account"};
        is_named = is_named || is_word(each.name, names);
    }
    return is_us_debit(record) && !is_named;
}

bool lacks_balance(const subject &record)
{
    return record.is_benefit() && record.is_approved() && !record.has("balance");
}

bool hides_zero_balance(const subject &record)
{
    return record.is_benefit() && record.is_general() && record.has("balance") &&
           record.amount("balance") <= 0;
}

// The title of such a sale is "Purchase".
bool lacks_benefit_program(const subject &record)
{
    return record.is_benefit() && !record.holds("cardtype", "ebt") &&
           !record.holds("cardtype", "snap") && !record.holds("rcpt_custom", "ebt") &&
           !record.holds("rcpt_custom", "snap");
}

constexpr condition conditions[] = {
    {rule_named("merchant-name-missing"), lacks_name, "merch_name",
     "the receipt does not name the merchant; give merch_name"},
    {rule_named("merchant-address-missing"), lacks_address, "merch_addr1",
     "the receipt does not say where the merchant is; give merch_addr1"},
    {rule_named("merchant-number-missing"), lacks_merchant_number, "rcpt_custom",
     "some acquirers ask for the merchant's number: a field of rcpt_custom, such as MID:0012345"},
    {rule_named("time-missing"), lacks_time, "timestamp",
     "without rcpt_host_ts and timestamp the receipt shows the time at which it is rendered"},
    {rule_named("action-missing"), lacks_action, "action",
     "the receipt does not say what was done; give action, such as sale"},
    {rule_named("amount-missing"), lacks_amount, "amount",
     "the receipt shows no amount; give amount"},
    {rule_named("description-missing"), lacks_items, "line_items", undescribed},
    {rule_named("description-missing"), lacks_receipt_data, "moneris_rcpt_data", undescribed},
    {rule_named("account-missing"), lacks_account, "account",
     "the receipt does not show the masked account number; give account"},
    {rule_named("result-missing"), lacks_result, "code",
     "there is no result code, so the receipt would say \"Transaction Not Completed\"; give code"},
    {rule_named("decline-unstated"), is_decline_unstated, "code",
     "this form does not say that the transaction was not approved; send no receipt of it, or "
     "another form"},
    {rule_named("response-code-missing"), lacks_response_code, "rcpt_issuer_resp_code",
     "there is no response code of the issuer or the server"},
    {rule_named("chip-identifier-missing"), lacks_aid, "rcpt_emv_aid",
     "the receipt of a chip transaction must show the application identifier; give rcpt_emv_aid"},
    {rule_named("chip-name-missing"), lacks_application_name, "rcpt_emv_name",
     "the receipt of a chip transaction must show the application's preferred name or label; give "
     "rcpt_emv_name"},
    {rule_named("chip-tvr-missing"), lacks_verification_results, "rcpt_emv_tvr",
     "there are no terminal verification results; give rcpt_emv_tvr"},
    {rule_named("chip-tsi-missing"), lacks_status_information, "rcpt_emv_tsi",
     "there is no transaction status information; give rcpt_emv_tsi"},
    {rule_named("chip-cryptogram-missing"), lacks_cryptogram, "rcpt_emv_ac",
     "there is no application cryptogram (rcpt_emv_ac)"},
    {rule_named("chip-cryptogram-half"), has_half_a_cryptogram, "rcpt_emv_actype",
     "plain text shows the cryptogram only with its type, and neither alone; give rcpt_emv_ac and "
     "rcpt_emv_actype"},
    {rule_named("chip-verification-missing"), lacks_verification_method, "rcpt_emv_cvm",
     "nothing says how the cardholder was verified; give rcpt_emv_cvm, none where nobody asked"},
    {rule_named("decline-data-missing"), lacks_decline_data, "rcpt_emv_ac",
     "the receipt of a declined chip transaction carries the chip's data of the decision; give "
     "rcpt_emv_ac and rcpt_emv_actype"},
    {rule_named("interac-card-type"), is_interac_misspelt, "cardtype",
     "only cardtype Interac, without further words, makes the account type show"},
    {rule_named("interac-heading"), lacks_interac_heading, "cardtype",
     "a receipt of an Interac card is headed TRANSACTION RECORD, which the general forms do not "
     "have; use the Moneris in-store form, or print the heading in front"},
    {rule_named("interac-heading-language"), has_interac_heading_in_other_language, "cardtype",
     "a receipt of an Interac card is headed in English or French; choose one of the two"},
    {rule_named("interac-account-type"), lacks_interac_account_type, "rcpt_acct_type",
     "the receipt of an Interac card says CHEQUING, SAVINGS or FLASH DEFAULT; give rcpt_acct_type "
     "chequing, savings or flash"},
    {rule_named("signature-nowhere"), lacks_copy_to_sign, "u_need_signature",
     "a signature is wanted, but this industry or form has no merchant copy with a line for it"},
    {rule_named("surcharge-name"), has_surcharge_called_fee, "surchargeamount",
     "in French the surcharge reads FRAIS, as a fee does; ask the acquirer whether that will do"},
    {rule_named("surcharge-hidden"), hides_surcharge, "surchargeamount",
     "this payment is the whole of order_total, and such a receipt shows the order's money alone, "
     "without the surcharge; leave order_total out"},
    {rule_named("duplicate-unmarked"), hides_duplicate, "rcpt_duplicate",
     "this form has no mark of a duplicate; put it in front of the receipt"},
    {rule_named("partial-approval-unmarked"), lacks_authorized_amount, "authamount",
     "by its response code the approval is a partial one, but without authamount the receipt would "
     "state a full one"},
    {rule_named("partial-approval-hidden"), hides_partial_approval, "authamount",
     "this form shows neither what was authorized nor what is still due"},
    {rule_named("debit-account-type"), lacks_us_account_type, "rcpt_custom",
     "where a card gives access to several accounts the receipt names the type of the one: a field "
     "of rcpt_custom, such as Account:Checking"},
    {rule_named("benefit-balance-missing"), lacks_balance, "balance",
     "a receipt of SNAP or EBT shows the remaining balance; give balance"},
    {rule_named("benefit-balance-zero"), hides_zero_balance, "balance",
     "HTML, XML and JSON do not show a balance of zero; say it in a field of rcpt_custom"},
    {rule_named("benefit-program-missing"), lacks_benefit_program, "cardtype",
     "the title of such a sale is \"Purchase\"; say SNAP or EBT in cardtype or a field of "
     "rcpt_custom"},
};

} // namespace

rule_group requirement_rules()
{
    return {conditions, {}};
}

} // namespace qel_rcpt::check
