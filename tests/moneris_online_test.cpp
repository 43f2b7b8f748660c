#include "moneris_receipt.hpp"

#include <random>

namespace
{

using namespace test::moneris;
using test::record;

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

} // namespace
