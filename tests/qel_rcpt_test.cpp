// The receipt core: attributes, messages, money, transaction status, line items, transaction types.
#include "qel_rcpt_int.h"
#include "test_record.hpp"

#include <vector>

namespace
{

using namespace test;
using texts = std::vector<const char *>;

constexpr auto en = QEL_RCPT_LANG_EN;
constexpr auto fr = QEL_RCPT_LANG_FR;

Qel_rcpt_attrs_t attrs_of(const Qel_rcpt_config_t &config, bool is_custcopy = true)
{
    Qel_rcpt_attrs_t attrs{};
    Qel_rcpt_setup_rcpt_attrs(&attrs, &config, is_custcopy);
    return attrs;
}

const Qel_rcpt_attrs_t us = attrs_of({en, en, 840, 840, QEL_RCPT_IND_RETAIL, nullptr});
const Qel_rcpt_attrs_t euro = attrs_of({fr, en, 250, 978, QEL_RCPT_IND_RETAIL, nullptr});

// Texts side by side; '~' stands for an absent one.
std::string joined(const std::vector<result> &all)
{
    std::string out;
    for (const result &one : all)
        out.append(&one == &all.front() ? "" : "|").append(one.value_or("~"));
    return out;
}

// Records, or other texts, and the outcome that each of them has.
struct row {
    texts ways;
    result outcome;
};

template <typename Get>
void expect_rows(const std::vector<row> &rows, Get get)
{
    for (const row &row : rows) {
        for (const char *way : row.ways)
            EXPECT_EQ(get(way), row.outcome) << way;
    }
}

TEST(Config, AttributesOfACopy)
{
    const struct {
        Qel_rcpt_lang_t lang;
        std::uint32_t country, currency;
        const char *money;
    } rows[] = {
        {fr, 124, 124, "12.34$"}, {en, 124, 124, "$12.34"}, {fr, 124, 840, "$12.34"},
        {fr, 840, 124, "$12.34"}, {fr, 250, 978, "€12,34"}, {fr, 124, 978, "€12,34"},
        {en, 826, 826, "£12.34"}, {en, 392, 392, "$12.34"},
    };
    const qel::time_tz zone(Qel_time_tz_load("America/Toronto"));
    for (const auto &[lang, country, currency, money] : rows) {
        const auto it = QEL_RCPT_LANG_IT;
        const auto ind = QEL_RCPT_IND_RETAIL;
        for (const auto &attrs :
             {attrs_of({lang, it, country, currency, ind, zone.get()}, true),
              attrs_of({it, lang, country, currency, ind, zone.get()}, false)}) {
            SCOPED_TRACE(std::to_string(country) + ' ' + std::to_string(currency));
            EXPECT_EQ(attrs.lang, lang);
            EXPECT_EQ(taken(Qel_rcpt_format_money("12.34", &attrs)), money);
            EXPECT_EQ(attrs.country_code, country);
            EXPECT_EQ(attrs.timezone, zone.get());
        }
    }
}

TEST(Config, MerchantCopyUnlessNobodyIsThereToKeepIt)
{
    for (const unsigned industry : {0U, 1U, 2U, 4U, 8U, 16U, 64U, 95U})
        EXPECT_TRUE(Qel_rcpt_generate_merch_copy(Qel_rcpt_ind_t{industry})) << industry;
    for (const unsigned industry : {32U, 128U, 160U, 33U, 132U})
        EXPECT_FALSE(Qel_rcpt_generate_merch_copy(Qel_rcpt_ind_t{industry})) << industry;
}

TEST(Config, LanguageCodes)
{
    expect_rows({{{"fr", "FR"}, "Paye:"},
                 {{"es"}, "Pagada:"},
                 {{"de", "dE"}, "Bezahlt:"},
                 {{"it"}, "Pagata:"},
                 {{"en", "", "fr-CA", "French", " fr", "fr ", "f", "pt"}, "Paid:"}},
                [](const char *code) {
                    return taken(Qel_rcpt_msg_to_string_colon(Qel_rcpt_lang_from_str(code),
                                                              QEL_RCPT_MSG_PAID));
                });
}

TEST(Messages, NumbersWithAndWithoutText)
{
    for (const unsigned number : {0U, 1U, 2U, 3U, 4U, 5U, 4000000000U}) {
        const Qel_rcpt_lang_t lang{number};
        for (unsigned msg = 1; msg <= 101; ++msg)
            EXPECT_FALSE(Qel_str_isempty(Qel_rcpt_msg_to_string(lang, Qel_rcpt_msg_t{msg})))
                << lang << ' ' << msg;
        for (const unsigned msg : {0U, 102U, 4000000000U}) {
            EXPECT_EQ(Qel_rcpt_msg_to_string(lang, Qel_rcpt_msg_t{msg}), nullptr) << msg;
            EXPECT_EQ(taken(Qel_rcpt_msg_to_string_colon(lang, Qel_rcpt_msg_t{msg})), "") << msg;
        }
    }
}

TEST(Messages, Texts)
{
    const auto colon = [](unsigned lang, Qel_rcpt_msg_t msg) {
        return taken(Qel_rcpt_msg_to_string_colon(Qel_rcpt_lang_t{lang}, msg));
    };
    EXPECT_EQ(colon(1, QEL_RCPT_MSG_VERIED_PIN), " Verifiee par NIP:");
    EXPECT_EQ(colon(2, QEL_RCPT_MSG_TRANTYPE), "Tipo de transacci\xC3\xB3n:");
    EXPECT_EQ(colon(3, QEL_RCPT_MSG_TOTAL), "Gesamt:");
    EXPECT_EQ(colon(4, QEL_RCPT_MSG_UNKNOWN_PHONE_S), "telefono sconosciuto:");
    EXPECT_EQ(colon(5, QEL_RCPT_MSG_NONCASH_PRICE), "Non Cash Price:");
}

TEST(Messages, OutliveTheUseOfTheLibrary)
{
    const char *text = Qel_rcpt_msg_to_string(fr, QEL_RCPT_MSG_PAID);
    Qel_rcpt_init();
    Qel_rcpt_deinit();
    Qel_rcpt_deinit();
    EXPECT_STREQ(text, "Paye");
    EXPECT_EQ(Qel_rcpt_msg_to_string(fr, QEL_RCPT_MSG_PAID), text);
}

TEST(Money, Styles)
{
    expect_rows({{{"12.34", "12.349", "12.34 "}, "$12.34"},
                 {{"-1.5"}, "$-1.50"},
                 {{"0"}, "$0.00"},
                 {{"12345678901234567890123456789012"}, "$12345678901234567890123456789012.00"},
                 {{"", "abc", "12,34", "12.34 USD"}, absent}},
                [](const char *amount) { return taken(Qel_rcpt_format_money(amount, &us)); });

    Qel_rcpt_attrs_t attrs = us;
    attrs.csym_right = true;
    EXPECT_EQ(taken(Qel_rcpt_format_money("-1.5", &attrs)), "-1.50$");
    attrs.currency_dec = '\0';
    EXPECT_EQ(taken(Qel_rcpt_format_money("-1.5", &attrs)), "-150$");
    attrs.csym_right = false;
    EXPECT_EQ(taken(Qel_rcpt_format_money("12.34", &attrs)), "$1234");
}

struct sum {
    char *(*format)(const Qel_hash_dict_t *kvs, const Qel_rcpt_attrs_t *attrs);
    const char *required;
    texts added, subtracted, others;
};

void expect_term(const sum &sum, const char *key, const char *outcome)
{
    SCOPED_TRACE(std::string(sum.required) + ' ' + key);
    const auto with = [&](const char *required, const char *term) {
        return taken(sum.format(record{{key, term}, {sum.required, required}}, &us));
    };
    EXPECT_EQ(with("10.00", "1.25"), outcome);
    EXPECT_EQ(with("10.00", ""), "$10.00");
    EXPECT_EQ(with("", "1.25"), absent);
    EXPECT_EQ(taken(sum.format(record{{key, "1.25"}}, &us)), absent);
}

TEST(Money, EveryTermOfASum)
{
    const texts charges = {"examount",        "tax", "cashbackamount",
                           "surchargeamount", "fee", "convenience_fee",
                           "supplemental_fee"};
    const sum sums[] = {
        {Qel_rcpt_format_subtotal, "amount", {"discountamount"}, charges, {"u_tip", "authamount"}},
        {Qel_rcpt_format_total_amount, "amount", {"u_tip", "u_cashback"}, {}, charges},
        {Qel_rcpt_format_order_subtotal, "order_total", {}, {"order_tip", "order_tax"}, charges},
    };
    for (const sum &sum : sums) {
        for (const char *key : sum.added)
            expect_term(sum, key, "$11.25");
        for (const char *key : sum.subtracted)
            expect_term(sum, key, "$8.75");
        for (const char *key : sum.others)
            expect_term(sum, key, "$10.00");
    }
}

TEST(Money, OddAmountsInSums)
{
    const std::string zeros(26, '0');
    const std::string thirty = "amount:10,tax:" + zeros + "1.25";
    const std::string thirty_one = "amount:10,tax:" + zeros + "01.25"; // the last is cut
    const std::string added = "amount:10,discountamount:" + zeros + "01.25";
    expect_rows(
        {{{"amount:10,tax:0.80,fee:2,examount:.5,discountamount:1"}, "$7.70"},
         {{"amount:1.00,tax:1.50"}, "$-0.50"},
         {{"amount:10.00,tax:-0.80", "amount: 10.00,tax: - 0.80"}, "$10.80"},
         {{"amount:11.00,tax: 1.00,examount:   2.00", "amount:11.00,tax:\t1,fee: +2"}, "$8.00"},
         {{"amount:abc,tax:1.25"}, "$-1.25"},
         {{"amount:10.009,tax:0.009"}, "$10.00"},
         {{thirty.c_str()}, "$8.75"},
         {{thirty_one.c_str()}, "$8.80"},
         {{added.c_str()}, "$11.25"},
         {{"amount:99999999999999999999,discountamount:1"}, "$92233720368547758.07"},
         {{"amount:-99999999999999999999,tax:1"}, "$-92233720368547758.08"}},
        [](const char *fields) { return taken(Qel_rcpt_format_subtotal(record(fields), &us)); });
}

TEST(Money, AmountDueAndAuthorised)
{
    expect_rows({{{"amount:10.00,authamount:6.00"}, "$4.00|$6.00"},
                 {{"amount:10.00,authamount:9.99"}, "$0.01|$9.99"},
                 {{"amount:10.00,authamount:12.00"}, "~|$12.00"},
                 {{"amount:10.00,authamount:0.00", "amount:10.00,authamount:abc"}, "$10.00|~"},
                 {{"amount:0,authamount:-1.50"}, "$1.50|$-1.50"},
                 {{"amount:99999999999999999999,authamount:-1"}, "$92233720368547758.07|$-1.00"},
                 {{"amount:-99999999999999999999,authamount:1"}, "~|$1.00"}, // nothing is due
                 {{"amount:10.00,authamount:10", "amount:10.00,authamount:", "amount:10.00",
                   "amount:,authamount:-6.00", "authamount:-6.00"},
                  "~|~"}},
                [](const char *fields) {
                    const record kvs(fields);
                    return joined({taken(Qel_rcpt_format_amount_due(kvs, &us)),
                                   taken(Qel_rcpt_format_authamount(kvs, &us))});
                });
}

TEST(Money, PaymentDiscounts)
{
    // Changes to a cash payment with a discount of 3.00, 2.00 of it for cash.
    expect_rows({{{"", "order_total:0.00"}, "$1.00|$2.00"},
                 {{"discountamount:2.00"}, "~|$2.00"},
                 {{"order_cash_discount:3.50"}, "$-0.50|$3.50"},
                 {{"order_cash_discount:", "order_cash_discount:0.00", "order_cash_discount:abc",
                   "order_total:20.00", "cardtype:VISA", "cardtype:", "cardtype:cash "},
                  "$3.00|~"},
                 {{"discountamount:", "discountamount:0.00", "discountamount:abc",
                   "cardtype:VISA,discountamount:3x", "discountamount:3x,order_cash_discount:"},
                  "~|~"}},
                [](const char *changes) {
                    record kvs("cardtype:CASH,discountamount:3.00,order_cash_discount:2.00");
                    char unwritten[] = "";
                    char *outputs[] = {unwritten, unwritten};
                    Qel_rcpt_format_payment_discounts(kvs.set(changes), &us, &outputs[0],
                                                      &outputs[1]);
                    if (outputs[0] == unwritten || outputs[1] == unwritten)
                        return std::string("unwritten");
                    return joined({taken(outputs[0]), taken(outputs[1])});
                });
}

TEST(Money, OrderMoneyAndPartialPayment)
{
    const auto expect = [](const char *fields, bool order_money, bool partial) {
        EXPECT_EQ(Qel_rcpt_have_order_money(record(fields)), order_money) << fields;
        EXPECT_EQ(Qel_rcpt_is_order_parital_payment(record(fields)), partial) << fields;
    };
    expect("amount:5.00", false, false);
    expect("order_total:0.001,amount:5.00", false, false);
    expect("order_total:20.00,amount:20", true, false);
    expect("order_total:20.00,amount:5.00", true, true);
    expect("order_total:20.00", true, true);
    expect("order_total:-5,amount:5", true, true);
}

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

using lines = std::vector<std::string>;

// The lines of the items: type, name, quantity and price.
lines collect(const std::string &items, const Qel_rcpt_attrs_t &attrs = us)
{
    const auto add_line = [](void *info, const char *name, const char *qty, const char *price,
                             Qel_rcpt_line_item_type_t type, void *ret) {
        static_cast<lines *>(info)->push_back(
            joined({Qel_rcpt_line_item_type_to_str(type), borrowed(name), borrowed(qty),
                    borrowed(price)}));
        ++*static_cast<std::size_t *>(ret);
    };
    lines all;
    std::size_t count = 0;
    Qel_rcpt_generate_line_items(items.c_str(), &all, &attrs, add_line, &count);
    EXPECT_EQ(count, all.size());
    return all;
}

TEST(LineItems, TypeAndPriceAtBothLevels)
{
    const struct {
        const char *type; // a JSON value
        const char *top, *modifier;
    } rows[] = {
        {R"("Item")", "item|A|~|€7,50", "addon|A|~|€7,50"},
        {R"("ADDON")", "addon|A|~|€7,50", "addon|A|~|€7,50"},
        {R"("discount_fixed")", "order_discount_fixed|A|~|€7,50", "item_discount_fixed|A|~|€7,50"},
        {R"("Discount_Percent")", "order_discount_percent|A|~| 7.5",
         "item_discount_percent|A|~| 7.5"},
        {R"("cashdiscount")", "order_discount_cash|A|~| 7.5", "item|A|~|€7,50"},
        {R"("discount")", "item|A|~|€7,50", "item|A|~|€7,50"},
        {R"("")", "item|A|~|€7,50", "item|A|~|€7,50"},
        {"7", "item|A|~|€7,50", "item|A|~|€7,50"},
    };
    for (const auto &[type, top, modifier] : rows) {
        const std::string item =
            R"([{"name":"A", "price":" 7.5", "type":)" + std::string(type) + "}]";
        EXPECT_EQ(collect(item, euro), lines{top}) << type;
        EXPECT_EQ(collect(R"([{"name":"B", "modifiers":)" + item + "}]", euro),
                  (lines{"item|B|~|~", modifier}))
            << type;
    }
}

TEST(LineItems, Order)
{
    EXPECT_EQ(collect(R"([{"name":"D1", "type":"discount_fixed", "price":"1"},
                          {"name":"A", "qty":"2", "price":"4.5", "notes":"cold"},
                          {"name":"C", "type":"cashdiscount", "price":"2.00"},
                          {"name":"D2", "type":"DISCOUNTED", "price":"3"},
                          {"name":"B", "type":"item"},
                          {"name":"D3", "type":"discount_percent", "price":"5", "notes":"loyal"}])"),
              (lines{"item|A|2|$4.50", "note|cold|~|~", "order_discount_cash|C|~|2.00",
                     "item|B|~|~", "order_discount_fixed|D1|~|$1.00", "item|D2|~|$3.00",
                     "order_discount_percent|D3|~|5", "note|loyal|~|~"}));
    EXPECT_EQ(collect(R"([{"name":"A", "modifiers":[
                             {"name":"B", "type":"discount_fixed", "notes":"n", "modifiers":[
                                 {"name":"C", "type":"cashdiscount"},
                                 {"name":"D", "type":"item"}]},
                             {"name":"E", "type":"addon"}], "notes":"m"},
                          {"name":"F"}])"),
              (lines{"item|A|~|~", "note|m|~|~", "item_discount_fixed|B|~|~", "note|n|~|~",
                     "item|C|~|~", "addon|D|~|~", "addon|E|~|~", "item|F|~|~"}));
}

TEST(LineItems, OddInput)
{
    EXPECT_STREQ(Qel_rcpt_line_item_type_to_str(Qel_rcpt_line_item_type_t{8}), "unknown");
    const struct {
        const char *items;
        lines expected;
    } rows[] = {
        {"", {}},
        {"[]", {}},
        {R"({"name":"A"})", {}},
        {R"([{"name":"A"},)", {}},
        {R"(["A", 1, null, [{"name":"A"}], {"name":"B"}])", {"item|B|~|~"}},
        {R"([{"notes":"n", "modifiers":[{"name":"A"}]}, {"name":"", "notes":"n"}, {"name":1}])",
         {}},
        {R"([{"name":"A", "price":"free", "notes":""}])", {"item|A|~|~"}},
        {R"([{"name":"A", "qty":"", "price":""}, {"name":"B", "qty":2, "price":2}])",
         {"item|A||~", "item|B|~|~"}},
        {R"([{"name":"A", "type":"discount_percent", "price":"ten"},
             {"name":"B", "type":"discount_percent"}])",
         {"order_discount_percent|A|~|ten", "order_discount_percent|B|~|~"}},
        {R"([{"name":"A", "modifiers":{"name":"B"}}, {"name":"C", "modifiers":["D", {}]}])",
         {"item|A|~|~", "item|C|~|~"}},
        {"[{\"name\":\"caf\xC3\xA9 \xFF\"}]", {"item|caf\u00e9 \uFFFD|~|~"}},
    };
    for (const auto &[items, expected] : rows)
        EXPECT_EQ(collect(items), expected) << items;
}

TEST(TransactionType, Titles)
{
    expect_rows({{{"SALE", "redemption", "force", "tip", "ebtcbcash", "ebtcbsale", "ebtfssale",
                   "ebtfsvoucher", "Incremental"},
                  "Debit Card Sale|Credit Card Sale|Purchase"},
                 {{"PREAUTH"}, "Authorization"},
                 {{"activate", "issue"}, "Activate"},
                 {{"return", "merchreturn", "ebtfsreturn", "Void", "refund"}, "Refund"},
                 {{"reload", "credit"}, "Reload"},
                 {{"balanceinq", "ebtcbbalance", "ebtfsbalance"}, "Balance Inquiry"},
                 {{"avsonly", "verifyonly"}, "Verification"},
                 {{"admin", "cardtype"}, "Administrative"},
                 {{"cashout"}, "Cash Out"},
                 {{"Reversal"}, "Reversal"},
                 {{"sales"}, "sales"},
                 {{""}, ""}},
                [](const char *action) {
                    const result debit = borrowed(Qel_rcpt_get_tran_type(action, en, "Debit"));
                    const result credit = borrowed(Qel_rcpt_get_tran_type(action, en, "CREDIT"));
                    const result gift = borrowed(Qel_rcpt_get_tran_type(action, en, "gift"));
                    return debit == credit && debit == gift ? debit : joined({debit, credit, gift});
                });
}

TEST(TransactionType, MonerisTitles)
{
    const struct {
        texts actions, orig_actions;
        const char *title;
    } rows[] = {
        {{"SALE", "incremental"}, {nullptr, "refund"}, "Purchase"},
        {{"preauth"}, {nullptr, "purchase"}, "Pre-authorization"},
        {{"force", "PreauthComplete"}, {nullptr, "refund"}, "Pre-authorization Completion"},
        {{"return", "refund"}, {nullptr, "purchase"}, "Refund"},
        {{"reversal", "VOID"}, {"Purchase"}, "Purchase Correction"},
        {{"Reversal", "void"}, {"REFUND"}, "Refund Correction"},
        {{"reversal", "void"}, {"preauth"}, "Pre-authorization Completion"},
        {{"reversal", "void"}, {nullptr, "", "sale", "preauthcomplete"}, "Correction"},
        {{"avsonly", "verifyonly"}, {nullptr}, "Card Verification"},
        {{"balanceinq"}, {nullptr, "purchase"}, "Enquete d'equilibre"},
        {{"redemption"}, {nullptr}, "Vente cartes de credit"},
        {{"anything"}, {"purchase"}, "anything"},
    };
    for (const auto &[actions, orig_actions, title] : rows) {
        for (const char *action : actions) {
            for (const char *orig : orig_actions)
                EXPECT_STREQ(Qel_rcpt_get_tran_type_moneris(action, orig, fr, "credit"), title)
                    << action << ' ' << Qel_str_safe(orig);
        }
    }
}

TEST(TransactionType, CardClass)
{
    expect_decisions({{{"u_cardclass:debit"}, "debit"},
                      {{"card_cardclass:credit,u_cardclass:"}, "credit"},
                      {{"card_cardclass:", ""}, ""}},
                     [](const record &kvs) { return borrowed(Qel_rcpt_get_cardclass(kvs)); });
}

TEST(AbsentArguments, OfConfigurationAndMoney)
{
    EXPECT_EQ(Qel_rcpt_lang_from_str(nullptr), en);
    Qel_rcpt_attrs_t attrs = euro;
    Qel_rcpt_setup_rcpt_attrs(&attrs, nullptr, false);
    EXPECT_TRUE(attrs.lang == en && attrs.country_code == 840 && attrs.timezone == nullptr);
    Qel_rcpt_setup_rcpt_attrs(nullptr, nullptr, true);
    EXPECT_EQ(taken(Qel_rcpt_format_money("1", &attrs)), "$1.00");

    EXPECT_EQ(taken(Qel_rcpt_format_money(nullptr, nullptr)), absent);
    const record kvs("amount:3,authamount:2,order_total:3,discountamount:1");
    for (const auto format :
         {Qel_rcpt_format_order_subtotal, Qel_rcpt_format_subtotal, Qel_rcpt_format_total_amount,
          Qel_rcpt_format_amount_due, Qel_rcpt_format_authamount}) {
        EXPECT_EQ(taken(format(nullptr, nullptr)), absent);
        EXPECT_EQ(taken(format(kvs, nullptr)).value_or("").substr(0, 1), "$");
    }
    Qel_rcpt_format_payment_discounts(kvs, nullptr, nullptr, nullptr);
    Qel_rcpt_format_payment_discounts(nullptr, nullptr, nullptr, nullptr);
    EXPECT_FALSE(Qel_rcpt_have_order_money(nullptr) || Qel_rcpt_is_order_parital_payment(nullptr));
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
