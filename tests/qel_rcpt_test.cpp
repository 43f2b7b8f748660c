// The receipt core: attributes, messages, money, line items, transaction types.
#include "core_tests.hpp"

#include <cstdlib>
#include <fstream>
#include <sstream>

#include <sys/resource.h>

namespace
{

using namespace test;

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

// messages.txt has the wording that was agreed on: the number and the text in each language.
TEST(Messages, AreWorded)
{
    std::ifstream file(QELRCPT_SOURCE "/tests/messages.txt");
    std::size_t lines = 0;
    for (std::string line; std::getline(file, line); ++lines) {
        std::istringstream cells(line);
        std::string cell;
        std::getline(cells, cell, '|');
        const Qel_rcpt_msg_t msg{static_cast<std::uint32_t>(std::stoul(cell))};
        for (std::uint32_t lang = QEL_RCPT_LANG_EN; std::getline(cells, cell, '|'); ++lang)
            EXPECT_EQ(borrowed(Qel_rcpt_msg_to_string(Qel_rcpt_lang_t{lang}, msg)), cell) << line;
    }
    EXPECT_EQ(lines, 101U);
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

// Which the C library looks for once; it may be first wanted when no descriptor is free.
TEST(Config, TheSystemsZoneIsReadAtTheBeginning)
{
    setenv("TZ", "Asia/Kathmandu", 1);
    Qel_rcpt_init();
    rlimit limit{};
    getrlimit(RLIMIT_NOFILE, &limit);
    const rlimit none{0, limit.rlim_max};
    setrlimit(RLIMIT_NOFILE, &none);
    Qel_time_localtm_t tm{};
    Qel_time_tolocal(1689336000, &tm, nullptr);
    setrlimit(RLIMIT_NOFILE, &limit);
    unsetenv("TZ");
    EXPECT_EQ(tm.gmtoff, 20700);
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

} // namespace
