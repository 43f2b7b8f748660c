#include "qel_rcpt_int.h"

#include "test_record.hpp"

#include <qelstdlib.hpp>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <iterator>
#include <random>
#include <sstream>
#include <string>
#include <string_view>
#include <vector>

#include <gtest/gtest.h>

namespace
{

using test::record;
using lines = std::vector<std::string>;

// The country is that of the currency too: Canada.
constexpr Qel_rcpt_config_t merchant(std::uint32_t industry, std::uint32_t country = 124,
                                     Qel_rcpt_lang_t customer = QEL_RCPT_LANG_EN)
{
    const auto bits = static_cast<Qel_rcpt_ind_t>(industry);
    return {customer, QEL_RCPT_LANG_EN, country, country, bits, nullptr};
}
constexpr Qel_rcpt_config_t shop = merchant(QEL_RCPT_IND_RETAIL);
constexpr Qel_rcpt_config_t french = merchant(QEL_RCPT_IND_RETAIL, 124, QEL_RCPT_LANG_FR);

std::size_t width(std::string_view text)
{
    return static_cast<std::size_t>(
        std::ranges::count_if(text, [](char c) { return (c & 0xC0) != 0x80; }));
}

std::string joined(const lines &parts, std::string_view separator)
{
    std::string all;
    for (const std::string &part : parts)
        all.append(all.empty() && &part == &parts.front() ? "" : separator).append(part);
    return all;
}

// A line with its place in short: "^TEXT" is centred, ">TEXT" ends in the last column, and
// "LEFT_RIGHT" fills the line from end to end. Whatever is none of these stays as it is.
std::string shape(const std::string &line, std::size_t columns)
{
    const std::size_t start = std::min(line.find_first_not_of(' '), line.size());
    const std::string text = line.substr(start);
    if (start > 0 && start == (columns - width(text)) / 2)
        return std::string("^").append(text);
    if (start > 0 && width(line) == columns)
        return std::string(">").append(text);
    const std::size_t gap = line.find("  ");
    if (start > 0 || gap == std::string::npos || width(line) != columns)
        return line;
    return line.substr(0, gap) + "_" + line.substr(line.find_first_not_of(' ', gap));
}

// What a generator gave: the lines of each block, by key and in order.
struct block {
    std::string key;
    lines text;
    bool operator==(const block &) const = default;
};
using receipt = std::vector<block>;

receipt taken(const qel::dict &blocks)
{
    receipt made;
    for (const auto [key, text] : qel::pairs(blocks.get())) {
        made.push_back({key, {}});
        std::istringstream rest(std::string(text).append("\n"));
        for (std::string line; std::getline(rest, line);)
            made.back().text.push_back(line.substr(0, line.find_last_not_of('\r') + 1));
    }
    return made;
}

receipt in_store(const record &kvs, const Qel_rcpt_config_t &config = shop)
{
    return taken(qel::dict(Qel_rcpt_generate_plain_moneris(kvs, &config)));
}

receipt online(const record &kvs, const Qel_rcpt_config_t &config = shop)
{
    return taken(qel::dict(Qel_rcpt_generate_plain_moneris_ecomm(kvs, &config)));
}

// The block's lines; none for a block that is not there.
lines text_of(const receipt &made, std::string_view key)
{
    const auto found = std::ranges::find(made, key, &block::key);
    return found == made.end() ? lines() : found->text;
}

std::string keys_of(const receipt &made)
{
    lines keys;
    std::ranges::transform(made, std::back_inserter(keys), &block::key);
    return joined(keys, " ");
}

// A record's fields beside a time (23 January 2024, 15:30:00) and two response codes (91 and 105),
// and the shapes of the block that it gives.
struct block_case {
    const char *fields;
    const char *expected;
};

void expect_blocks(decltype(&in_store) generate, const char *key,
                   std::initializer_list<block_case> cases, const Qel_rcpt_config_t &config = shop)
{
    for (const block_case &one : cases) {
        record kvs("rcpt_host_ts:012324153000,rcpt_issuer_resp_code:91,rcpt_resp_code:105");
        lines text = text_of(generate(kvs.set(one.fields), config), key);
        for (std::string &line : text)
            line = shape(line, generate == online ? 70 : 40);
        EXPECT_EQ(joined(text, "|"), one.expected) << key << ": " << one.fields;
    }
}

// In store

TEST(MonerisInStore, ChoosesTheResultLine)
{
    constexpr const char *approved = "||^91 APPROVED - THANK YOU 105";
    constexpr const char *canceled = "||^91 TRANSACTION CANCELED 105";
    constexpr const char *not_completed = "||^91 TRANSACTION NOT COMPLETED 105";
    constexpr const char *not_approved = "||^91 TRANSACTION NOT APPROVED 105";
    constexpr const char *without_codes = "||^TRANSACTION NOT COMPLETED";
    expect_blocks(
        in_store, "cust_disposition",
        {{"code:AUTH", approved},
         {"code:success", approved},
         {"", not_completed},
         // what is corrected counts as soon as the record has its code, also an empty one
         {"orig_code:auth,code:deny", approved},
         {"orig_code:deny,code:auth", not_completed},
         {"orig_code:,code:auth", not_completed},
         // approved before all else
         {"code:auth,u_errorcode:canceled", approved},
         {"code:auth,u_flowflags:REVERSED,phard_code:call,issuer_decline:1", approved},
         // canceled before not completed
         {"code:tout,u_errorcode:CANCELED,u_flowflags:REVERSED", canceled},
         // not completed before not approved
         {"code:TOUT,issuer_decline:yes", not_completed},
         {"code:call,issuer_decline:yes", not_completed},
         {"code:deny,phard_code:Call,issuer_decline:yes", not_completed},
         {"orig_phard_code:call,phard_code:x,issuer_decline:1", not_completed},
         {"orig_phard_code:,phard_code:call,issuer_decline:yes", not_approved},
         {"code:deny,phard_code:call me,issuer_decline:yes", not_approved},
         // a reversal hides the codes, whatever else is true
         {"code:deny,u_flowflags:SIG|Reversed,issuer_decline:yes", without_codes},
         {"code:tout,u_flowflags:reversed", without_codes},
         {"u_flowflags:reversed,cardtype:interac,rcpt_issuer_resp_code:51", without_codes},
         // an Interac issuer's code, or the flag
         {"cardtype:INTERAC,rcpt_issuer_resp_code:51,issuer_decline:no",
          "||^51 TRANSACTION NOT APPROVED 105"},
         {"cardtype:mc,rcpt_issuer_resp_code:51", "||^51 TRANSACTION NOT COMPLETED 105"},
         // which stand behind a time-out and a call
         {"code:tout,cardtype:interac,rcpt_issuer_resp_code:51",
          "||^51 TRANSACTION NOT COMPLETED 105"},
         {"code:call,cardtype:interac,rcpt_issuer_resp_code:51",
          "||^51 TRANSACTION NOT COMPLETED 105"},
         {"code:deny,phard_code:call,cardtype:interac,rcpt_issuer_resp_code:51",
          "||^51 TRANSACTION NOT COMPLETED 105"},
         // only that word is a time-out here
         {"code:TIMEOUT,issuer_decline:yes", not_approved},
         {"cardtype:interac,rcpt_issuer_resp_code:5", "||^5 TRANSACTION NOT COMPLETED 105"},
         {"cardtype:mc,issuer_decline:TRUE", not_approved},
         {"cardtype:interac,issuer_decline:on", not_approved},
         // without one of the codes
         {"code:auth,rcpt_issuer_resp_code:00,rcpt_resp_code:", "||^00 APPROVED - THANK YOU"}});
}

TEST(MonerisInStore, KnowsTheCodesOfInteracIssuersThatDecline)
{
    lines declining;
    for (int i = 0; i < 100; ++i) {
        const std::string code = std::to_string(100 + i).substr(1);
        const record kvs{{"cardtype", "Interac"}, {"rcpt_issuer_resp_code", code.c_str()}};
        if (text_of(in_store(kvs), "cust_disposition").back().ends_with("NOT APPROVED"))
            declining.push_back(code);
    }
    EXPECT_EQ(joined(declining, " "), "05 51 54 55 57 58 61 62 65 75 82 92");
}

TEST(MonerisInStore, MerchantAndType)
{
    expect_blocks(in_store, "cust_merch_info",
                  {{"", "^TRANSACTION RECORD||UNKNOWN MERCHANT NAME|UNKNOWN ADDRESS"},
                   {"merch_name:,merch_addr1:a,merch_addr2:b,merch_addr3:c,merch_phone:d,"
                    "merch_email:e,merch_url:f",
                    "^TRANSACTION RECORD||A|B|C|D|E|F"},
                   {"u_duplicate:1,merch_name:Elm,merch_addr1:1 Elm",
                    "^TRANSACTION RECORD||^DUPLICATE||ELM|1 ELM"}});
    expect_blocks(in_store, "merch_type",
                  {{"", ""},
                   {"action_trans:preauth,action:sale", "TYPE: PRE-AUTHORIZATION"},
                   {"action_trans:,action:refund", "TYPE: REFUND"},
                   {"action:void,rcpt_custom:correction_type:Refund", "TYPE: REFUND CORRECTION"},
                   {"action:reversal,rcpt_custom:unreadable", "TYPE: CORRECTION"}});
    expect_blocks(in_store, "cust_type",
                  {{"action:redemption,u_cardclass:debit", "TYPE: VENTE CARTES DE DEBIT"}}, french);
}

TEST(MonerisInStore, Reference)
{
    expect_blocks(in_store, "cust_reference",
                  {{"rcpt_entry_mode:r", "TIME:_23/01/24 15:30:00|REFERENCE:_T"},
                   {"rcpt_entry_mode:C", "TIME:_23/01/24 15:30:00|REFERENCE:_C"},
                   {"rcpt_custom:refnum:9", "TIME:_23/01/24 15:30:00|REFERENCE:_9"},
                   {"account:****4321,rcpt_custom:refnum:660123,rcpt_entry_mode:T,auth:042,"
                    "rcpt_emv_name:Interac,rcpt_emv_aid:A0,rcpt_emv_tvr:80,rcpt_emv_tsi:78",
                    "CARD:_****4321|TIME:_23/01/24 15:30:00|REFERENCE:_660123 H|AUTH:_042|"
                    "INTERAC|A0|80|78"}});
    expect_blocks(in_store, "merch_reference", {{"", "TIME:_01/23/24 15:30:00"}},
                  merchant(QEL_RCPT_IND_RETAIL, 840));
}

TEST(MonerisInStore, Money)
{
    expect_blocks(
        in_store, "cust_money",
        {{"cardtype:visa", "ACCOUNT TYPE: VISA"},
         {"cardtype:DISC", "ACCOUNT TYPE: DISCOVER"},
         {"cardtype:MC", "ACCOUNT TYPE: MASTERCARD"},
         {"cardtype:amex", "ACCOUNT TYPE: AMERICAN EXPRESS"},
         {"rcpt_acct_type:savings", ""},
         // 20.98 - 2.73
         {"cardtype:Interac,rcpt_acct_type:chequing,amount:20.98,tax:2.73",
          "ACCOUNT TYPE: INTERAC_CHEQUING|AMOUNT:_$18.25|TAX:_$2.73|TOTAL:_$20.98"},
         // 119.50 less 4.50, 10.00, 2.00 and 3.00
         {"amount:119.50,tax:3.00,surchargeamount:2.00,cashbackamount:10.00,examount:4.50",
          "AMOUNT:_$100.00|TIP:_$4.50|CASHBACK:_$10.00|SURCHARGE:_$2.00|TAX:_$3.00|"
          "TOTAL:_$119.50"},
         {"amount:5,tax:0.00,surchargeamount:-1.00,cashbackamount:x,examount:0.00",
          "AMOUNT:_$6.00|TOTAL:_$5.00"},
         {"amount:5,surchargeamount:0.00,cashbackamount:0.00,examount:-1",
          "AMOUNT:_$6.00|TOTAL:_$5.00"},
         // which tip is shown: the one in the amount as soon as the record has it
         {"amount:12,examount:2,u_tip:9", "AMOUNT:_$10.00|TIP:_$2.00|TOTAL:_$21.00"},
         {"amount:12,u_tip:1.50", "AMOUNT:_$12.00|TIP:_$1.50|TOTAL:_$13.50"},
         {"amount:12,examount:,u_tip:1.50", "AMOUNT:_$12.00|TOTAL:_$13.50"},
         // what was authorized
         {"amount:50,authamount:30",
          "AMOUNT:_$50.00|PARTIALLY APPROVED:_$30.00|AMOUNT DUE:_$20.00|TOTAL:_$50.00"},
         {"amount:50,authamount:60", "AMOUNT:_$50.00|PARTIALLY APPROVED:_$60.00|TOTAL:_$50.00"},
         {"amount:50,authamount:50", "AMOUNT:_$50.00|TOTAL:_$50.00"},
         {"amount:50,authamount:-5", "AMOUNT:_$50.00|TOTAL:_$50.00"},
         {"balance:0.00", "BALANCE:_$0.00"}});
    expect_blocks(in_store, "merch_money", {{"balance:5.00", ""}}); // the customer's to know
    expect_blocks(
        in_store, "cust_money",
        {{"cardtype:Interac,rcpt_acct_type:FLASH,amount:20.98,tax:2.73",
          "TYPE DE COMPTE: INTERAC_FLASH DEFAUT|MONTANT:_18.25$|IMPOT:_2.73$|TOTAL:_20.98$"}},
        french);
}

TEST(MonerisInStore, Disposition)
{
    constexpr const char *approved = "||^91 APPROVED - THANK YOU 105";
    constexpr const char *removed = "CARD REMOVED - 991||||^91 TRANSACTION NOT COMPLETED 105";
    constexpr const char *declined = "DECLINED BY CARD - 990||||^91 TRANSACTION NOT COMPLETED 105";
    constexpr const char *declined_online = "DECLINED BY CARD - 990||||^TRANSACTION NOT COMPLETED";
    constexpr const char *nothing = "||^91 TRANSACTION NOT COMPLETED 105";
    expect_blocks(
        in_store, "cust_disposition",
        {{"code:Auth,rcpt_emv_cvm:pin,rcpt_entry_mode:F,u_emv_chip_malfunction:1,authamount:5,"
          "ordernum:A1,ptrannum:7,ttid:9,reversal_reason:cardremoved",
          "CARD REMOVED - 991||VERIFIED BY PIN|CHIP CARD SWIPED|CHIP MALFUNCTION|"
          "TRANSACTION PARTIALLY APPROVED||INVOICE #:_A1|TTID:_9||^91 APPROVED - THANK YOU 105"},
         // what the card did
         {"u_errorcode:EMV_CARD_REMOVED", removed},
         {"reversal_reason:CardRemoved,offline_decline:carddecline", removed},
         {"u_errorcode:emv_card_deny", nothing},
         {"u_errorcode:EMV_CARD_DENY,u_flowflags:x REVERSED", declined_online},
         {"reversal_reason:CARDDECLINE", declined},
         {"offline_decline:carddecline", declined},
         // how the card was read counts when the transaction was authorized, in that very word
         {"code:success,rcpt_emv_cvm:pin,rcpt_entry_mode:f", approved},
         // a chip that does not work, and a partial approval, whatever the outcome
         {"code:deny,u_emv_chip_malfunction:yes",
          "CHIP MALFUNCTION|||^91 TRANSACTION NOT COMPLETED 105"},
         {"code:auth,authamount:0",
          "TRANSACTION PARTIALLY APPROVED|||^91 APPROVED - THANK YOU 105"},
         {"orig_code:auth,code:deny,rcpt_emv_pinbypass:y",
          "PIN BYPASSED|||^91 APPROVED - THANK YOU 105"},
         // the invoice number: no fall-back for an empty one, and no test for zero
         {"ordernum:,ptrannum:7,code:auth", approved},
         {"ptrannum:0,code:auth", "|INVOICE #:_0||^91 APPROVED - THANK YOU 105"}});
    expect_blocks(in_store, "cust_disposition",
                  {{"code:auth,offline_decline:carddecline",
                    "REFUSE PAR CARTE - 990||||^91 APPROUVE - MERCI 105"}},
                  french);
    // the longest of the card's words
    expect_blocks(in_store, "cust_disposition",
                  {{"code:auth,offline_decline:carddecline",
                    "RIFIUTATO DALLA CARTA - 990||||^91 GRAZIE 105"}},
                  merchant(QEL_RCPT_IND_RETAIL, 124, QEL_RCPT_LANG_IT));

    // what the card was in: the merchant's to know, and the customer's where nobody attends
    constexpr const char *device = "code:auth,rcpt_emv_form_factor:01";
    constexpr const char *approved_device = "||^91 APPROVED - THANK YOU 105||FF/DT_01";
    expect_blocks(in_store, "merch_disposition", {{device, approved_device}});
    expect_blocks(in_store, "cust_disposition", {{device, approved}});
    expect_blocks(in_store, "cust_disposition", {{device, approved_device}},
                  merchant(QEL_RCPT_IND_SELFSERV | QEL_RCPT_IND_RETAIL));
    expect_blocks(in_store, "cust_disposition", {{device, approved}},
                  merchant(QEL_RCPT_IND_AUTOFUEL));
}

TEST(MonerisInStore, SignatureAndNotice)
{
    expect_blocks(
        in_store, "merch_signature",
        {{"", ""},
         // 39 characters are centred without a space in front
         {"u_need_signature:yes,u_flowflags:SIGCAPTURED",
          "SIGNATURE||X_______________________________________||"
          "^CARDHOLDER WILL PAY CARD ISSUER ABOVE|AMOUNT PURSUANT TO CARDHOLDER AGREEMENT"},
         {"u_flowflags:x sigcaptured", "^SIGNATURE CAPTURED ELECTRONICALLY"}});
    expect_blocks(in_store, "cust_signature", {{"u_need_signature:yes", ""}});
    expect_blocks(in_store, "cust_notice",
                  {{"", "^IMPORTANT - RETAIN THIS COPY FOR YOUR|^RECORDS||^CUSTOMER COPY"}});
    expect_blocks(in_store, "merch_notice",
                  {{"u_rcpt_duplicate:1", "^IMPORTANT - RETAIN THIS COPY FOR YOUR|^RECORDS||"
                                          "^MERCHANT COPY||^DUPLICATE"}});
}

TEST(Moneris, CutsTheResultTheReferenceAndTheCodesWhereTheirBuffersEnd)
{
    const std::string code(300, 'X');
    const receipt made = in_store(record{{"rcpt_issuer_resp_code", code.c_str()},
                                         {"rcpt_custom", ("refnum:" + code).c_str()}});
    for (const char *key : {"cust_disposition", "cust_reference"})
        EXPECT_EQ(std::ranges::count(joined(text_of(made, key), ""), 'X'), 255) << key;
    const receipt codes = online(record{{"rcpt_issuer_resp_code", code.c_str()}});
    EXPECT_EQ(std::ranges::count(joined(text_of(codes, "cust_reference"), ""), 'X'), 255);
}

TEST(MonerisInStore, HandsECommerceOn)
{
    for (const std::uint32_t more : {QEL_RCPT_IND_UNKNOWN, QEL_RCPT_IND_SELFSERV}) {
        const Qel_rcpt_config_t config = merchant(QEL_RCPT_IND_ECOMM | more);
        const char *fields = "action:void,rcpt_custom:correction_type:purchase,tax:0.00,amount:5,"
                             "rcpt_host_ts:012324153000";
        const record forwarded(fields);
        EXPECT_TRUE(in_store(forwarded, config) == online(record(fields), config));
        EXPECT_FALSE(Qel_hash_dict_get(forwarded, "tax", nullptr));
    }
}

// Online

record with_data(std::string_view fields, const std::string &rcpt_data)
{
    record kvs(fields);
    Qel_hash_dict_insert(kvs, "moneris_rcpt_data", rcpt_data.c_str());
    return kvs;
}

// The table around these rows.
lines table(lines rows)
{
    const std::string rule(70, '-');
    rows.insert(rows.begin(),
                {rule, "| ITEM     DESCRIPTION                 QTY   AMOUNT         SUBTOTAL |"});
    rows.push_back(rule);
    return rows;
}

// A row of the table that has only a label and a value.
std::string summary(std::string label, const char *value)
{
    label.resize(14, ' ');
    return std::string("|").append(44, ' ').append(label).append(" ").append(value).append(" |");
}

TEST(MonerisOnline, ItemsTable)
{
    const record kvs = with_data("surchargeamount:1.00,tax:0.00,examount:2.5,amount:81.5", R"({
        "items": [
            {"sku": "MUG-BLUE-9", "descr": "Mug", "qty": "2", "amount": "12", "subtotal": "24.00"},
            {"sku": "CAFÉ-001X", "descr": "Crème brûlée à l'érable, pot familial",
             "qty": "1000000", "amount": "1234567890.1234", "subtotal": "123456.789"},
            {"descr": "Gift"}, {"qty": 3}, "no object"],
        "fees": [{"name": "Shipping and handling", "val": "9.00"}, {"name": "Duty"}]})");
    const std::string blank_item = std::string("|").append(68, ' ').append("|");
    const lines expected = table({
        "| MUG-BLUE MUG                         2     12             24.00    |",
        "| CAFÉ-001 CRÈME BRÛLÉE À L'ÉRABLE, PO 10000 1234567890.123 123456.7 |",
        "|          GIFT                                                      |",
        blank_item,
        blank_item,
        summary("SHIPPING AND H", "9.00    "),
        summary("DUTY", "        "),
        summary("SURCHARGE", "1.00    "),
        summary("TAX", "0.00    "),
        summary("TIP", "2.5     "),
        summary("TOTAL", "81.5 CAD"),
    });
    EXPECT_EQ(text_of(online(kvs), "cust_line_items"), expected);
    EXPECT_EQ(text_of(online(kvs), "merch_line_items"), expected);
}

TEST(MonerisOnline, AmountRowAndCurrency)
{
    struct {
        std::uint32_t country;
        const char *fields;
        const char *label;
        const char *value;
    } const cases[] = {
        {124, "amount:12.50", "TOTAL", "12.50CAD"},
        {124, "amount:5.00", "TOTAL", "5.00 CAD"},
        {124, "amount:123.45", "TOTAL", "123.4CAD"},
        {978, "amount:7.25", "TOTAL", "7.25 EUR"},
        {826, "amount:7.25", "TOTAL", "7.25 GBP"},
        {840, "amount:10.00", "TOTAL", "10.00USD"},
        {250, "amount:10.00", "TOTAL", "10.00USD"},
        {124, "action_trans:PREAUTH,amount:1", "AUTHORIZED AMO", "1    CAD"},
        {124, "action:preauth,amount:1", "TOTAL", "1    CAD"},
        // the only row of a reversal, by that key
        {124, "action_trans:Reversal,tax:1,examount:2,amount:3", "TOTAL", "3    CAD"},
        {124, "action:reversal,tax:123456789", "TAX", "12345678"},
    };
    for (const auto &one : cases) {
        const receipt made = online(record(one.fields), merchant(QEL_RCPT_IND_ECOMM, one.country));
        EXPECT_EQ(text_of(made, "cust_line_items"), table({summary(one.label, one.value)}));
    }
}

TEST(MonerisOnline, RemovesZeroAmountsOfACorrectedPurchase)
{
    const std::string zeros = ",surchargeamount:0.00,tax:0.00,examount:0.00,amount:0.00";
    struct {
        std::string fields;
        bool are_removed;
    } const cases[] = {
        {"action:void,rcpt_custom:correction_type:PURCHASE" + zeros, true},
        {"action_trans:reversal,rcpt_custom:correction_type:purchase" + zeros, true},
        {"rcpt_custom:correction_type:purchase" + zeros, false}, // no action
        {"action:void,rcpt_custom:correction_type:refund" + zeros, false},
        {"action:void" + zeros, false},
        {"action:void,rcpt_custom:correction_type:purchase,surchargeamount:0,tax:0.0,examount:.00",
         false},
    };
    for (const auto &one : cases) {
        const record kvs(one.fields);
        const receipt made = online(kvs);
        for (const char *key : {"surchargeamount", "tax", "examount"})
            EXPECT_NE(Qel_hash_dict_get(kvs, key, nullptr), one.are_removed) << one.fields;
        if (one.are_removed) {
            EXPECT_EQ(text_of(made, "cust_line_items"), table({summary("TOTAL", "0.00 CAD")}));
        }
        EXPECT_EQ(text_of(made, "merch_line_items"), text_of(made, "cust_line_items"));
    }
}

TEST(MonerisOnline, MerchantReferenceAndPolicy)
{
    expect_blocks(
        online, "merch_merch_info",
        {{"merch_name:Érable,merch_addr1:1 Elm,merch_addr2:b,merch_addr3:c,"
          "merch_url:u,merch_phone:x,merch_email:x,u_duplicate:1",
          "^ONLINE RECEIPT||^ÉRABLE|^1 ELM|^B|^C||^U"},
         {"merch_name:Elm,merch_addr1:1 Elm,merch_url:", "^ONLINE RECEIPT||^ELM|^1 ELM|"}});
    expect_blocks(
        online, "cust_merch_info",
        {{"", "^RECU EN LIGNE||^NOM DU DETAILLANT INCONNU|^ADRESSE INCONNUE||^URL INCONNU"}},
        french);
    expect_blocks(
        online, "merch_reference",
        {{"action:sale,ordernum:77,custref:x,auth:123456,rcpt_issuer_resp_code:00,"
          "rcpt_resp_code:001,rcpt_custom:refnum:660123",
          "TRANSACTION TYPE: PURCHASE|ORDER NUMBER: 77|"
          "TIME: 23/01/24 15:30:00_APPROVAL CODE: 123456|"
          "REFERENCE: 660123_RESPONSE / ISO CODE: 00/001"},
         {"rcpt_issuer_resp_code:", "TIME: 23/01/24 15:30:00|>RESPONSE / ISO CODE: /105"}});
    expect_blocks(online, "cust_reference",
                  {{"ordernum:,custref:P9,rcpt_issuer_resp_code:,rcpt_resp_code:",
                    "NUMERO DE COMMANDE: P9|HEURE: 23/01/24 15:30:00|>RESPONSE / ISO CODE: /"}},
                  french);
    expect_blocks(
        online, "cust_refund_policy",
        {{"", "^RETURNS & REFUND POLICY"},
         {"moneris_rcpt_data:{\"policy\":\"All sales of unopened goods may be returned within "
          "thirty days with this receipt.\"}",
          "^RETURNS & REFUND POLICY|^ALL SALES OF UNOPENED GOODS MAY BE RETURNED WITHIN "
          "THIRTY DAYS WITH|^THIS RECEIPT."}});
}

TEST(MonerisOnline, Addresses)
{
    constexpr const char *data = R"({"customer": {
        "bill_name": "Zoé Tremblay", "ship_name": "A name that is longer than its column is wide",
        "bill_addr1": "An address that is longer than 34 columns", "ship_addr1": "",
        "ship_city": "Lévis", "bill_zip": 12345, "bill_country": "CA"}})";
    const std::string left(35, ' ');
    const std::string right(30, ' ');
    const lines two_columns = {
        "CUSTOMER INFORMATION",
        "BILL TO:                           SHIP TO:",
        "ZOÉ TREMBLAY                       A NAME THAT IS LONGER THAN ITS COLU",
        "AN ADDRESS THAT IS LONGER THAN 34       " + right,
        left + "LÉVIS" + right,
        "CA                                      " + right,
    };
    for (const char *fields : {"", "recurring:RECURRING", "recurring:yes"})
        EXPECT_EQ(text_of(online(with_data(fields, data)), "cust_customer_info"), two_columns);
    EXPECT_EQ(text_of(online(with_data("recurring:recurring", data)), "merch_customer_info"),
              (lines{"CUSTOMER INFORMATION", left + "SHIP TO:",
                     left + "A NAME THAT IS LONGER THAN ITS COLU", left + "LÉVIS" + right}));
}

TEST(MonerisOnline, UnusableReceiptDataCountsAsNone)
{
    const char *fields = "rcpt_host_ts:012324153000,amount:5";
    const receipt none = online(record(fields));
    ASSERT_EQ(none.size(), 10U);
    const std::string deep = std::string(600, '[') + std::string(600, ']');
    for (const char *data :
         {"", "{", "null", "\"policy\"", R"([{"policy": "x", "items": [{"sku": "x"}]}])",
          R"({"policy": "x"} trailing)", R"({"customer": [{"bill_name": "x"}], "policy": " "})",
          R"({"policy": 5, "items": {"sku": "x"}, "fees": "x", "Customer": {}})", deep.c_str()})
        EXPECT_TRUE(online(with_data(fields, data)) == none) << data;
    const record commented = with_data("", "/* x */ {\"policy\": \"a\xFF z\"} // and a bad byte");
    EXPECT_EQ(shape(text_of(online(commented), "cust_refund_policy").back(), 70), "^A\uFFFD Z");
}

TEST(MonerisOnline, TableAndAddressLinesHaveExactly70Columns)
{
    constexpr const char *pieces[] = {"a", "é", "ß", "€", "😀", " ", "9", "-"};
    std::mt19937 random(20261122); // NOLINT: the same texts every time
    const auto text = [&] {
        std::string made;
        for (auto left = random() % 40; left > 0; --left)
            made += pieces[random() % std::size(pieces)];
        return made;
    };
    const auto object = [&](std::initializer_list<const char *> names) {
        std::string made;
        for (const char *name : names)
            made.append(made.empty() ? "{\"" : "\", \"")
                .append(name)
                .append("\": \"")
                .append(text());
        return made.append("\"}");
    };
    for (int round = 0; round < 200; ++round) {
        std::string data(R"({"items": [)");
        data.append(object({"sku", "descr", "qty", "amount", "subtotal"}))
            .append(R"(], "fees": [)");
        data.append(object({"name", "val"})).append(R"(], "customer": )");
        data.append(object({"bill_name", "ship_name", "bill_zip"})).append("}");
        const record kvs = with_data("", data);
        Qel_hash_dict_insert(kvs, "tax", text().c_str());
        Qel_hash_dict_insert(kvs, "amount", text().c_str());
        const receipt made = online(kvs);
        for (const std::string &row : text_of(made, "cust_line_items"))
            EXPECT_EQ(width(row), 70U) << row;
        const lines customer = text_of(made, "cust_customer_info");
        for (std::size_t i = 2; i < customer.size(); ++i) // below the headings
            EXPECT_EQ(width(customer[i]), 70U) << customer[i];
    }
}

// Both

TEST(Moneris, NothingGivenGivesWhatIsAlwaysShown)
{
    EXPECT_EQ(keys_of(taken(qel::dict(Qel_rcpt_generate_plain_moneris(nullptr, nullptr)))),
              "cust_merch_info cust_reference cust_disposition cust_notice "
              "merch_merch_info merch_reference merch_disposition merch_notice");
    EXPECT_EQ(keys_of(taken(qel::dict(Qel_rcpt_generate_plain_moneris_ecomm(nullptr, nullptr)))),
              "cust_merch_info cust_reference cust_line_items cust_customer_info "
              "cust_refund_policy merch_merch_info merch_reference merch_line_items "
              "merch_customer_info merch_refund_policy");
    const record kiosk("u_need_signature:1,action:sale,amount:1");
    EXPECT_EQ(keys_of(in_store(kiosk, merchant(QEL_RCPT_IND_SELFSERV))),
              "cust_merch_info cust_type cust_money cust_reference cust_disposition cust_notice");
}

} // namespace
