#include "qel_rcpt_int.h"

#include "test_record.hpp"

#include <qelstdlib.hpp>

#include <cstddef>
#include <ostream>
#include <sstream>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include <gtest/gtest.h>
#include <gumbo.h>

namespace
{

using test::record;

// An element as a browser sees it, with its place in the tree. Text that stands beside elements
// becomes an element "#text" of its own.
struct element {
    std::size_t depth;
    std::string tag;
    std::vector<std::pair<std::string, std::string>> attributes;
    std::string text;

    bool operator==(const element &) const = default;
};
using elements = std::vector<element>;

void PrintTo(const element &one, std::ostream *out)
{
    *out << '\n' << std::string(2 * one.depth, ' ') << '<' << one.tag;
    for (const auto &[name, value] : one.attributes)
        *out << ' ' << name << "=\"" << value << '"';
    *out << '>' << one.text;
}

// A block through the eyes of an HTML5 parser.
struct parsed_block {
    elements tree;
    unsigned int error_count = 0;
};

const GumboNode &child_at(const GumboNode &node, unsigned int at)
{
    return *static_cast<const GumboNode *>(node.v.element.children.data[at]);
}

void walk(const GumboNode &node, std::size_t depth, elements &tree)
{
    if (node.type == GUMBO_NODE_WHITESPACE)
        return;
    if (node.type != GUMBO_NODE_ELEMENT) {
        tree.push_back({depth, "#text", {}, node.v.text.text});
        return;
    }
    const GumboElement &html = node.v.element;
    element one{depth, gumbo_normalized_tagname(html.tag), {}, {}};
    for (unsigned int i = 0; i < html.attributes.length; ++i) {
        const auto *attribute = static_cast<const GumboAttribute *>(html.attributes.data[i]);
        one.attributes.emplace_back(attribute->name, attribute->value);
    }
    const bool is_leaf = html.children.length == 1 && child_at(node, 0).type != GUMBO_NODE_ELEMENT;
    if (is_leaf)
        one.text = child_at(node, 0).v.text.text;
    tree.push_back(std::move(one));
    for (unsigned int i = 0; !is_leaf && i < html.children.length; ++i)
        walk(child_at(node, i), depth + 1, tree);
}

parsed_block parse(std::string_view block)
{
    const std::string page = std::string("<!DOCTYPE html><title>t</title>").append(block);
    GumboOutput *output = gumbo_parse(page.c_str());
    parsed_block parsed;
    const GumboNode &html = *output->root;
    const GumboNode &body = child_at(html, html.v.element.children.length - 1);
    for (unsigned int i = 0; i < body.v.element.children.length; ++i)
        walk(child_at(body, i), 0, parsed.tree);
    parsed.error_count = output->errors.length;
    gumbo_destroy_output(&kGumboDefaultOptions, output);
    return parsed;
}

// What was meant

// A child of a block: "id|text" for a heading, "id|class|text" for a value, "id|class|label|value"
// for a group.
elements child(const std::string &row)
{
    std::vector<std::string> parts;
    std::istringstream in(row);
    for (std::string part; std::getline(in, part, '|');)
        parts.push_back(part);
    const std::string &id = parts.at(0);
    if (parts.size() == 2)
        return {{1, "div", {{"id", id}, {"class", "money_heading rcpt_title"}}, parts[1]}};
    if (parts.size() == 3)
        return {{1, "div", {{"id", id}, {"class", "rcpt_val " + parts[1]}}, parts[2]}};
    elements group = {{1, "div", {{"id", id + "_group"}, {"class", "rcpt_group " + parts[1]}}, ""},
                      {2, "span", {{"id", id + "_label"}, {"class", "rcpt_group_label"}}, parts[2]},
                      {2, "span", {{"id", id}, {"class", "rcpt_group_val"}}, parts.at(3)}};
    if (id.empty()) // the lane's
        group[2].attributes.erase(group[2].attributes.begin());
    return group;
}

// A line item; one without a price has no span for it.
elements item(const std::string &cls, const std::string &name, const test::result &qty,
              const test::result &price)
{
    elements line = {{1, "div", {{"class", cls}}, ""},
                     {2, "span", {}, ""},
                     {3, "span", {{"class", "rcpt_group_label name"}}, name}};
    if (qty)
        line.push_back({3, "span", {{"class", "rcpt_group_label qty"}}, *qty});
    if (price)
        line.push_back({2, "span", {{"class", "rcpt_group_val price"}}, *price});
    return line;
}

elements block(const std::string &name, const std::vector<elements> &children)
{
    elements tree = {{0, "div", {{"id", "rcpt_" + name}, {"class", "rcpt_block " + name}}, ""}};
    if (name == "merch_info")
        tree[0].attributes[1].second += " merch info";
    for (const elements &one : children)
        tree.insert(tree.end(), one.begin(), one.end());
    return tree;
}

constexpr Qel_rcpt_config_t us_retail = {QEL_RCPT_LANG_EN,    QEL_RCPT_LANG_EN, 840, 840,
                                         QEL_RCPT_IND_RETAIL, nullptr};
constexpr Qel_rcpt_config_t italian_customer = {QEL_RCPT_LANG_IT,    QEL_RCPT_LANG_EN, 380, 978,
                                                QEL_RCPT_IND_RETAIL, nullptr};

class HtmlReceipt : public testing::Test
{
  protected:
    HtmlReceipt() { Qel_rcpt_init(); }
    ~HtmlReceipt() override { Qel_rcpt_deinit(); }

    static test::result written(const record &fields, const char *key,
                                const Qel_rcpt_config_t &config = us_retail)
    {
        const qel::dict blocks(Qel_rcpt_generate_html(fields, &config));
        return test::borrowed(Qel_hash_dict_get_direct(blocks.get(), key));
    }

    struct block_case {
        const char *fields;
        std::vector<const char *> rows; // none: the block is absent
    };
    // Each block is what was meant, without a fault in its HTML.
    static void expect_blocks(const std::string &key, const std::vector<block_case> &cases,
                              const Qel_rcpt_config_t &config = us_retail)
    {
        for (const auto &[fields, rows] : cases) {
            SCOPED_TRACE(testing::Message() << key << " of " << fields);
            const test::result html =
                written(record("rcpt_host_ts:012324153000").set(fields), key.c_str(), config);
            ASSERT_EQ(html.has_value(), !rows.empty());
            if (!html)
                continue;
            std::vector<elements> children;
            for (const char *row : rows)
                children.push_back(child(row));
            const parsed_block parsed = parse(*html);
            EXPECT_EQ(parsed.tree, block(key.substr(key.find('_') + 1), children));
            EXPECT_EQ(parsed.error_count, 0U);
        }
    }
};

std::string keys_of(Qel_hash_dict_t *new_blocks)
{
    const qel::dict blocks(new_blocks);
    std::string keys;
    for (const auto [key, block] : qel::pairs(blocks.get()))
        keys.append(key).append(" ");
    return keys;
}

TEST_F(HtmlReceipt, HasTheBlocksOfEachCopyInOrder)
{
    record fields("amount:5.00,order_total:9.00,rcpt_emv_aid:A0,order_notes:n,u_need_signature:1");
    Qel_hash_dict_insert(fields, "line_items", R"([{"name":"Tea"}])");
    const std::string all = "cust_merch_info cust_reference cust_items cust_order_money cust_money "
                            "cust_disposition cust_emv cust_notice cust_notes ";
    Qel_rcpt_config_t config = us_retail;
    EXPECT_EQ(keys_of(Qel_rcpt_generate_html(fields, &config)),
              all + "merch_merch_info merch_reference merch_items merch_order_money merch_money "
                    "merch_disposition merch_signature merch_emv merch_notice merch_notes ");
    config.industry = QEL_RCPT_IND_SELFSERV;
    EXPECT_EQ(keys_of(Qel_rcpt_generate_html(fields, &config)), all);
    EXPECT_EQ(keys_of(Qel_rcpt_generate_html(nullptr, nullptr)),
              "cust_merch_info cust_reference cust_disposition cust_notice "
              "merch_merch_info merch_reference merch_disposition merch_notice ");
}

TEST_F(HtmlReceipt, WritesMarkupForPeopleAndBrowsers)
{
    const record fields{{"rcpt_user_notes", "Joe's\r\n\"A & B\"\r<1>\r"}};
    EXPECT_EQ(written(fields, "cust_notes"),
              "<div id=\"rcpt_notes\" class=\"rcpt_block notes\">\n"
              "  <div id=\"user_notes_group\" class=\"rcpt_group user notes\">\n"
              "    <span id=\"user_notes_label\" class=\"rcpt_group_label\"></span>\n"
              "    <span id=\"user_notes\" class=\"rcpt_group_val\">"
              "Joe&#39;s\n&quot;A &amp; B&quot;\n&lt;1&gt;\n</span>\n"
              "  </div>\n"
              "</div>");
}

TEST_F(HtmlReceipt, ShowsTheMerchant)
{
    expect_blocks("cust_merch_info",
                  {{"",
                    {"merch_name|name|Unknown Merchant Name", "merch_addr1|address|Unknown Address",
                     "merch_phone|phone|Unknown Phone Number"}},
                   {"merch_url:w,merch_email:e,merch_phone:5,merch_addr3:c,merch_addr2:b,"
                    "merch_addr1:a,merch_name:n",
                    {"merch_name|name|n", "merch_addr1|address|a", "merch_addr2|address|b",
                     "merch_addr3|address|c", "merch_phone|phone|5", "merch_email|email|e",
                     "merch_url|url|w"}},
                   {"merch_name:,merch_addr1:,merch_phone:", {}}});
    expect_blocks(
        "cust_merch_info",
        {{"merch_addr1:,merch_phone:", {"merch_name|name|Nome del commerciante sconosciuto"}}},
        italian_customer);
}

TEST_F(HtmlReceipt, ShowsTheReference)
{
    constexpr const char *lane = "|x_id|Lane|1";
    constexpr const char *time = "time|time|Time|01/23/24 15:30:00";
    expect_blocks(
        "merch_reference",
        {{"", {lane, time}},
         {"laneid:7", {"|x_id|Lane|7", time}},
         {"action:sale,action_trans:return", {"action|action|Refund", lane, time}},
         {"action:Sale,action_trans:,card_cardclass:Debit",
          {"action|action|Debit Card Sale", lane, time}},
         {"cardtype:Interac,rcpt_entry_mode:C,rcpt_acct_type:savings,account:*42,"
          "cardholdername:/",
          {lane, "cardtype|type cardtype|Interac", "entry_mode|entry mode|C",
           "acct_type|account type|Account Type|Savings", "account|account|Account|*42",
           "cardholdername|cardholdername|Customer|/", time}},
         {"ordernum:A1,ptrannum:12", {lane, time, "ordernum|x_id|Order Number|A1"}},
         {"ordernum:,ptrannum:12", {lane, time, "ordernum|x_id|Order Number|12"}},
         {"custref:p,ttid:t,rcpt_issuer_resp_code:05,rcpt_resp_code:051,auth:a,batch:b,stan:s",
          {lane, time, "custref|x_id|PO Number|p", "ttid|x_id|TTID|t",
           "resp_code|code|Response Code|05/051", "auth|auth|Auth|a", "batch|batch|Batch|b",
           "stan|stan|Stan|s"}},
         {"rcpt_custom:\"b:2,A:1,c:\"", {lane, time, "custom_A|custom|A|1", "custom_b|custom|b|2"}},
         {"rcpt_custom:my field/x:v", {lane, time, "custom_my_field_x|custom|my field/x|v"}},
         {"rcpt_custom:\"\"\"it's \"\"\"\"<b>\"\"\"\"\"\":\"\"1,2\"\"\"",
          {lane, time, "custom_it's_\"_b_\"|custom|it's \"<b>\"|1,2"}},
         {"rcpt_custom:no pair", {lane, time}}});
}

// Quantities and prices beside the form of a line; the text of each is cut at 255 bytes.
TEST_F(HtmlReceipt, ShowsLineItems)
{
    const struct {
        std::string items;
        std::vector<elements> rows;
    } cases[] = {
        {R"([{"name":"Tea","qty":"1","price":"2"},{"name":"Pie","qty":"2","price":"4.5"},
             {"name":"Air","qty":"1.0"}])",
         {item("rcpt_group item", "Tea", test::absent, "$2.00"),
          item("rcpt_group item", "Pie", "x2", "$4.50"),
          item("rcpt_group item", "Air", "x1.0", "")}},
        {R"([{"name":"5 off","type":"discount_fixed","price":"5"},
             {"name":"10 off","type":"discount_percent","price":"10"},
             {"name":"Cash","type":"cashdiscount","price":"3.50","qty":""},
             {"name":"Tea","price":"2","notes":"hot","modifiers":[
               {"name":"Milk","type":"addon","price":".5","qty":"2"},
               {"name":"Happy hour","type":"discount_percent","price":"25"},
               {"name":"Regular","type":"discount_fixed","price":"1"}]}])",
         {item("rcpt_group order_discount_percent cashdiscount", "Cash", test::absent, "- 3.50%"),
          item("rcpt_group item", "Tea", test::absent, "$2.00"),
          item("rcpt_group item notes", "hot", test::absent, test::absent),
          item("rcpt_group addon", "Milk", "x2", "$0.50"),
          item("rcpt_group item_discount_percent", "Happy hour", test::absent, "- 25%"),
          item("rcpt_group item_discount_fixed", "Regular", test::absent, "- $1.00"),
          item("rcpt_group order_discount_fixed", "5 off", test::absent, "- $5.00"),
          item("rcpt_group order_discount_percent", "10 off", test::absent, "- 10%")}},
        {R"([{"name":"a","type":"discount_fixed"},{"name":"b","type":"discount_percent"}])",
         {item("rcpt_group order_discount_fixed", "a", test::absent, "- "),
          item("rcpt_group order_discount_percent", "b", test::absent, "- %")}},
        {R"([{"name":"a","qty":")" + std::string(300, '9') +
             R"(","type":"cashdiscount","price":")" + std::string(252, '1') + "€\"}]",
         {item("rcpt_group order_discount_percent cashdiscount", "a", "x" + std::string(254, '9'),
               "- " + std::string(252, '1'))}},
    };
    for (const auto &c : cases) {
        const record fields{{"line_items", c.items.c_str()}};
        EXPECT_EQ(parse(written(fields, "cust_items").value_or("")).tree, block("items", c.rows));
    }
    EXPECT_EQ(written(record{{"line_items", "[]"}}, "cust_items"), test::absent);
}

TEST_F(HtmlReceipt, ShowsOrderMoney)
{
    constexpr const char *heading = "rcpt_order_money_heading|Order";
    constexpr const char *total = "order_total|amount order total|Total|$50.00";
    expect_blocks(
        "merch_order_money",
        {{"order_total:50.00,amount:50",
          {"order_subtotal|amount order subtotal|Subtotal|$50.00", total}},
         {"order_total:50.00,amount:20,order_tip:6,order_tax:4,order_discount:5",
          {heading, "order_subtotal|amount order subtotal|Subtotal|$40.00",
           "order_discountamount|amount order discount|Discount|- $5.00",
           "order_tip|amount order tip|Tip|$6.00", "order_tax|amount order tax|Tax|$4.00", total}},
         {"order_total:50.00,order_tip:-1.00,order_tax:0.00,order_discount:-5",
          {heading, "order_subtotal|amount order subtotal|Subtotal|$51.00", total}},
         {"amount:20", {}}});
}

TEST_F(HtmlReceipt, ShowsMoney)
{
    expect_blocks(
        "cust_money",
        {{"amount:50.00,order_total:50", {}},
         {"amount:20,order_total:50.00",
          {"rcpt_money_heading|Payment", "subtotal|amount subtotal|Subtotal|$20.00",
           "totalamount|amount total|Paid|$20.00"}},
         {"amount:60,surchargeamount:1,fee:2,convenience_fee:3,supplemental_fee:4,tax:5,"
          "cashbackamount:6,u_tip:7,u_cashback:8,balance:9",
          {"subtotal|amount subtotal|Subtotal|$39.00", "tip|amount tip|Tip|$7.00",
           "surchargeamount|amount surcharge|Surcharge|$1.00", "fee|amount fee|Fee|$2.00",
           "convenience_fee|amount fee|Convenience Fee|$3.00",
           "supplemental_fee|amount fee|Supplemental Fee|$4.00", "tax|amount tax|Tax|$5.00",
           "cashbackamount|amount cashback|Cash back|$6.00",
           "totalamount|amount total|Total|$75.00", "balance|amount balance|Balance|$9.00"}},
         {"amount:10,authamount:6,examount:3,u_tip:0",
          {"subtotal|amount subtotal|Subtotal|$7.00", "tip|amount tip|Tip|$3.00",
           "totalamount|amount total|Total|$10.00",
           "authamount|amount authorized|Authorized Amount|$6.00",
           "amountdue|amount due|Amount Due|$4.00"}},
         {"amount:8,cardtype:Cash,discountamount:3,order_cash_discount:1",
          {"subtotal|amount subtotal|Subtotal|$11.00",
           "discountamount|amount discount|Discount|- $2.00",
           "cash_discount|amount discount|Cash Discount|- $1.00",
           "totalamount|amount total|Total|$8.00"}},
         // a discount has room for 31 bytes
         {"discountamount:1234567890123456789012345678901",
          {"discountamount|amount discount|Discount|"
           "- $1234567890123456789012345678"}},
         {"authamount:5,u_tip:0.001", {}}});
    expect_blocks("merch_money", {{"amount:10,balance:9",
                                   {"subtotal|amount subtotal|Subtotal|$10.00",
                                    "totalamount|amount total|Total|$10.00"}}});
}

TEST_F(HtmlReceipt, ShowsTheOutcome)
{
    expect_blocks(
        "cust_disposition",
        {{"", {"auth_result|result|Transaction Not Completed"}},
         {"code:AUTH,phard_code:SUCCESS,rcpt_entry_mode:F,rcpt_emv_cvm:pin,printdata:p",
          {"card_status|status|Chip Card Swiped", "pin_status|status|Verified By Pin",
           "auth_result|result|Approved", "auth_mode|mode|Mode|Issuer", "printdata|print|p"}}});
    expect_blocks("cust_disposition",
                  {{"code:AUTH,phard_code:SUCCESS",
                    {"auth_result|result|Approvato", "auth_mode|mode|Mode|Emittente"}}},
                  italian_customer);
}

TEST_F(HtmlReceipt, HasRoomForTheSignature)
{
    constexpr const char *line = "line|line|X_________";
    constexpr const char *agreement =
        "agreement|agreement|Cardholder Will Pay Card Issuer Above Amount Pursuant To "
        "Cardholder Agreement";
    expect_blocks("merch_signature",
                  {{"u_need_signature:yes,u_flowflags:SIGCAPTURED", {line, agreement}},
                   {"u_need_signature:yes,cardholdername:ALEX",
                    {line, agreement, "cardholdername|name|ALEX"}},
                   {"u_flowflags:A|SIGCAPTURED,cardholdername:ALEX",
                    {"sigcaptured|status|Signature Captured Electronically"}},
                   {"cardholdername:ALEX", {}}});
}

TEST_F(HtmlReceipt, ShowsWhatTheChipSaid)
{
    expect_blocks(
        "merch_emv",
        {{"rcpt_emv_card_decline:8,rcpt_emv_ac:7,rcpt_emv_actype:6,rcpt_emv_iad:5,rcpt_emv_tsi:4,"
          "rcpt_emv_tvr:3,rcpt_emv_aid:2,rcpt_emv_name:1",
          {"name|emv_data|Name|1", "aid|emv_data|AID|2", "tvr|emv_data|TVR|3", "tsi|emv_data|TSI|4",
           "iad|emv_data|IAD|5", "actype|emv_data|AC Type|6", "ac|emv_data|AC|7",
           "odd|emv_data|Offline Decline Data|8"}},
         {"rcpt_emv_aid:,rcpt_emv_cvm:pin", {}}});
}

TEST_F(HtmlReceipt, ClosesWithNoticeAndNotes)
{
    constexpr const char *message =
        "message|message||Important - Retain This Copy For Your Records";
    constexpr const char *copy = "copy|status||Merchant Copy";
    expect_blocks("merch_notice",
                  {{"u_duplicate:1", {message, "duplicate|status||Duplicate", copy}},
                   {"cardtype:CASH,order_noncash_price:3,order_cash_price:2",
                    {"alt_price|alt_price|Non Cash Price|$3.00", message, copy}},
                   {"cardtype:VISA,order_noncash_price:3,order_cash_price:-2",
                    {"alt_price|alt_price|Cash Price|$-2.00", message, copy}},
                   {"order_cash_price:2 or so", {message, copy}}});
    expect_blocks("cust_notes", {{"rcpt_user_notes:u,order_notes:o",
                                  {"order_notes|order notes||o", "user_notes|user notes||u"}},
                                 {"order_notes:", {}}});
}

// An id has at most 63 bytes, in whole characters; the label keeps the whole name.
TEST_F(HtmlReceipt, CutsTheIdsOfCustomFields)
{
    const std::pair<std::string, std::string> cases[] = {
        {std::string(56, 'x') + "yz", std::string(56, 'x')},
        {std::string(55, 'x') + "é", std::string(55, 'x')},
        {std::string(54, 'x') + "é", std::string(54, 'x') + "é"},
    };
    for (const auto &[name, kept] : cases) {
        const elements tree =
            parse(written(record{{"rcpt_custom", (name + ":v").c_str()}}, "cust_reference")
                      .value_or(""))
                .tree;
        ASSERT_GE(tree.size(), 3U);
        EXPECT_EQ(elements(tree.end() - 3, tree.end()),
                  child("custom_" + kept + "|custom|" + name + "|v"));
    }
}

} // namespace
