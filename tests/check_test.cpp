// The rules of the check: for each a record that breaks it and one nearly the same that does not;
// what the samples are told.
#include "checked_record.hpp"

#include <fstream>
#include <set>

namespace
{

using test::Check;
using test::clean_sale;
using test::find;
using test::finding;
using test::findings_of;
using test::rules_in;
using test::setting;

constexpr std::size_t whole = QEL_RCPT_NO_OFFSET;

// Changes to the clean sale, as "key:value,key:value".
struct rule_case {
    const char *rule;
    const char *broken;
    const char *fine;
    std::size_t offset = whole; // of the finding
    setting where = {};
};

const setting canada{.country = 124, .currency = 124};
const setting canada_in_store{.country = 124, .currency = 124, .form = QEL_RCPT_FORM_MONERIS};
const setting canada_ecommerce{
    .country = 124, .currency = 124, .form = QEL_RCPT_FORM_MONERIS_ECOMM};
const setting germany{.country = 276, .currency = 978};

const rule_case rule_cases[] = {
    // Values that cannot be used
    {"amount-unreadable", "amount:$12.34", "amount:12.34", 0},
    {"amount-unreadable", R"(tax:"1,234.50")", "tax:1234.50", 1},
    {"amount-unreadable", R"(amount:"12,34")", "amount: 12.34 ", 2},
    {"amount-unreadable", "amount:1.0E7", "amount:+1.0", 3},
    {"amount-unreadable", "tax:.", "tax:.5", 1},
    {"amount-unreadable", "tax:- 1", "tax:0", 1},
    {"amount-unreadable", "balance:none", "balance:0.00", 0},
    {"amount-unreadable", R"(line_items:"[{""name"":""a"",""price"":""$1""}]")",
     R"(line_items:"[{""name"":""a"",""price"":""1""}]")", 21},
    {"amount-decimals", "amount:3.4499999999999997", "amount:3.4400000", 4},
    {"amount-decimals", "tax:0.105", "tax:0.10", 4},
    {"amount-too-large", "amount:1234567890123456", "amount:000000000123456789012345"},
    {"amount-negative", "tax:-1.00", "tax:-0.00"},
    {"amount-negative", "amount:-5", "balance:-5"},
    {"host-time-unreadable", "rcpt_host_ts:2026-03-14", "rcpt_host_ts:031426094107", 4},
    {"host-time-unreadable", "rcpt_host_ts:022926000000", "rcpt_host_ts:022928000000", 2},
    {"host-time-unreadable", "rcpt_host_ts:123126245959", "rcpt_host_ts:123126235959", 6},
    {"host-time-unreadable", "rcpt_host_ts:130126000000", "rcpt_host_ts:120126000000", 0},
    {"host-time-unreadable", "rcpt_host_ts:0314260941070", "rcpt_host_ts:031426094160", 12},
    {"timestamp-unreadable", "timestamp:2026-03-14",
     "timestamp:2026-03-14,rcpt_host_ts:031426094107", 4},
    {"timestamp-implausible", "timestamp:1773502867000", "timestamp:4102444799"},
    {"timestamp-implausible", "timestamp:0", "timestamp:946684800"},
    {"number-unreadable", "laneid:A", "laneid:12"},
    {"number-unreadable", "ptrannum:0", "ptrannum:"},
    {"flag-unclear", "rcpt_duplicate:X", "rcpt_duplicate:N"},
    {"flag-unclear", "u_standin:2", "u_standin:On"},
    {"result-unknown", "code:APPROVED", "code:Success"},
    {"result-unknown", "orig_code:OK", "orig_code:deny"},
    {"reason-unknown", "u_errorcode:BROKEN", "u_errorcode:emv_card_removed"},
    {"reason-unknown", "reversal_reason:TIMEOUT", "reversal_reason:CardRemoved"},
    {"action-unknown", "action:purchase", "action:Sale"},
    {"action-unknown", "action_trans:preauthcomplete", "action_trans:preauth"},
    {"action-unknown", "action_trans:reserve", "action_trans:preauthcomplete", whole,
     canada_in_store},
    {"entry-mode-unknown", "rcpt_entry_mode:chip", "rcpt_entry_mode:c"},
    {"currency-unknown", "", "", whole, {.country = 392, .currency = 392}},
    {"currency-misnamed",
     "",
     "",
     whole,
     {.country = 276, .currency = 978, .form = QEL_RCPT_FORM_MONERIS_ECOMM}},
    {"chip-value-malformed", "rcpt_emv_aid:VISA", "rcpt_emv_aid:a000000003", 0},
    {"chip-value-malformed", "rcpt_emv_tvr:008000", "rcpt_emv_tvr:0000000000", 6},
    {"chip-value-malformed", "rcpt_emv_tsi:E8 0", "rcpt_emv_tsi:", 2},
    {"value-cut", "amount:100.00", "amount:99.00", whole, canada_ecommerce},
    {"value-cut", R"(moneris_rcpt_data:"{""items"":[{""sku"":""ABCD-12345""}]}")",
     R"(moneris_rcpt_data:"{""items"":[{""sku"":""ABCD-éé4""}]}")", 17, canada_ecommerce},
    {"unknown-key", "ammount:1", "balance:1"},
    {"unknown-key", "Amount:1", "amount:1"},

    // Documents
    {"line-items-unreadable", R"(line_items:"[{""name"":""Rye""")", "line_items:[]", 14},
    {"line-items-unreadable", R"(line_items:" {""name"":""Rye""}")", "line_items:", 1},
    {"line-items-unreadable", "line_items:Rye", "line_items:[ ]", 0},
    {"line-items-unreadable", R"(line_items:"/* [] */ {}")", "line_items:/* 2 {items} */ []", 9},
    {"receipt-data-unreadable", "moneris_rcpt_data:[]", "moneris_rcpt_data:{}", 0,
     canada_ecommerce},
    {"receipt-data-unreadable", "moneris_rcpt_data:// an {object}\n[]",
     "moneris_rcpt_data:// from the [shop]\n{}", 15, canada_ecommerce},
    {"entry-not-object", R"(line_items:"[""Rye""]")", "line_items:[]", 1},
    {"entry-not-object", R"(moneris_rcpt_data:"{""fees"":[1]}")",
     R"(moneris_rcpt_data:"{""fees"":[{}]}")", 9, canada_ecommerce},
    {"entry-without-name", R"(line_items:"[{""nme"":""Rye""}]")",
     R"(line_items:"[{""name"":""Rye""}]")", 1},
    {"entry-without-name", R"(line_items:"[{""name"":""Rye"",""modifiers"":[{""name"":""""}]}]")",
     R"(line_items:"[{""name"":""Rye"",""modifiers"":[{""name"":""x""}]}]")", 28},
    {"member-unknown", R"(line_items:"[{""name"":""a"",""prise"":""1""}]")",
     R"(line_items:"[{""name"":""a"",""notes"":""1""}]")", 13},
    {"member-unknown", R"(moneris_rcpt_data:"{""Items"":[]}")",
     R"(moneris_rcpt_data:"{""items"":[]}")", 1, canada_ecommerce},
    {"member-unknown", R"(moneris_rcpt_data:"{""Fees"":[{""val"":""1""}]}")",
     R"(moneris_rcpt_data:"{""fees"":[{""val"":""1""}]}")", 1, canada_ecommerce},
    {"member-unknown", R"(moneris_rcpt_data:"{""customer"":{""bill_adr1"":""x""}}")",
     R"(moneris_rcpt_data:"{""customer"":{""bill_addr1"":""x""}}")", 13, canada_ecommerce},
    {"member-not-text", R"(line_items:"[{""name"":""a"",""price"":1.50}]")",
     R"(line_items:"[{""name"":""a"",""price"":null}]")", 21},
    {"member-not-text", R"(line_items:"[{""name"":""a"",""modifiers"":{}}]")",
     R"(line_items:"[{""name"":""a"",""modifiers"":[]}]")", 25},
    {"member-not-text", R"(moneris_rcpt_data:"{""policy"":[""x""]}")",
     R"(moneris_rcpt_data:"{""policy"":""x""}")", 10, canada_ecommerce},
    {"member-not-text", R"(moneris_rcpt_data:"{""items"":[{""qty"":1}]}")",
     R"(moneris_rcpt_data:"{""items"":[{""qty"":""1""}]}")", 17, canada_ecommerce},
    {"item-type-unknown", R"(line_items:"[{""name"":""a"",""type"":""discount""}]")",
     R"(line_items:"[{""name"":""a"",""type"":""Discount_Fixed""}]")", 20},
    {"item-type-unknown",
     R"(line_items:"[{""name"":""a"",""modifiers"":[{""name"":""b"",""type"":""cashdiscount""}]}]")",
     R"(line_items:"[{""name"":""a"",""type"":""cashdiscount""}]")", 45},
    {"amount-unreadable",
     R"(line_items:"[{""name"":""a"",""price"":""0000000000000000000000000000000000000010$""}]")",
     R"(line_items:"[{""name"":""a"",""price"":""0000000000000000000000000000000000000010""}]")",
     21},
    {"item-quantity-missing", R"(line_items:"[{""name"":""a""}]")",
     R"(line_items:"[{""name"":""a"",""qty"":""1""}]")", 1},
    {"item-percentage-unreadable",
     R"(line_items:"[{""name"":""a"",""price"":""5%"",""type"":""discount_percent""}]")",
     R"(line_items:"[{""name"":""a"",""price"":""5"",""type"":""discount_percent""}]")", 21},
    {"custom-fields-unreadable", "rcpt_custom:Table", "rcpt_custom:Table:4", 5},
    {"custom-fields-unreadable", R"(rcpt_custom:"a:""b""c,MID:1")",
     R"(rcpt_custom:"a:""b"",MID:1")", 5},
    {"custom-field-repeated", R"(rcpt_custom:"Table:4,MID:1,table:5")",
     R"(rcpt_custom:"Table:4,MID:1,table2:5")", 14},
    {"correction-type-unknown", R"(rcpt_custom:"correction_type:sale,MID:1")",
     R"(rcpt_custom:"correction_type:Purchase,MID:1")", 0, canada_in_store},

    // Contradictions
    {"subtotal-negative", "tax:12.01", "tax:12.00"},
    {"order-subtotal-negative", "order_total:1.00,order_tax:1.01",
     "order_total:1.00,order_tax:1.00"},
    {"amount-above-order", "order_total:11.99", "order_total:12.00"},
    {"discount-negative", "cardtype:cash,discountamount:1,order_cash_discount:1.01",
     "cardtype:cash,discountamount:1,order_cash_discount:1"},
    {"discount-negative", "cardtype:Cash,discountamount:1,order_cash_discount:2,order_total:0.00",
     "cardtype:Cash,discountamount:1,order_cash_discount:2,order_total:20.00"},
    {"authamount-above-amount", "authamount:12.01", "authamount:11.99"},
    {"approval-not-partial", "authamount:12.00", "authamount:12.00,code:DENY"},
    {"approval-not-partial", "authamount:0.00", "authamount:"},
    {"approval-not-partial", "authamount:0,amount:0", "authamount:none"}, // which is unreadable
    {"decline-called-partial", "authamount:5,code:DENY", "authamount:5", whole, canada_in_store},
    {"tip-twice", "examount:1,u_tip:1", "examount:0.00,u_tip:1"},
    {"cash-back-twice", "cashbackamount:1,u_cashback:1", "u_cashback:1"},
    {"items-total", "tax:1.99", "tax:2"},
    {"items-total", "amount:92233720368547758.07,fee:-5.00", "tax:2"}, // with the tax too large
    {"items-total", R"(line_items:"[{""name"":""a"",""qty"":""2"",""price"":""5""}]")",
     R"(line_items:"[{""name"":""a"",""qty"":""2"",""price"":""10""}]")"},
    {"items-total",
     R"(line_items:"[{""name"":""a"",""price"":""0000000000000000000000000000000000000011""}]")",
     R"(line_items:"[{""name"":""a"",""price"":""0000000000000000000000000000000000000010""}]")"},
    {"items-total",
     R"(line_items:"[{""name"":""a"",""price"":""11""},{""name"":""b"",""price"":""2"",""type"":""discount_fixed""}]")",
     R"(line_items:"[{""name"":""a"",""price"":""11""},{""name"":""b"",""price"":""1"",""type"":""discount_fixed""}]")"},
    {"items-total", "order_total:30.00", "order_total:12.00,order_tax:2.00"},
    {"approval-without-code", "auth:", "auth:,u_standin:yes"},
    {"approval-without-code", "auth:", "auth:,cardtype:cash"},
    {"approval-without-code", "auth:", "auth:,code:DENY"},
    {"approval-refused-by-chip", "rcpt_emv_actype:aac", "rcpt_emv_actype:aac,code:DENY"},
    {"decline-accepted-by-chip", "code:DENY", "code:AUTH,txnstatus:VOIDED"},
    {"approval-declined", "issuer_decline:yes", "issuer_decline:no"},
    {"approval-declined", "u_errorcode:EMV_CARD_DENY", "u_errorcode:EMV_CARD_DENY,code:DENY"},
    {"approval-declined", "reversal_reason:CardDecline",
     "reversal_reason:CardDecline,txnstatus:VOIDED"},
    {"chip-data-without-chip", "rcpt_entry_mode:S", "rcpt_entry_mode:T"},
    {"chip-without-chip-data",
     "code:DENY,rcpt_emv_aid:,rcpt_emv_tvr:,rcpt_emv_tsi:,rcpt_emv_actype:,rcpt_emv_ac:",
     "code:DENY,rcpt_emv_aid:,rcpt_emv_tvr:,rcpt_emv_tsi:,rcpt_emv_actype:TC,rcpt_emv_ac:"},
    {"entry-mode-missing", "rcpt_entry_mode:", "rcpt_entry_mode:t"},
    {"signature-twice", "u_need_signature:yes,u_flowflags:SIGCAPTURED",
     "u_need_signature:no,u_flowflags:SIGCAPTURED"},
    {"pin-bypassed-and-verified", "rcpt_emv_cvm:PIN,rcpt_emv_pinbypass:1",
     "rcpt_emv_cvm:sig,rcpt_emv_pinbypass:1"},
    {"balance-without-account", "balance:1.00", "balance:1.00,u_cardclass:prepaid"},
    {"cash-with-card", "cardtype:cash", "cardtype:VISA"},
    {"time-out-called-decline", "code:TIMEOUT,phard_code:NOREPLY",
     "code:TIMEOUT,phard_code:UNKNOWN"},

    // What must not be shown
    {"card-number", "order_notes:paid with 4111 1111 1111 1111", "order_notes:4111 1111 1111 1112",
     10},
    {"card-number", "cardholdername:5555555555554444", "cardholdername:1234567812345670", 0},
    {"card-number", "my_note:378282246310005", "my_note:37828224631000", 0},
    {"account-digits-us", "account:411111XXXXXX1111", "account:XXXXXXXXXXX11111"},
    {"account-digits-us", "account:XXXXXXXXXX111111", "account:1111"},
    {"account-digits-canada", "account:***********11111", "account:************1111", whole,
     canada},
    {"account-digits", "account:XXXXXXXXXXX11111", "account:XXXXXXXXXXXX1111"},
    {"account-digits", "account:4111111XXXXX1111", "account:411111XXXXXX1111", whole, germany},
    {"account-digits", "account:4111 11XX X2XX 1111", "account:4111 11XX XXXX 1111", whole,
     germany},
    {"track-data", "printdata:;4111111111111111=29121010000000000?", "printdata:4111=2912", 1},
    {"track-data", "note:%B4111111111111111^QUILL/PAT^2912101?", "note:a^b^2912", 2},
    {"track-data", "track_2:x", "trace:x"},
    {"verification-value", "CVV2:123", "CVV2:"},
    {"verification-value", R"(rcpt_custom:"MID:1,Security code:123")",
     R"(rcpt_custom:"MID:1,Door code:123")", 6},
    {"expiry-shown", "account:XXXXXXXXXXXX1234 12/29", "account:XXXXXXXXXXXX1234", 17},
    {"expiry-shown", R"(rcpt_custom:"MID:1,Exp. date:1229")", R"(rcpt_custom:"MID:1,Expert:1229")",
     6},
    {"expiry-kept", "exp_date:1229", "expo:1229"},
    {"benefit-name", "action:ebtfssale,cardholdername:PAT", "action:ebtfssale,cardholdername:/"},
    {"interac-debit", "cardtype:Interac,u_cardclass:debit", "cardtype:Interac,u_cardclass:"},
    {"interac-debit", "cardtype:Interac,rcpt_emv_name:INTERAC DEBIT",
     "cardtype:Interac,rcpt_emv_name:INTERAC,u_cardclass:debit", whole, canada_in_store},
    {"control-character", "merch_name:a\x1B[2J", "merch_name:a\tb\r\nc", 1},
    {"control-character", "order_notes:a\xE2\x80\xAE z", "order_notes:a\xE2\x80\x93z", 1},
    {"control-character", "order_notes:ab\u061C5", "order_notes:ab\u061B5", 2},
    {"control-character", "order_notes:a\u200F5", "order_notes:a\u200D5", 1},
    {"broken-utf8", "merch_name:Caf\xE9", "merch_name:Caf\xC3\xA9", 3},

    // What must be shown
    {"merchant-name-missing", "merch_name:", "merch_name:X"},
    {"merchant-address-missing", "merch_addr1:", "merch_addr2:"},
    {"merchant-number-missing", "rcpt_custom:", "rcpt_custom:,merch_addr3:MID 0012345"},
    {"merchant-number-missing", "rcpt_custom:Table:4", "rcpt_custom:merchant ID:4"},
    {"merchant-number-missing", "rcpt_custom:,action:refund",
     "rcpt_custom:,action:refund,cardtype:cash"},
    {"time-missing", "timestamp:", "timestamp:,rcpt_host_ts:031426094107"},
    {"action-missing", "action:", "action:,action_trans:sale"},
    {"amount-missing", "amount:", "amount:,action:balanceinq"},
    {"amount-missing", "amount:,action:preauthcomplete", "amount:,action:void"},
    {"description-missing", "line_items:", "line_items:,code:DENY"},
    {"description-missing", "", "moneris_rcpt_data:{}", whole, canada_ecommerce},
    {"account-missing", "account:", "account:,cardtype:cash"},
    {"account-missing", "account:,cardtype:", "account:,cardtype:,u_errorcode:CANCELED"},
    {"result-missing", "code:,phard_code:,msoft_code:", "code:TIMEOUT,phard_code:"},
    {"decline-unstated", "code:DENY", "txnstatus:VOIDED", whole, canada_ecommerce},
    {"response-code-missing",
     "rcpt_issuer_resp_code:", "rcpt_issuer_resp_code:,rcpt_resp_code:027"},
    {"chip-identifier-missing", "rcpt_emv_aid:", "rcpt_emv_aid:,rcpt_entry_mode:M"},
    {"chip-identifier-missing", "rcpt_emv_aid:,rcpt_entry_mode:T", "rcpt_emv_aid:,action:void"},
    {"chip-name-missing", "rcpt_emv_name:", "rcpt_emv_name:,rcpt_entry_mode:S"},
    {"chip-tvr-missing", "rcpt_emv_tvr:", "rcpt_emv_tvr:,code:DENY"},
    {"chip-tsi-missing", "rcpt_emv_tsi:", "rcpt_emv_tsi:0000"},
    {"chip-cryptogram-missing", "rcpt_emv_ac:", "rcpt_emv_ac:,rcpt_entry_mode:M"},
    {"chip-cryptogram-half", "rcpt_emv_actype:", "rcpt_emv_ac:,rcpt_emv_actype:"},
    {"chip-verification-missing", "rcpt_emv_cvm:", "rcpt_emv_cvm:,rcpt_emv_pinbypass:yes"},
    {"decline-data-missing", "code:DENY,rcpt_emv_ac:", "code:DENY,rcpt_emv_ac:,rcpt_entry_mode:S"},
    {"decline-data-missing", "action:refund,code:DENY,rcpt_emv_ac:",
     "action:refund,code:DENY,rcpt_entry_mode:T,rcpt_emv_ac:"},
    {"interac-card-type", "cardtype:Interac Debit", "cardtype:INTERAC"},
    {"interac-heading", "cardtype:Interac", "cardtype:VISA", whole, canada},
    {"interac-heading-language",
     "cardtype:Interac",
     "cardtype:VISA",
     whole,
     {.country = 124,
      .currency = 124,
      .form = QEL_RCPT_FORM_MONERIS,
      .cust_lang = QEL_RCPT_LANG_ES}},
    {"interac-account-type", "cardtype:Interac", "cardtype:Interac,rcpt_acct_type:Savings"},
    {"interac-account-type", "cardtype:Interac,rcpt_acct_type:debit",
     "cardtype:Interac,rcpt_acct_type:FLASH"},
    {"signature-nowhere",
     "u_need_signature:yes",
     "u_need_signature:no",
     whole,
     {.industry = QEL_RCPT_IND_SELFSERV}},
    {"surcharge-name",
     "surchargeamount:1",
     "surchargeamount:0.00",
     whole,
     {.cust_lang = QEL_RCPT_LANG_FR}},
    {"surcharge-hidden", "surchargeamount:1,order_total:12.00",
     "surchargeamount:1,order_total:24.00"},
    {"duplicate-unmarked", "u_duplicate:yes", "u_duplicate:no", whole, canada_ecommerce},
    {"partial-approval-unmarked", "rcpt_issuer_resp_code:10",
     "rcpt_issuer_resp_code:10,authamount:5.00"},
    {"partial-approval-hidden", "authamount:5", "authamount:", whole, canada_ecommerce},
    {"partial-approval-hidden", "authamount:0.00", "authamount:12.00", whole, canada_ecommerce},
    {"debit-account-type", "u_cardclass:debit",
     R"(u_cardclass:debit,rcpt_custom:"MID:1,Account:Checking")"},
    {"benefit-balance-missing", "action:ebtfssale", "action:ebtfssale,balance:3.00"},
    {"benefit-balance-zero", "action:ebtfssale,balance:0.00", "action:ebtfssale,balance:0.01"},
    {"benefit-program-missing", "action:ebtfssale,balance:1",
     "action:ebtfssale,balance:1,cardtype:EBT"},
};

// Rules about the configuration alone have no record that keeps them.
bool is_about_configuration(const rule_case &c)
{
    return std::string_view(c.rule).starts_with("currency-");
}

test::record sale_with(const char *changes)
{
    test::record sale{clean_sale};
    sale.set(changes);
    return sale;
}

TEST_F(Check, FindsNothingWrongWithACleanSale)
{
    EXPECT_EQ(rules_in(findings_of(test::record(clean_sale))), "");
}

TEST_F(Check, FindsWhatBreaksARuleAndNothingElseOfIt)
{
    for (const rule_case &c : rule_cases) {
        SCOPED_TRACE(std::string(c.rule) + " with " + c.broken + " and with " + c.fine);
        const auto broken = findings_of(sale_with(c.broken), c.where);
        const finding *found = find(broken, c.rule);
        ASSERT_NE(found, nullptr) << rules_in(broken);
        EXPECT_EQ(found->offset, c.offset);
        EXPECT_GT(found->message.size(), 10U);
        const auto fine = findings_of(sale_with(c.fine), c.where);
        const bool is_silent = is_about_configuration(c) || std::string_view(c.fine) == c.broken ||
                               find(fine, c.rule) == nullptr;
        EXPECT_TRUE(is_silent) << rules_in(fine);
    }
}

// What is said of each of the broken records, by heart: tests/check_messages.txt, read line by
// line.
TEST_F(Check, SaysWhatIsWrongAndWhatToDo)
{
    std::ifstream file(QELRCPT_SOURCE "/tests/check_messages.txt");
    ASSERT_TRUE(file);
    std::string wanted;
    for (const rule_case &c : rule_cases) {
        const auto findings = findings_of(sale_with(c.broken), c.where);
        const finding *found = find(findings, c.rule);
        ASSERT_NE(found, nullptr) << c.rule;
        std::getline(file, wanted);
        EXPECT_EQ(c.rule + (" [" + found->key) + "] " + found->message, wanted);
    }
    EXPECT_FALSE(std::getline(file, wanted)) << wanted;
}

TEST_F(Check, HasACaseForEachRuleAndNoRuleTwice)
{
    std::set<std::string_view> names;
    for (std::size_t i = 0; const Qel_rcpt_rule_t *rule = Qel_rcpt_check_rule(i); ++i) {
        EXPECT_TRUE(names.insert(rule->name).second) << rule->name;
        EXPECT_TRUE(std::ranges::any_of(
            rule_cases, [&](const rule_case &c) { return rule->name == std::string_view(c.rule); }))
            << rule->name << " has no case";
        EXPECT_EQ(rule->source[0] == '\0', rule->date[0] == '\0') << rule->name;
    }
    EXPECT_GE(names.size(), 80U);
}

// The columns of the e-commerce layout: 34 and 35 for the addresses, 8, 27, 5, 14 and 8 for items;
// 250 bytes for a reference number.
TEST_F(Check, KnowsTheColumnsOfReceiptData)
{
    struct column {
        std::string begin;
        std::string end;
        std::size_t width;
        const char *key = "moneris_rcpt_data";
    };
    std::vector<column> columns = {
        {R"({"items":[{"sku":")", "\"}]}", 8},      {R"({"items":[{"descr":")", "\"}]}", 27},
        {R"({"items":[{"qty":")", "\"}]}", 5},      {R"({"items":[{"amount":")", "\"}]}", 14},
        {R"({"items":[{"subtotal":")", "\"}]}", 8}, {R"({"fees":[{"name":")", "\"}]}", 14},
        {R"({"fees":[{"val":")", "\"}]}", 8},       {"MID:1,refnum:", "", 250, "rcpt_custom"},
    };
    for (const std::string field :
         {"name", "addr1", "addr2", "addr3", "city", "state", "zip", "country"}) {
        columns.push_back({R"({"customer":{"bill_)" + field + R"(":")", "\"}}", 34});
        columns.push_back({R"({"customer":{"ship_)" + field + R"(":")", "\"}}", 35});
    }
    for (const auto &[begin, end, width, key] : columns) {
        for (const bool is_cut : {false, true}) {
            test::record sale = sale_with("moneris_rcpt_data:{}");
            const std::string data = begin + std::string(width + (is_cut ? 1 : 0), '1') + end;
            Qel_hash_dict_insert(sale, key, data.c_str());
            const auto findings = findings_of(sale, canada_ecommerce);
            EXPECT_EQ(rules_in(findings), is_cut ? "value-cut" : "") << data;
            EXPECT_EQ(findings.empty() ? key : findings[0].key, std::string_view(key));
        }
    }
}

// 253 bytes fit behind the "+ " that add-ons have in plain text, and modifiers of any type that is
// known; other names wrap.
TEST_F(Check, KnowsTheNamesOfItemsThatAreCut)
{
    struct name_case {
        const char *type; // none, where empty
        bool is_modifier;
        bool is_cut;
    };
    const name_case cases[] = {
        {"", false, false},
        {"", true, false},
        {"item", false, false},
        {"item", true, true},
        {"addon", false, true},
        {"AddOn", true, true},
        {"discount_fixed", false, false},
        {"discount_fixed", true, true},
        {"discount_percent", false, false},
        {"discount_percent", true, true},
        {"cashdiscount", false, false},
        {"surprise", true, false},
    };
    for (const auto &[type, is_modifier, is_cut] : cases) {
        for (const std::size_t size : {std::size_t{253}, std::size_t{254}}) {
            std::string entry = R"({"name":")" + std::string(size, 'n') + R"(","qty":"1")";
            if (*type != '\0')
                entry += std::string(R"(,"type":")") + type + '"';
            entry += '}';
            if (is_modifier)
                entry = R"({"name":"a","qty":"1","modifiers":[)" + entry + "]}";
            test::record sale{clean_sale};
            Qel_hash_dict_insert(sale, "line_items", ("[" + entry + "]").c_str());
            const auto findings = findings_of(sale);
            const finding *cut = find(findings, "value-cut");
            ASSERT_EQ(cut != nullptr, is_cut && size == 254) << entry;
            if (cut != nullptr) {
                EXPECT_EQ(cut->offset, is_modifier ? 44U : 9U) << entry;
            }
        }
    }
}

TEST_F(Check, AsksForCurrenciesAsTheyAreWritten)
{
    const auto rules = [](std::uint32_t country, std::uint32_t currency, Qel_rcpt_form_t form) {
        return rules_in(findings_of(sale_with("moneris_rcpt_data:{}"),
                                    {.country = country, .currency = currency, .form = form}));
    };
    for (const std::uint32_t currency : {840U, 124U, 978U, 826U, 36U, 516U})
        EXPECT_EQ(rules(276, currency, QEL_RCPT_FORM_GENERAL), "") << currency;
    EXPECT_EQ(rules(392, 392, QEL_RCPT_FORM_GENERAL), "currency-unknown");
    EXPECT_EQ(rules(124, 124, QEL_RCPT_FORM_MONERIS_ECOMM), "");
    EXPECT_EQ(rules(826, 826, QEL_RCPT_FORM_MONERIS_ECOMM), "");
    EXPECT_EQ(rules(978, 978, QEL_RCPT_FORM_MONERIS_ECOMM), ""); // no country, but named EUR
    EXPECT_EQ(rules(276, 840, QEL_RCPT_FORM_MONERIS_ECOMM), "");
    EXPECT_EQ(rules(276, 978, QEL_RCPT_FORM_MONERIS_ECOMM), "currency-misnamed");
    EXPECT_EQ(rules(124, 840, QEL_RCPT_FORM_MONERIS_ECOMM), "currency-misnamed");
}

TEST_F(Check, LooksAtDiscountsWhereTheyAreSplit)
{
    const test::record sale = sale_with("cardtype:cash,discountamount:1,order_cash_discount:2");
    const auto is_found = [&](Qel_rcpt_form_t form) {
        return find(findings_of(sale, {.form = form}), "discount-negative") != nullptr;
    };
    EXPECT_TRUE(is_found(QEL_RCPT_FORM_GENERAL));
    EXPECT_FALSE(is_found(QEL_RCPT_FORM_MONERIS));
    EXPECT_FALSE(is_found(QEL_RCPT_FORM_MONERIS_ECOMM));
}

TEST_F(Check, TakesTheFormOfTheMerchantsIndustry)
{
    const setting where{.form = QEL_RCPT_FORM_MONERIS, .industry = QEL_RCPT_IND_ECOMM};
    EXPECT_NE(find(findings_of(sale_with("code:DENY"), where), "decline-unstated"), nullptr);
}

TEST_F(Check, AcceptsWhatMayBeAbsent)
{
    EXPECT_GT(Qel_rcpt_check(nullptr, nullptr, QEL_RCPT_FORM_GENERAL, nullptr, nullptr), 0U);
    EXPECT_EQ(Qel_rcpt_check(test::record(clean_sale), nullptr, static_cast<Qel_rcpt_form_t>(77),
                             nullptr, nullptr),
              0U);
}

TEST_F(Check, NamesTheKeyThatWasProbablyMeant)
{
    struct key_case {
        const char *key;
        const char *said;
    };
    const key_case cases[] = {
        {"ammount", "did you mean 'amount'?"},
        {"AMOUNT", "did you mean 'amount'?"},
        {"rcpt_emv_adi", "did you mean 'rcpt_emv_aid'?"},
        {"qqqqqqqq", "nothing reads the key 'qqqqqqqq'"},
        {"QQQQQQQQQQQQQQQQQQQQQQQQQQQQQQQQ", // of 32
         "nothing reads the key 'QQQQQQQQQQQQQQQQQQQQQQQQQQQQQQQQ'"},
    };
    for (const auto &[key, said] : cases) {
        test::record sale{clean_sale};
        Qel_hash_dict_insert(sale, key, "1");
        const auto findings = findings_of(sale);
        ASSERT_EQ(rules_in(findings), "unknown-key") << key;
        EXPECT_TRUE(findings[0].message.ends_with(said)) << findings[0].message;
    }
}

TEST_F(Check, ReadsDictionariesThatForgiveTheCaseOfKeys)
{
    const test::record sale{clean_sale};
    const qel::dict forgiving(Qel_hash_dict_create(16, 75, QEL_HASH_DICT_CASECMP));
    for (const auto [key, value] : qel::pairs(sale)) {
        std::string capital(key);
        Qel_str_upper(capital.data());
        Qel_hash_dict_insert(forgiving.get(), capital.c_str(), value);
    }
    EXPECT_EQ(Qel_rcpt_check(forgiving.get(), nullptr, QEL_RCPT_FORM_GENERAL, nullptr, nullptr),
              0U);
}

TEST_F(Check, PutsQuestionMarksForWhatATerminalWouldObey)
{
    const auto findings = findings_of(sale_with("amount:1\x1B\u009B\u200F\u061C\u202E\xE9.é"));
    const finding *found = find(findings, "amount-unreadable");
    ASSERT_NE(found, nullptr);
    EXPECT_TRUE(found->message.starts_with("'1??????.é' is")) << found->message;
}

// A message is printed and logged: it never repeats a card number, nor control characters.
TEST_F(Check, SaysNothingThatMustNotBeSaid)
{
    const auto findings = findings_of(
        sale_with("amount:4111111111111111.5.5,tax:1\x1B[2J,laneid:4111 1111 1111 1111"));
    for (const char *rule : {"amount-unreadable", "number-unreadable"})
        ASSERT_NE(find(findings, rule), nullptr);
    for (const finding &f : findings) {
        EXPECT_EQ(f.message.find("1111"), std::string::npos) << f.message;
        EXPECT_EQ(f.message.find('\x1B'), std::string::npos) << f.message;
    }
    for (const char *code :
         {"41111111111111112512", "0004111111111111111", "4111.1111/1111\n1111"}) {
        const auto told = findings_of({{"action", "sale"}, {"code", code}});
        ASSERT_NE(find(told, "result-unknown"), nullptr);
        EXPECT_EQ(find(told, "result-unknown")->message.find("1111"), std::string::npos) << code;
    }
}

} // namespace
