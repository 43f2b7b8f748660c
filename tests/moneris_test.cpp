#include "moneris_receipt.hpp"

namespace
{

using namespace test::moneris;
using test::record;

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
