// Values that contradict each other.
#include "qel_rcpt_check.hpp"

namespace qel_rcpt::check
{

namespace
{

bool has_negative_subtotal(const subject &record)
{
    return record.amount("amount") >= 0 && record.subtotal() < 0;
}

bool has_negative_order_subtotal(const subject &record)
{
    return record.amount("order_total") >= 0 && record.order_subtotal() < 0;
}

bool pays_more_than_order(const subject &record)
{
    return record.amount("order_total") > 0 &&
           record.amount("amount") > record.amount("order_total");
}

// Beside an order's money, the discount for cash is not part of the payment's.
bool has_negative_discount(const subject &record)
{
    return record.is_general() && record.is_cash() && !record.has_order() &&
           record.amount("discountamount") != 0 &&
           record.amount("order_cash_discount") > record.amount("discountamount");
}

bool is_authorized_above_amount(const subject &record)
{
    return record.has("amount") && record.amount("authamount") > record.amount("amount");
}

// Any authamount calls an approval partial, but where no result is shown.
bool is_full_approval_called_partial(const subject &record)
{
    return record.is_approved() && !record.is_ecommerce() && record.amount("authamount") != 0 &&
           record.amount("authamount") == record.amount("amount");
}

bool is_nothing_called_partial(const subject &record)
{
    return record.is_approved() && !record.is_ecommerce() && is_amount(record.text("authamount")) &&
           record.amount("authamount") == 0;
}

// The in-store layout says so whatever the result is.
bool is_decline_called_partial(const subject &record)
{
    return record.is_in_store() && record.has("authamount") && record.result() == outcome::declined;
}

bool has_tip_twice(const subject &record)
{
    return record.amount("examount") != 0 && record.amount("u_tip") != 0;
}

bool has_cash_back_twice(const subject &record)
{
    return record.amount("cashbackamount") != 0 && record.amount("u_cashback") != 0;
}

bool lacks_authorization(const subject &record)
{
    return record.is_approved() && record.is_card_payment() && !record.has("auth") &&
           !record.is_set("u_standin");
}

bool is_approval_refused_by_chip(const subject &record)
{
    return record.is_approved() && record.is("rcpt_emv_actype", "aac");
}

bool is_decline_accepted_by_chip(const subject &record)
{
    return record.result() == outcome::declined && record.is("rcpt_emv_actype", "tc");
}

bool is_approval_declined(const subject &record)
{
    return record.is_approved() &&
           (was_declined_by_issuer(record.record()) || was_declined_by_card(record.record()));
}

bool has_chip_data_without_chip(const subject &record)
{
    return record.has_chip_data() && record.has("rcpt_entry_mode") && !record.is_chip_entry();
}

bool is_chip_entry_without_data(const subject &record)
{
    return record.is_payment() && record.result() == outcome::declined && record.is_chip_entry() &&
           !record.has_chip_data() && !was_card_removed(record.record());
}

bool has_chip_data_without_entry_mode(const subject &record)
{
    return record.has_chip_data() && !record.has("rcpt_entry_mode");
}

bool is_signed_twice(const subject &record)
{
    return record.is_set("u_need_signature") && Qel_rcpt_was_signature_electronic(record.record());
}

bool is_pin_bypassed_and_verified(const subject &record)
{
    return record.is_set("rcpt_emv_pinbypass") &&
           (record.is("rcpt_emv_cvm", "pin") || record.is("rcpt_emv_cvm", "pinsig"));
}

bool has_balance_without_account(const subject &record)
{
    return record.has("balance") && (record.is_cash() || record.is_card_class("credit"));
}

bool is_cash_with_card(const subject &record)
{
    return record.is_cash() &&
           (record.has("account") || record.has("cardholdername") || record.has_chip_data());
}

bool is_time_out_called_decline(const subject &record)
{
    const bool timed_out =
        record.has("orig_code") ? record.is("orig_code", "timeout") : record.is("code", "timeout");
    return record.is_general() && timed_out && record.result() == outcome::declined;
}

constexpr condition conditions[] = {
    {rule_named("subtotal-negative"), has_negative_subtotal, "amount",
     "the parts of the amount are more than the amount, so the subtotal would be below zero; check "
     "how amounts are written, and give the whole amount with its parts"},
    {rule_named("order-subtotal-negative"), has_negative_order_subtotal, "order_total",
     "order_tip and order_tax are more than order_total, so the order's subtotal would be below "
     "zero"},
    {rule_named("amount-above-order"), pays_more_than_order, "amount",
     "amount is more than order_total, the whole order's"},
    {rule_named("discount-negative"), has_negative_discount, "order_cash_discount",
     "order_cash_discount is more than discountamount, of which it is a part; the discount would "
     "be below zero"},
    {rule_named("authamount-above-amount"), is_authorized_above_amount, "authamount",
     "authamount is more than amount: the issuer cannot authorize more than was asked for"},
    {rule_named("approval-not-partial"), is_full_approval_called_partial, "authamount",
     "authamount is the whole amount, and the receipt would say \"Transaction Partially "
     "Approved\"; leave it out"},
    {rule_named("approval-not-partial"), is_nothing_called_partial, "authamount",
     "authamount is zero, so nothing would be authorized, and the receipt would say \"Transaction "
     "Partially Approved\"; leave it out"},
    {rule_named("decline-called-partial"), is_decline_called_partial, "authamount",
     "the receipt of this decline would say \"Transaction Partially Approved\" too; leave "
     "authamount out"},
    {rule_named("tip-twice"), has_tip_twice, "u_tip",
     "there is a tip within the amount (examount) and one on top of it (u_tip): the first is shown "
     "and the second added to the total; give one of them"},
    {rule_named("cash-back-twice"), has_cash_back_twice, "u_cashback",
     "there is cash back within the amount (cashbackamount) and on top of it (u_cashback): the "
     "first is shown and the second added to the total; give one of them"},
    {rule_named("approval-without-code"), lacks_authorization, "auth",
     "the transaction is approved, but there is no authorization code (auth)"},
    {rule_named("approval-refused-by-chip"), is_approval_refused_by_chip, "rcpt_emv_actype",
     "the receipt would say that the transaction is approved, but the card declined it: its "
     "cryptogram is an AAC"},
    {rule_named("decline-accepted-by-chip"), is_decline_accepted_by_chip, "rcpt_emv_actype",
     "the transaction is declined, but the card's cryptogram is a TC, an approval; was it read "
     "before the issuer answered?"},
    {rule_named("approval-declined"), is_approval_declined, "code",
     "the receipt would say that the transaction is approved, but issuer_decline, offline_decline, "
     "reversal_reason or u_errorcode says that it was declined"},
    {rule_named("chip-data-without-chip"), has_chip_data_without_chip, "rcpt_entry_mode",
     "there is data of a chip, but by the entry mode the card was not read by its chip"},
    {rule_named("chip-without-chip-data"), is_chip_entry_without_data, "rcpt_entry_mode",
     "by the entry mode the card was read by its chip, but there is no data of one"},
    {rule_named("entry-mode-missing"), has_chip_data_without_entry_mode, "rcpt_entry_mode",
     "there is data of a chip, but no entry mode (C for a chip, T for contactless)"},
    {rule_named("signature-twice"), is_signed_twice, "u_need_signature",
     "the signature was captured electronically, and the receipt would ask for another; clear "
     "u_need_signature"},
    {rule_named("pin-bypassed-and-verified"), is_pin_bypassed_and_verified, "rcpt_emv_pinbypass",
     "the PIN cannot have been both verified (rcpt_emv_cvm) and bypassed (rcpt_emv_pinbypass); the "
     "receipt would say bypassed"},
    {rule_named("balance-without-account"), has_balance_without_account, "balance",
     "there is a balance, but the payment was in cash or by a credit card, which has none to show"},
    {rule_named("cash-with-card"), is_cash_with_card, "cardtype",
     "the payment is in cash, but there is data of a card, which would be printed"},
    {rule_named("time-out-called-decline"), is_time_out_called_decline, "phard_code",
     "nobody declined, but with this phard_code the receipt of the time-out would say that the "
     "transaction is declined; leave phard_code out or make it UNKNOWN"},
};

} // namespace

rule_group contradiction_rules()
{
    return {conditions, {}};
}

} // namespace qel_rcpt::check
