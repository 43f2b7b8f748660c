// The receipt core: what became of a transaction, in words, and when.
#include "core_tests.hpp"

namespace
{

using namespace test;

// Rows of a decision, the first that holds deciding: each way of a row decides alone, and also
// where the record has all that the rows below ask for.
template <typename Decide>
void expect_decisions(const std::vector<row> &rows, Decide decide)
{
    expect_rows(rows, [&](const char *way) { return decide(record(way)); });
    for (auto row = rows.begin(); row != rows.end(); ++row) {
        for (const char *way : row->ways) {
            record contested;
            for (auto below = rows.end() - 1; below != row; --below) {
                for (const char *rival : below->ways)
                    contested.set(rival);
            }
            EXPECT_EQ(decide(contested.set(way)), row->outcome) << way << " and all below";
        }
    }
}

// A status function, in English.
auto in_english(const char *(*get)(const Qel_hash_dict_t *, Qel_rcpt_lang_t))
{
    return [get](const record &kvs) { return borrowed(get(kvs, en)); };
}

const texts declined_by_card = {"u_errorcode:EMV_card_deny", "reversal_reason:CARDDECLINE",
                                "offline_decline:carddecline"};

TEST(Status, Result)
{
    const auto get_result = in_english(Qel_rcpt_get_result);
    expect_decisions(
        {{{"u_errorcode:Canceled", "reversal_reason:customercancel"}, "Transaction Canceled"},
         {{"txnstatus:CAPTURED|voided|SETTLED"}, "Voided"},
         {{"code:AUTH,authamount:5.00", "code:Success,authamount:0"},
          "Transaction Partially Approved"},
         {{"code:AUTH,authamount:", "orig_code:success,code:deny"}, "Approved"},
         {{"phard_code:call", "code:CALL", "orig_phard_code:Call,phard_code:success"},
          "Declined - Call Issuer"},
         {{"issuer_decline:yes"}, "Transaction Not Approved"},
         {{"phard_code:DECLINE", "phard_code:success"}, "Declined"},
         {{"phard_code:UNKNOWN", ""}, "Transaction Not Completed"}},
        get_result);
    for (const char *near_miss :
         {"orig_code:deny,code:auth", "orig_phard_code:unknown,phard_code:call",
          "code:authorized,authamount:5.00", "u_errorcode:CUSTOMERCANCEL,reversal_reason:canceled",
          "txnstatus:VOID", "issuer_decline:no,phard_code:", "msoft_code:call"})
        EXPECT_EQ(get_result(record(near_miss)), "Transaction Not Completed") << near_miss;
    EXPECT_EQ(get_result(record("orig_code:,code:auth")), "Approved");
    EXPECT_STREQ(Qel_rcpt_get_result(record(), fr), "Operation non Completee");
}

TEST(Status, Mode)
{
    const auto get_mode = in_english(Qel_rcpt_get_mode);
    expect_decisions(
        {{{"u_action:admin", "u_action:txnrequest2"}, absent},
         {declined_by_card, "Card"},
         {{"code:auth,u_standin:1", "code:deny,msoft_code:int_success,u_standin:true"},
          "Issuer Standin"},
         {{"code:AUTH,phard_code:SUCCESS", "code:auth,phard_code:success,u_errorcode:any",
           "code:auth,phard_code:call,orig_phard_code:success",
           "code:DENY,msoft_code:INT_success,u_errorcode:",
           "code:deny,msoft_code:int_success,u_errorcode:PAXTREL_proc_error",
           "orig_code:deny,code:x,orig_msoft_code:int_success,msoft_code:x,u_errorcode:",
           "orig_code:deny,code:auth,phard_code:success"},
          "Issuer"}},
        get_mode);
    for (const char *action : {"", "TXNREQUEST", "txnfinish", "txnquick"})
        EXPECT_EQ(get_mode(record{{"u_action", action}, {"code", "auth"}, {"u_standin", "1"}}),
                  "Issuer Standin");
    for (const char *undecided :
         {"", "code:auth", "code:success,phard_code:success", "msoft_code:int_success",
          "code:auth,phard_code:success,orig_phard_code:call", "code:deny,u_standin:1",
          "code:deny,orig_code:auth,phard_code:success", "code:deny,msoft_code:CONN_MAXSENDS",
          "code:deny,msoft_code:int_success,u_errorcode:timeout",
          "code:deny,orig_code:call,msoft_code:int_success"})
        EXPECT_EQ(get_mode(record(undecided)), absent) << undecided;
}

TEST(Status, CardAndCardholder)
{
    expect_decisions(
        {{{"u_errorcode:EMV_CARD_REMOVED", "reversal_reason:CardRemoved"}, "Card Removed"},
         {declined_by_card, "Declined By Card"},
         {{"rcpt_entry_mode:F"}, "Chip Card Swiped"},
         {{"rcpt_entry_mode:ff", "offline_decline:cardremoved", ""}, absent}},
        in_english(Qel_rcpt_get_card_status));
    expect_decisions({{{"code:DENY", "code:timeout", "orig_code:deny,code:auth",
                        "phard_code:bad_PIN", "orig_phard_code:bad_pin,phard_code:x"},
                       absent},
                      {{"rcpt_emv_pinbypass:true"}, "Pin Bypassed"},
                      {{"rcpt_emv_cvm:PIN", "rcpt_emv_cvm:pinsig"}, "Verified By Pin"},
                      {{"rcpt_emv_cvm:sig", ""}, absent}},
                     in_english(Qel_rcpt_get_pin_status));
    EXPECT_STREQ(Qel_rcpt_get_pin_status(record("rcpt_emv_cvm:pin,code:deny,orig_code:auth"), en),
                 "Verified By Pin");
}

TEST(Status, ResponseCode)
{
    const auto get_respcode = [](const record &kvs) { return taken(Qel_rcpt_get_respcode(kvs)); };
    expect_decisions(
        {{{"rcpt_issuer_resp_code:51,rcpt_resp_code:05"}, "51/05"},
         {{"rcpt_issuer_resp_code:51,rcpt_resp_code:"}, "51"},
         {{"rcpt_issuer_resp_code:,rcpt_resp_code:05"}, "05"},
         {{"u_action:admin,rcpt_resp_code:"}, absent},
         {{"code:AUTH,u_standin:1", "orig_code:auth,code:timeout,u_standin:yes"}, "Y3"},
         {{"code:auth,u_standin:no"}, absent},
         {{"u_errorcode:PAXTREL_connfail,code:success,u_standin:1",
           "code:timeout,u_action:TXNQUICK", "msoft_code:conn_maxattempts",
           "msoft_code:CONN_MAXSENDS", "orig_msoft_code:CONN_MAXSENDS,msoft_code:int_success",
           "phard_code:NoReply"},
          "Z3"},
         {declined_by_card, "Z1"},
         {{"code:deny,msoft_code:int_success,phard_code:DECLINE", ""}, absent}},
        get_respcode);
    EXPECT_EQ(get_respcode(record("rcpt_issuer_resp_code:51")), "51");
}

TEST(Status, AccountType)
{
    expect_decisions(
        {{{"cardtype:Interact", "cardtype:"}, absent},
         {{"cardtype:Interac,rcpt_acct_type:"}, absent},
         {{"cardtype:INTERAC,rcpt_acct_type:FLASHback,rcpt_entry_mode:c",
           "cardtype:interac,rcpt_acct_type:savings,rcpt_entry_mode:T"},
          "Flash Default"},
         {{"cardtype:interac,rcpt_acct_type:Checking", "cardtype:interac,rcpt_acct_type:CHEQUING"},
          "Chequing"},
         {{"cardtype:interac,rcpt_acct_type:SAVINGS"}, "Savings"},
         {{"cardtype:interac,rcpt_acct_type:flas"}, "flas"}},
        in_english(Qel_rcpt_get_acct_type));
    const record chequing("cardtype:Interac,rcpt_acct_type:chequing");
    EXPECT_STREQ(Qel_rcpt_get_acct_type(chequing, fr), "Cheque");
}

TEST(Status, SignatureAndCaptions)
{
    const record wanted("u_need_signature:TRUE,u_flowflags:A|sigcaptured|B");
    EXPECT_EQ(taken(Qel_rcpt_get_signature_line(wanted, 20)), "X___________________");
    EXPECT_EQ(taken(Qel_rcpt_get_signature_line(wanted, 1)), "X");
    EXPECT_EQ(taken(Qel_rcpt_get_signature_line(wanted, 0)), "X");
    EXPECT_STREQ(Qel_rcpt_get_signature_agreement(wanted, fr),
                 "Le Titulaire Versera Ce Montant A L'Emetteur Conformement Au Contrat Adherent");
    EXPECT_STREQ(Qel_rcpt_get_signature_electronic(wanted, en),
                 "Signature Captured Electronically");

    const record unwanted("u_need_signature:no,u_flowflags:SIG");
    EXPECT_EQ(taken(Qel_rcpt_get_signature_line(unwanted, 20)), absent);
    EXPECT_EQ(Qel_rcpt_get_signature_agreement(unwanted, en), nullptr);
    EXPECT_EQ(Qel_rcpt_get_signature_electronic(unwanted, en), nullptr);

    EXPECT_STREQ(Qel_rcpt_get_notice(fr), "Important - conserver cette copie pour vos dossiers");
    EXPECT_STREQ(Qel_rcpt_get_duplicate(fr), "Dupliquer");
    EXPECT_STREQ(Qel_rcpt_get_whos_copy(true, fr), "Copie Du Client");
    EXPECT_STREQ(Qel_rcpt_get_whos_copy(false, fr), "Copie Du Detaillant");

    for (const char *key : {"rcpt_duplicate", "u_rcpt_duplicate", "u_duplicate"})
        EXPECT_TRUE(Qel_rcpt_is_duplicate(record{{key, "yes"}})) << key;
    EXPECT_FALSE(Qel_rcpt_is_duplicate(record("rcpt_duplicate:no,duplicate:yes")));
}

TEST(TransactionTime, OfTheRecord)
{
    const qel::time_tz toronto(Qel_time_tz_load("America/Toronto"));
    ASSERT_NE(toronto, nullptr);
    const auto show = [&](const std::string &fields, std::uint32_t country) {
        Qel_rcpt_attrs_t attrs = us;
        attrs.country_code = country;
        attrs.timezone = toronto.get();
        return taken(Qel_rcpt_format_time(record(fields), &attrs));
    };
    expect_rows({{{"rcpt_host_ts:012324153000,timestamp:0", "rcpt_host_ts:,timestamp:1706041800"},
                  "01/23/24 15:30:00|23/01/24 15:30:00"},
                 {{"timestamp:1719802800"}, "06/30/24 23:00:00|30/06/24 23:00:00"},
                 {{"timestamp:0", "timestamp:x"}, "12/31/69 19:00:00|31/12/69 19:00:00"},
                 {{"timestamp:-1", "rcpt_host_ts:0123,timestamp:0"},
                  "00/00/00 00:00:00|00/00/00 00:00:00"}},
                [&](const char *fields) {
                    return joined({show(fields, 840), show(fields, 124)});
                });

    Qel_time_t t = Qel_time();
    const result now = show("timestamp:", 840);
    const Qel_time_t after = Qel_time();
    const auto show_second = [&] { return show("timestamp:" + std::to_string(t), 840); };
    while (t < after && show_second() != now)
        ++t;
    EXPECT_EQ(now, show_second());
}

TEST(TransactionType, CardClass)
{
    expect_decisions({{{"u_cardclass:debit"}, "debit"},
                      {{"card_cardclass:credit,u_cardclass:"}, "credit"},
                      {{"card_cardclass:", ""}, ""}},
                     [](const record &kvs) { return borrowed(Qel_rcpt_get_cardclass(kvs)); });
}

TEST(AbsentArguments, OfStatusAndItems)
{
    EXPECT_STREQ(Qel_rcpt_get_result(nullptr, en), "Transaction Not Completed");
    for (const auto get : {Qel_rcpt_get_mode, Qel_rcpt_get_card_status, Qel_rcpt_get_pin_status,
                           Qel_rcpt_get_acct_type, Qel_rcpt_get_signature_agreement,
                           Qel_rcpt_get_signature_electronic})
        EXPECT_EQ(get(nullptr, en), nullptr);
    for (const auto is :
         {Qel_rcpt_need_signature_line, Qel_rcpt_was_signature_electronic, Qel_rcpt_is_duplicate})
        EXPECT_FALSE(is(nullptr));
    EXPECT_EQ(taken(Qel_rcpt_get_respcode(nullptr)), absent);
    EXPECT_EQ(taken(Qel_rcpt_get_signature_line(nullptr, 10)), absent);
    EXPECT_EQ(taken(Qel_rcpt_format_time(nullptr, nullptr)).value_or("").size(), 17U);
    EXPECT_EQ(taken(Qel_rcpt_format_time(record("rcpt_host_ts:123123010203"), nullptr)),
              "12/31/23 01:02:03");

    const auto expect_dollars = [](void *, const char *, const char *, const char *price,
                                   Qel_rcpt_line_item_type_t,
                                   void *) { EXPECT_STREQ(price, "$2.00"); };
    for (const char *items : texts{nullptr, R"([{"name":"A", "price":"2"}])"})
        Qel_rcpt_generate_line_items(items, nullptr, nullptr, expect_dollars, nullptr);
    Qel_rcpt_generate_line_items(R"([{"name":"A"}])", nullptr, &us, nullptr, nullptr);
    EXPECT_STREQ(Qel_rcpt_get_cardclass(nullptr), "");
    EXPECT_EQ(Qel_rcpt_get_tran_type(nullptr, en, nullptr), nullptr);
    EXPECT_STREQ(Qel_rcpt_get_tran_type("tip", en, nullptr), "Purchase");
    EXPECT_EQ(Qel_rcpt_get_tran_type_moneris(nullptr, nullptr, en, nullptr), nullptr);
}

} // namespace
