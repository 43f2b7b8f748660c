// The forms that carry values: XML as libxml2 reads it, JSON as nlohmann-json does.
#include "test_record.hpp"

#include <qel_rcpt.h>

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include <gtest/gtest.h>
#include <libxml/parser.h>
#include <nlohmann/json.hpp>

namespace
{

using test::record;

// The names and texts of a block in their order; what stands in a nested node has the node's name
// in front, as in "rcpt_custom/name".
using values = std::vector<std::pair<std::string, std::string>>;

void read_children(xmlNode *element, const std::string &prefix, values &out)
{
    EXPECT_EQ(element->properties, nullptr) << prefix;
    for (xmlNode *child = element->children; child != nullptr; child = child->next) {
        const std::string name = prefix + reinterpret_cast<const char *>(child->name);
        if (child->type != XML_ELEMENT_NODE) {
            EXPECT_TRUE(xmlIsBlankNode(child)) << name;
        } else if (xmlFirstElementChild(child) != nullptr) {
            read_children(child, name + "/", out);
        } else {
            EXPECT_EQ(child->properties, nullptr) << name;
            const std::unique_ptr<xmlChar, decltype(xmlFree)> text(xmlNodeGetContent(child),
                                                                   xmlFree);
            out.emplace_back(name, reinterpret_cast<const char *>(text.get()));
        }
    }
}

values read_xml(const std::string &text, std::string_view block)
{
    const std::unique_ptr<xmlDoc, decltype(&xmlFreeDoc)> doc(
        xmlReadMemory(text.data(), static_cast<int>(text.size()), nullptr, "UTF-8",
                      XML_PARSE_NONET | XML_PARSE_NOERROR | XML_PARSE_NOWARNING),
        xmlFreeDoc);
    values out;
    if (doc == nullptr) {
        ADD_FAILURE() << "not well-formed: " << text;
        return out;
    }
    xmlNode *root = xmlDocGetRootElement(doc.get());
    EXPECT_EQ(reinterpret_cast<const char *>(root->name), block);
    read_children(root, "", out);
    return out;
}

void read_members(const nlohmann::ordered_json &node, const std::string &prefix, values &out)
{
    for (const auto &[name, value] : node.items()) {
        if (value.is_object())
            read_members(value, prefix + (node.is_array() ? "item" : name) + "/", out);
        else
            out.emplace_back(prefix + name, value.get<std::string>()); // throws unless it is a text
    }
}

values read_json(const std::string &text, std::string_view block)
{
    const auto root = nlohmann::ordered_json::parse(text);
    EXPECT_EQ(root.is_array(), block == "items");
    values out;
    read_members(root, "", out);
    return out;
}

struct form {
    const char *name;
    Qel_hash_dict_t *(*generate)(const Qel_hash_dict_t *kvs, const Qel_rcpt_config_t *config);
    values (*read)(const std::string &text, std::string_view block);
};

constexpr form xml = {"xml", Qel_rcpt_generate_xml, read_xml};
constexpr form json = {"json", Qel_rcpt_generate_json, read_json};

constexpr Qel_rcpt_config_t retail(Qel_rcpt_lang_t customer, std::uint32_t country,
                                   std::uint32_t currency)
{
    return {customer, QEL_RCPT_LANG_EN, country, currency, QEL_RCPT_IND_RETAIL, nullptr};
}
constexpr Qel_rcpt_config_t us = retail(QEL_RCPT_LANG_EN, 840, 840);
constexpr Qel_rcpt_config_t quebec = retail(QEL_RCPT_LANG_FR, 124, 124);
constexpr Qel_rcpt_config_t germany = retail(QEL_RCPT_LANG_DE, 276, 978);

std::optional<std::string> text_of(const form &a_form, const Qel_hash_dict_t *kvs, const char *key,
                                   const Qel_rcpt_config_t *config = &us)
{
    const qel::dict blocks(a_form.generate(kvs, config));
    return test::borrowed(Qel_hash_dict_get_direct(blocks.get(), key));
}

std::optional<values> values_of(const form &a_form, const Qel_hash_dict_t *kvs,
                                std::string_view key, const Qel_rcpt_config_t *config = &us)
{
    const auto text = text_of(a_form, kvs, key.data(), config);
    if (!text)
        return std::nullopt;
    return a_form.read(*text, key.substr(key.find('_') + 1));
}

constexpr const char *no_block = "no block";

// The values as "name=text, name=text".
std::string listed(const std::optional<values> &block)
{
    if (!block)
        return no_block;
    std::string list;
    for (const auto &[name, text] : *block)
        list.append(list.empty() ? "" : ", ").append(name).append("=").append(text);
    return list;
}

class BothForms : public testing::TestWithParam<form>
{
};

INSTANTIATE_TEST_SUITE_P(Values, BothForms, testing::Values(xml, json),
                         [](const auto &each) { return std::string(each.param.name); });

TEST_P(BothForms, BlocksHoldTheirValues)
{
    const struct {
        const char *key;
        const char *record;
        const char *expected;
        const Qel_rcpt_config_t *config = &us;
    } cases[] = {
        // merchant: only a missing key has a message in its place
        {"cust_merch_info", "",
         "merch_name=Unknown Merchant Name, merch_addr1=Unknown Address, "
         "merch_phone=Unknown Phone Number"},
        {"merch_merch_info", "merch_name:,merch_addr1:,merch_addr2:,merch_phone:,merch_email:",
         "merch_name=, merch_addr1=, merch_phone="},
        {"merch_merch_info",
         "merch_url:u,merch_email:e,merch_phone:p,merch_addr3:a3,merch_addr2:a2,merch_addr1:a1,"
         "merch_name:n",
         "merch_name=n, merch_addr1=a1, merch_addr2=a2, merch_addr3=a3, merch_phone=p, "
         "merch_email=e, merch_url=u"},
        {"cust_merch_info", "merch_addr1:a",
         "merch_name=Nom du Detaillant Inconnu, merch_addr1=a, "
         "merch_phone=Numero de telephone inconnu",
         &quebec},

        // reference
        {"cust_reference",
         "rcpt_host_ts:012324153000,action_trans:sale,action:void,u_cardclass:debit,laneid:7,"
         "cardtype:interac,rcpt_entry_mode:t,rcpt_acct_type:savings,account:1234,"
         "cardholdername:A/B,ordernum:12,ptrannum:13,custref:po,ttid:99,stan:5,batch:6,auth:OK1,"
         "rcpt_resp_code:00,rcpt_issuer_resp_code:001,rcpt_custom:a:b",
         "action=Debit Card Sale, laneid=7, cardtype=interac, rcpt_entry_mode=t, "
         "rcpt_acct_type=Flash Default, account=1234, cardholdername=A/B, "
         "time=01/23/24 15:30:00, ordernum=12, custref=po, ttid=99, rcpt_issuer_resp_code=001, "
         "rcpt_resp_code=00, auth=OK1, batch=6, stan=5, rcpt_custom/a=b"},
        // the lane as it is; no account type but Interac's; no number in place of an empty one; no
        // response code of an offline approval; custom fields that do not parse
        {"merch_reference",
         "rcpt_host_ts:012324153000,action:other,laneid:007 b,cardtype:visa,code:auth,u_standin:y,"
         "rcpt_acct_type:savings,cardholdername:/,ordernum:,ptrannum:12,rcpt_custom:ab",
         "action=other, laneid=007 b, cardtype=visa, time=01/23/24 15:30:00"},
        {"cust_reference",
         "rcpt_host_ts:012324153000,action_trans:,action:,laneid:,ptrannum:0,rcpt_custom:",
         "laneid=, time=23/01/24 15:30:00, ordernum=0", &quebec},
        {"cust_reference",
         "rcpt_host_ts:012324153000,account:", "laneid=1, time=01/23/24 15:30:00"},

        {"cust_items", "", no_block},
        {"cust_items", "line_items:[]", no_block},
        {"cust_items", "line_items:{}", no_block},

        // order money: the subtotal whatever it is, the others above zero
        {"merch_order_money", "order_total:20.00,order_tax:1.50,order_tip:2.00,order_discount:1.00",
         "subtotal=$16.50, discount=$1.00, tip=$2.00, tax=$1.50, total=$20.00"},
        {"cust_order_money", "order_total:0.00", "subtotal=$0.00"},
        {"cust_order_money", "order_tip:2,order_discount:-1.00", "tip=$2.00"},
        {"cust_order_money", "amount:20.00", no_block},

        // money
        {"cust_money",
         "amount:100.00,examount:10.00,u_tip:99,tax:5.00,cashbackamount:20.00,"
         "surchargeamount:1.00,fee:2.00,convenience_fee:3.00,supplemental_fee:4.00,"
         "discountamount:6.00,authamount:60.00,balance:7.50",
         "subtotal=$61.00, discountamount=$6.00, tip=$10.00, surchargeamount=$1.00, fee=$2.00, "
         "convenience_fee=$3.00, supplemental_fee=$4.00, tax=$5.00, cashbackamount=$20.00, "
         "totalamount=$199.00, authamount=$60.00, amountdue=$40.00, balance=$7.50"},
        {"merch_money", "balance:7.50", no_block},
        {"cust_money", "balance:0.00", no_block},
        // an order paid in full has its payment too; a discount is one, in cash or not; a tip of
        // the
        // amount that is empty or zero is one
        {"merch_money", "amount:8.00,order_total:8.00", "subtotal=$8.00, totalamount=$8.00"},
        {"merch_money", "cardtype:cash,amount:8.00,discountamount:2.00,order_cash_discount:2.00",
         "subtotal=$10.00, discountamount=$2.00, totalamount=$8.00"},
        {"cust_money", "examount:0.00,u_tip:1.00,tax:.5", "tax=$0.50"},
        {"cust_money", "examount:,u_tip:1.00", no_block},
        {"cust_money", "u_tip:1.00", "tip=$1.00"},
        // below zero, below a cent, no number, zero
        {"cust_money", "fee:-1.00,tax:0.009,convenience_fee:5x,discountamount:0", no_block},
        {"cust_money", "amount:-3", "subtotal=$-3.00, totalamount=$-3.00"},
        {"cust_money", "amount:12.34,tax:1.00", "subtotal=11.34$, tax=1.00$, totalamount=12.34$",
         &quebec},
        {"merch_money", "amount:12.34,tax:1.00", "subtotal=$11.34, tax=$1.00, totalamount=$12.34",
         &quebec},
        {"cust_money", "tax:1.00", "tax=€1,00", &germany},

        // disposition
        {"cust_disposition", "", "auth_result=Transaction Not Completed"},
        {"cust_disposition",
         "code:auth,phard_code:success,rcpt_emv_cvm:pin,rcpt_entry_mode:f,printdata:call",
         "card_status=Chip Card Swiped, pin_status=Verified By Pin, auth_result=Approved, "
         "auth_mode=Issuer, printdata=call"},

        // signature
        {"merch_signature", "u_need_signature:y,cardholdername:/,u_flowflags:SIGCAPTURED",
         "line=X_________, agreement=Cardholder Will Pay Card Issuer Above Amount Pursuant To "
         "Cardholder Agreement, cardholdername=/"},
        {"merch_signature", "u_flowflags:A|SIGCAPTURED,cardholdername:A",
         "sigcaptured=Signature Captured Electronically"},
        {"merch_signature", "cardholdername:A", no_block},
        {"cust_signature", "u_need_signature:y", no_block},

        // chip
        {"cust_emv",
         "rcpt_emv_card_decline:8,rcpt_emv_ac:7,rcpt_emv_actype:6,rcpt_emv_iad:5,rcpt_emv_tsi:4,"
         "rcpt_emv_tvr:3,rcpt_emv_aid:2,rcpt_emv_name:1",
         "name=1, aid=2, tvr=3, tsi=4, iad=5, actype=6, ac=7, odd=8"},
        {"merch_emv", "rcpt_emv_actype:,rcpt_emv_ac:7", "ac=7"},

        // notice, without a price
        {"cust_notice", "order_cash_price:1.00",
         "message=Important - Retain This Copy For Your Records, copy=Customer Copy"},
        {"merch_notice", "u_duplicate:true",
         "message=Important - Retain This Copy For Your Records, duplicate=Duplicate, "
         "copy=Merchant Copy"},

        // notes
        {"merch_notes", "rcpt_user_notes:b,order_notes:a", "order_notes=a, user_notes=b"},
        {"cust_notes", "rcpt_user_notes:,order_notes:", no_block},
    };
    for (const auto &c : cases) {
        EXPECT_EQ(listed(values_of(GetParam(), record(c.record), c.key, c.config)), c.expected)
            << c.key << " of " << c.record;
    }
}

TEST_P(BothForms, BlocksStandInTheirOrder)
{
    const record full{
        {"line_items", R"([{"name":"Tea"}])"}, {"amount", "1.00"},     {"order_total", "1.00"},
        {"u_need_signature", "yes"},           {"rcpt_emv_aid", "A0"}, {"order_notes", "note"}};
    const std::string customer =
        "cust_merch_info cust_reference cust_items cust_order_money cust_money cust_disposition "
        "cust_emv cust_notice cust_notes ";
    const std::string merchant =
        "merch_merch_info merch_reference merch_items merch_order_money merch_money "
        "merch_disposition merch_signature merch_emv merch_notice merch_notes ";
    const std::string empty = "cust_merch_info cust_reference cust_disposition cust_notice "
                              "merch_merch_info merch_reference merch_disposition merch_notice ";
    Qel_rcpt_config_t self_service = us;
    self_service.industry = QEL_RCPT_IND_SELFSERV;
    const struct {
        const Qel_hash_dict_t *kvs;
        const Qel_rcpt_config_t *config;
        std::string keys;
    } cases[] = {
        {full, &us, customer + merchant},
        {full, &self_service, customer},
        {nullptr, nullptr, empty},
    };
    for (const auto &c : cases) {
        const qel::dict blocks(GetParam().generate(c.kvs, c.config));
        std::string keys;
        for (const auto [key, text] : qel::pairs(blocks.get()))
            keys.append(key).append(" ");
        EXPECT_EQ(keys, c.keys);
    }
}

// Where the forms differ: XML cleans and sorts the names, and sees no difference in their case.
TEST(CustomFields, HaveNamesThatTheFormAllows)
{
    const struct {
        const char *custom, *xml, *json;
    } cases[] = {
        {"b:2,A:1", "A=1, b=2", "b=2, A=1"},
        {"Key:1,b:2,KEY:3", "b=2, Key=3", "Key=1, b=2, KEY=3"},
        {"k:1,j:,k:3", "j=, k=3", "k=3, j="},
        {"my field/x:1,my_field_x:2", "my_field_x=1, my_field_x=2", "my field/x=1, my_field_x=2"},
        {"1st:a", "_1st=a", "1st=a"},
        {".-é:a", "_._é=a", ".-é=a"},
        {R"("say ""hi""; it's":a)", "say__hi___it_s=a", R"(say "hi"; it's=a)"},
        {R"("a:b":"c,d")", "a_b=c,d", "a:b=c,d"},
        {":a", "_=a", "=a"},
    };
    for (const auto &c : cases) {
        for (const auto &[a_form, expected] : {std::pair{xml, c.xml}, std::pair{json, c.json}}) {
            const record kvs{{"rcpt_custom", c.custom}};
            values fields = values_of(a_form, kvs, "cust_reference").value();
            fields.erase(fields.begin(), fields.begin() + 2); // lane and time
            for (auto &[name, text] : fields)
                name.erase(0, std::string_view("rcpt_custom/").size());
            EXPECT_EQ(listed(fields), expected) << a_form.name;
        }
    }
}

// And here: what a line item does not have is an element without text, but no member.
TEST(LineItems, HaveWhatTheFormAllows)
{
    const record kvs{{"line_items", R"([
        {"name":"Off","qty":"1","price":"10","type":"discount_percent"},
        {"name":"Tea","price":"3.5","notes":"hot"}])"}};
    EXPECT_EQ(listed(values_of(xml, kvs, "merch_items")),
              "item/name=Tea, item/qty=, item/price=$3.50, item/type=item, "
              "item/name=hot, item/qty=, item/price=, item/type=note, "
              "item/name=Off, item/qty=1, item/price=10, item/type=order_discount_percent");
    EXPECT_EQ(listed(values_of(json, kvs, "merch_items")),
              "item/name=Tea, item/price=$3.50, item/type=item, "
              "item/name=hot, item/type=note, "
              "item/name=Off, item/qty=1, item/price=10, item/type=order_discount_percent");
}

TEST(WrittenTexts, AreIndentedAndEncoded)
{
    const record kvs("order_notes:it's café");
    EXPECT_EQ(text_of(xml, kvs, "cust_notes"),
              "<notes>\n  <order_notes>it&apos;s café</order_notes>\n</notes>");
    EXPECT_EQ(text_of(json, kvs, "cust_notes"), "{\n  \"order_notes\": \"it's caf\\u00e9\"\n}");
}

} // namespace
