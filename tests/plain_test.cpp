// The plain-text receipt, block by block.
#include "qel_rcpt_plain.h"

#include "test_record.hpp"

#include <qelstdlib.hpp>

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <iterator>
#include <limits>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

namespace
{

using test::absent;
using test::record;

// A retail merchant with English copies for itself.
constexpr Qel_rcpt_config_t make_config(Qel_rcpt_lang_t customer, std::uint32_t country,
                                        std::uint32_t currency)
{
    return {customer, QEL_RCPT_LANG_EN, country, currency, QEL_RCPT_IND_RETAIL, nullptr};
}

std::string repeated(std::string_view piece, std::size_t count)
{
    std::string text;
    for (text.reserve(piece.size() * count); count > 0; --count)
        text += piece;
    return text;
}

constexpr Qel_rcpt_config_t us_retail = make_config(QEL_RCPT_LANG_EN, 840, 840);

class PlainReceipt : public testing::Test
{
  protected:
    PlainReceipt() { Qel_rcpt_init(); }
    ~PlainReceipt() override { Qel_rcpt_deinit(); }

    // A block of a receipt, its lines separated by '\n'.
    static test::result block(const record &fields, const char *key, std::size_t width,
                              const Qel_rcpt_config_t &config = us_retail)
    {
        const qel::dict blocks(Qel_rcpt_generate_plain(fields, &config, width, "\n"));
        return test::borrowed(Qel_hash_dict_get_direct(blocks.get(), key));
    }

    struct block_case {
        const char *fields;
        test::result expected;
    };
    static void expect_blocks(const char *key, std::size_t width,
                              const std::vector<block_case> &cases)
    {
        for (const block_case &c : cases)
            EXPECT_EQ(block(record(c.fields), key, width), c.expected) << c.fields;
    }
};

// Each with a space behind it.
std::string keys_of(Qel_hash_dict_t *new_blocks)
{
    const qel::dict blocks(new_blocks);
    std::string keys;
    for (const auto [key, val] : qel::pairs(blocks.get()))
        keys.append(key).append(1, ' ');
    return keys;
}

TEST_F(PlainReceipt, HasItsBlocksInOrder)
{
    const record everything(
        "order_total:20,amount:5,u_need_signature:1,rcpt_emv_aid:A0000000031010,"
        R"(order_notes:Thanks,line_items:"[{""name"":""Tea""}]")");
    const std::string customer =
        "cust_merch_info cust_reference cust_items cust_order_money cust_money "
        "cust_disposition cust_emv cust_notice cust_notes ";
    const std::string both =
        customer + "merch_merch_info merch_reference merch_items merch_order_money merch_money "
                   "merch_disposition merch_signature merch_emv merch_notice merch_notes ";
    const std::pair<unsigned, std::string> cases[] = {
        {QEL_RCPT_IND_UNKNOWN, both},
        {QEL_RCPT_IND_RETAIL, both},
        {QEL_RCPT_IND_AUTOFUEL, customer},
        {QEL_RCPT_IND_RETAIL | QEL_RCPT_IND_SELFSERV, customer},
    };
    for (const auto &[industry, expected] : cases) {
        Qel_rcpt_config_t config = us_retail;
        config.industry = static_cast<Qel_rcpt_ind_t>(industry);
        EXPECT_EQ(keys_of(Qel_rcpt_generate_plain(everything, &config, 40, "\n")), expected)
            << industry;
    }
    EXPECT_EQ(keys_of(Qel_rcpt_generate_plain(everything, nullptr, 40, "\n")), both);
    EXPECT_EQ(keys_of(Qel_rcpt_generate_plain(nullptr, nullptr, 0, nullptr)),
              "cust_merch_info cust_reference cust_disposition cust_notice "
              "merch_merch_info merch_reference merch_disposition merch_notice ");
}

TEST_F(PlainReceipt, HasDefaultsForWidthAndLineBreak)
{
    struct {
        std::size_t width;
        const char *line_break;
        std::string expected;
    } const cases[] = {
        {0, "\n", "A" + std::string(38, ' ') + "1\nB" + std::string(38, ' ') + "2"},
        {1, "\n", "A        1\nB        2"},
        {9, "\n", "A        1\nB        2"},
        {11, "", "A         1\r\nB         2"},
        {11, nullptr, "A         1\r\nB         2"},
        {11, "| ", "A         1| B         2"},
    };
    for (const auto &c : cases) {
        const record fields{{"rcpt_custom", "a:1,b:2"}};
        const qel::dict blocks(Qel_rcpt_generate_plain(fields, nullptr, c.width, c.line_break));
        const std::string text = Qel_hash_dict_get_direct(blocks.get(), "cust_reference");
        EXPECT_TRUE(text.ends_with(c.expected)) << text;
    }
}

TEST_F(PlainReceipt, WritesEachCopyInItsLanguage)
{
    const Qel_rcpt_config_t montreal = make_config(QEL_RCPT_LANG_FR, 124, 124);
    EXPECT_EQ(block(record("amount:10"), "cust_money", 20, montreal),
              "SOUS-TOTAL:   10.00$\nTOTAL:        10.00$");
    EXPECT_EQ(block(record("amount:10"), "merch_money", 20, montreal),
              "SUBTOTAL:     $10.00\nTOTAL:        $10.00");
    EXPECT_EQ(block(record("rcpt_host_ts:012324153000"), "cust_reference", 24, montreal),
              "VOIE:                  1\nHEURE: 23/01/24 15:30:00");
}

TEST_F(PlainReceipt, ShowsTheMerchant)
{
    const std::vector<block_case> cases = {
        {"", "  UNKNOWN MERCHANT\n        NAME\n  UNKNOWN ADDRESS\n   UNKNOWN PHONE"},
        {"merch_name:,merch_addr1:St,merch_phone:", "         ST"},
        {"merch_name:,merch_addr1:,merch_phone: ", absent},
        {"merch_url:url,merch_email:mail,merch_phone:phone,"
         "merch_addr3:a3,merch_addr2:a2,merch_addr1:a1,merch_name:name",
         "        NAME\n         A1\n         A2\n         A3\n"
         "       PHONE\n        MAIL\n        URL"},
    };
    expect_blocks("cust_merch_info", 20, cases);
}

TEST_F(PlainReceipt, ShowsTheReferenceDataInOrder)
{
    const record fields(
        "action:sale,u_cardclass:credit,laneid:7,cardtype:Interac,rcpt_entry_mode:C,"
        "rcpt_acct_type:savings,account:XXXXXXXXXXXX1234,cardholdername:José,"
        "rcpt_host_ts:012324153000,ordernum:A-1,custref:P-2,ttid:99,"
        "rcpt_issuer_resp_code:00,rcpt_resp_code:001,auth:123456,batch:42,stan:8,"
        "rcpt_custom:\"b:2,A:1\"");
    EXPECT_EQ(block(fields, "merch_reference", 24), "    CREDIT CARD SALE\n"
                                                    "\n"
                                                    "LANE:                  7\n"
                                                    "INTERAC                C\n"
                                                    "ACCOUNT TYPE:    SAVINGS\n"
                                                    "CARD:   XXXXXXXXXXXX1234\n"
                                                    "CUSTOMER:           JOSÉ\n"
                                                    "TIME:  01/23/24 15:30:00\n"
                                                    "ORDER #:             A-1\n"
                                                    "PO #:                P-2\n"
                                                    "TTID:                 99\n"
                                                    "RESPCODE:         00/001\n"
                                                    "AUTH: 123456   BATCH: 42\n"
                                                    "STAN:                  8\n"
                                                    "A                      1\n"
                                                    "B                      2");
}

// All but the lines that every receipt has: lane 1 and the time.
TEST_F(PlainReceipt, ShowsTheReferenceDataThatThereIs)
{
    const std::vector<block_case> cases = {
        {"", ""},
        {"action_trans:void,action:sale", "         REFUND\n\n"},
        {"action_trans:,action:preauth", "     AUTHORIZATION\n\n"},
        {"action:layaway", "        LAYAWAY\n\n"},
        {"action: ", "\n"},
        {"laneid:", ""},
        {"laneid:0", ""},
        {"laneid:-3", ""},
        {"laneid:front", ""},
        {"cardtype:Visa,rcpt_acct_type:savings", "VISA\n"},
        {"rcpt_entry_mode:S", "                       S\n"},
        {"cardholdername:/", ""},
        {"cardholdername:/ ", "CUSTOMER:              /\n"},
        {"cardholdername: ", "CUSTOMER:\n"},
        {"ordernum:7,ptrannum:15", "ORDER #:               7\n"},
        {"ordernum:,ptrannum:15", "ORDER #:              15\n"},
        {"ptrannum:0", ""},
        {"ptrannum:-15", ""},
        {"ptrannum:T15", ""},
        {"auth:123456,batch:", "AUTH: 123456\n"},
        {"batch:42", "               BATCH: 42\n"},
        {"auth:123456,batch:4242", "AUTH: 123456 BATCH: 4242\n"},
        {"auth:123456,batch:42424", "AUTH:             123456\nBATCH:             42424\n"},
        {"custref:,ttid:,account:,stan:,auth:", ""},
    };
    constexpr std::string_view lane = "LANE:                  1\n";
    constexpr std::string_view time = "TIME:  01/23/24 15:30:00\n";
    for (const block_case &c : cases) {
        record fields(c.fields);
        fields.set("rcpt_host_ts:012324153000");
        std::string text = block(fields, "cust_reference", 24).value_or("") + '\n';
        for (const std::string_view always : {lane, time}) {
            ASSERT_NE(text.find(always), std::string::npos) << text;
            text.erase(text.find(always), always.size());
        }
        EXPECT_EQ(text, c.expected) << c.fields;
    }
}

TEST_F(PlainReceipt, SortsCustomFields)
{
    struct {
        const char *custom;
        const char *expected;
    } const cases[] = {
        {"b:2,C:3,A:1", "\nA          1\nB          2\nC          3"},
        {"a:1, k:2", "\nK          2\nA          1"},
        {R"("a,b":"x:y ""z""")", "\nA,B  X:Y \"Z\""},
        {"a:1,A:2", "\nA          2"},
        {"a:,:b", "\n           B\nA"},
        {"a:1,b", ""},
        {"", ""},
    };
    for (const auto &c : cases) {
        const record fields{{"rcpt_host_ts", "012324153000"}, {"rcpt_custom", c.custom}};
        const std::string text = block(fields, "cust_reference", 12).value_or("15:30:00");
        EXPECT_EQ(text.substr(text.find("15:30:00") + 8), c.expected) << c.custom;
    }
}

TEST_F(PlainReceipt, ListsLineItems)
{
    struct {
        const char *items;
        test::result expected;
    } const cases[] = {
        // quantities
        {R"([{"name":"Cola","qty":"1","price":"2.5"}])", "COLA               $2.50"},
        {R"([{"name":"Cola","qty":"2","price":"2.5"}])", "COLA (2)           $2.50"},
        {R"([{"name":"Cola","qty":"01","price":"2.5"}])", "COLA (01)          $2.50"},
        {R"([{"name":"Cola","qty":"","price":"2.5"}])", "COLA ()            $2.50"},
        {R"([{"name":"Cola","price":"2.5"}])", "COLA ()            $2.50"},
        // kinds of lines
        {R"([{"name":"Off","type":"discount_fixed","qty":"1","price":"1"},
             {"name":"Cash","type":"cashdiscount","qty":"1","price":"3"},
             {"name":"Pie","type":"item","qty":"3","price":"6","notes":" warm, and with a spoon",
              "modifiers":[{"name":"Ice","type":"addon","qty":"2","price":"1"},
                           {"name":"Half","type":"discount_percent","qty":"1","price":"50"},
                           {"name":"Gift","type":"discount_fixed","qty":"1","price":"1"}]},
             {"name":"Club","type":"discount_percent","qty":"1","price":"5.0"}])",
         "CASH                - 3%\n"
         "PIE (3)            $6.00\n"
         "WARM, AND WITH A SPOON\n"
         "+ ICE (2)          $1.00\n"
         "+ HALF             - 50%\n"
         "+ GIFT           - $1.00\n"
         "OFF              - $1.00\n"
         "CLUB              - 5.0%"},
        // prices that are not there
        {R"([{"name":"Cola","qty":"1"}])", "COLA"},
        {R"([{"name":"Cola","qty":"2","price":"free"}])", "COLA (2)"},
        {R"([{"name":"Club","type":"discount_percent","qty":"1"}])", "CLUB                 - %"},
        {R"([{"name":"Off","type":"discount_fixed","qty":"1"}])", "OFF                    -"},
        // long names
        {R"([{"name":"Cola from the tap","qty":"2","price":"2.5"}])",
         "COLA FROM THE TAP (2)\n                   $2.50"},
        {R"([{"name":"Cola from the old tap","qty":"2","price":"2.5"}])",
         "COLA FROM THE OLD TAP\n               (2) $2.50"},
        // no items
        {"[]", absent},
        {R"({"name":"Cola"})", absent},
        {R"([{"name":"Cola","qty":"1"})", absent},
        {"", absent},
    };
    for (const auto &c : cases)
        EXPECT_EQ(block(record{{"line_items", c.items}}, "merch_items", 24), c.expected) << c.items;
}

// At 255 bytes, of whole characters.
TEST_F(PlainReceipt, CutsWhatItFormats)
{
    const std::string digits(300, '7');
    const auto item = [](const std::string &name, const std::string &type, const std::string &qty,
                         const std::string &price) {
        return R"([{"name":")" + name + R"(","type":")" + type + R"(","qty":")" + qty +
               R"(","price":")" + price + R"("}])";
    };
    struct {
        std::string items;
        std::string expected;
    } const cases[] = {
        {item(digits, "item", "1", ""), digits},
        {item(digits, "addon", "1", ""), "+ " + digits.substr(0, 253)},
        {item(repeated("é", 200), "addon", "1", ""), "+ " + repeated("É", 126)},
        {item("a", "item", digits, ""), "A (" + digits.substr(0, 254)},
        {item("a", "cashdiscount", "1", digits),
         "A" + std::string(144, ' ') + "- " + digits.substr(0, 253)},
    };
    for (const auto &c : cases)
        EXPECT_EQ(block(record{{"line_items", c.items.c_str()}}, "cust_items", 400), c.expected);

    const std::string notice =
        block(record{{"order_cash_price", digits.c_str()}}, "cust_notice", 20).value_or("");
    EXPECT_EQ(notice.substr(0, notice.find('\n')), "CASH PRICE: $" + digits.substr(0, 242));
}

TEST_F(PlainReceipt, ShowsTheMoneyOfAnOrder)
{
    const std::vector<block_case> cases = {
        {"", absent},
        {"order_total:0.00,order_tip:1", absent},
        {"order_total:23.00,order_tip:2.00,order_tax:1.00,order_discount:2.50",
         "         ORDER\n"
         "\n"
         "SUBTOTAL:         $20.00\n"
         "DISCOUNT:        - $2.50\n"
         "TIP:               $2.00\n"
         "TAX:               $1.00\n"
         "TOTAL:            $23.00"},
        {"order_total:5,order_discount:0.00,order_tip:-1,order_tax:",
         "         ORDER\n\nSUBTOTAL:          $6.00\nTOTAL:             $5.00"},
        {"order_total:5,order_tax:0.00,order_tip:0.00",
         "         ORDER\n\nSUBTOTAL:          $5.00\nTOTAL:             $5.00"},
        {"order_total:-5", "         ORDER\n\nSUBTOTAL:         $-5.00"},
    };
    expect_blocks("merch_order_money", 24, cases);
}

TEST_F(PlainReceipt, ShowsTheMoneyOfThePayment)
{
    const std::vector<block_case> cases = {
        {"", absent},
        {"amount:23,order_total:23.00,tax:1", absent},
        {"amount:5,order_total:20.00",
         "        PAYMENT\n\nSUBTOTAL:          $5.00\nPAID:              $5.00"},
        {"amount:20.00,discountamount:3.00,examount:1.00,surchargeamount:0.10,fee:0.20,"
         "convenience_fee:0.30,supplemental_fee:0.40,tax:2.00,cashbackamount:4.00",
         "SUBTOTAL:         $15.00\n"
         "DISCOUNT:        - $3.00\n"
         "TIP:               $1.00\n"
         "SURCHARGE:         $0.10\n"
         "FEE:               $0.20\n"
         "CONVENIENCE FEE:   $0.30\n"
         "SUPPLEMENTAL FEE:  $0.40\n"
         "TAX:               $2.00\n"
         "CASHBACK:          $4.00\n"
         "TOTAL:            $20.00"},
        // amounts of nothing, and one that is no number
        {"amount:10,examount:0.00,cashbackamount:0.00,surchargeamount:0.00,fee:0.00,"
         "convenience_fee:0.00,supplemental_fee:0.00,discountamount:0.00",
         "SUBTOTAL:         $10.00\nTOTAL:            $10.00"},
        {"amount:10,tax:0.00,fee:-1,cashbackamount:none",
         "SUBTOTAL:         $11.00\nTOTAL:            $10.00"},
        {"amount:10,discountamount:3,cardtype:CASH,order_cash_discount:1",
         "SUBTOTAL:         $13.00\n"
         "DISCOUNT:        - $2.00\n"
         "CASH DISCOUNT:   - $1.00\n"
         "TOTAL:            $10.00"},
        // the tip that is in the amount, and the one that comes on top
        {"amount:10,u_tip:1",
         "SUBTOTAL:         $10.00\nTIP:               $1.00\nTOTAL:            $11.00"},
        {"amount:10,u_tip:1,examount:", "SUBTOTAL:         $10.00\nTOTAL:            $11.00"},
        // partial approval
        {"amount:10,authamount:6", "SUBTOTAL:         $10.00\nTOTAL:            $10.00\n"
                                   "\nAUTH AMOUNT:       $6.00\nAMOUNT DUE:        $4.00"},
        {"amount:10,authamount:12",
         "SUBTOTAL:         $10.00\nTOTAL:            $10.00\n\nAUTH AMOUNT:      $12.00"},
        {"amount:10,authamount:-6", "SUBTOTAL:         $10.00\nTOTAL:            $10.00\n"
                                    "\nAUTH AMOUNT:      $-6.00\nAMOUNT DUE:       $16.00"},
        {"amount:10,authamount:10.00", "SUBTOTAL:         $10.00\nTOTAL:            $10.00"},
        // the balance, which only the customer is shown
        {"balance:7.5", "\nBALANCE:           $7.50"},
        {"amount:1,balance:0.00",
         "SUBTOTAL:          $1.00\nTOTAL:             $1.00\n\nBALANCE:           $0.00"},
        {"balance:", absent},
        {"balance:unknown", absent},
    };
    expect_blocks("cust_money", 24, cases);
    expect_blocks("merch_money", 24, {{"balance:7.5", absent}});
}

TEST_F(PlainReceipt, ShowsTheDisposition)
{
    const std::vector<block_case> cases = {
        {"", "  TRANSACTION NOT COMPLETED\n"},
        {"code:auth,phard_code:success", "           APPROVED\n\nMODE ISSUER"},
        {"code:auth,rcpt_entry_mode:f,rcpt_emv_cvm:pin",
         "       CHIP CARD SWIPED\n       VERIFIED BY PIN\n\n           APPROVED\n"},
        {"code:auth,rcpt_emv_cvm:pin", "       VERIFIED BY PIN\n\n           APPROVED\n"},
        {"code:auth,printdata: See you soon ", "           APPROVED\n\n\nSEE YOU SOON"},
        {"code:auth,phard_code:success,printdata:See you soon and bring a friend",
         "           APPROVED\n\nMODE ISSUER\n\nSEE YOU SOON AND BRING A\nFRIEND"},
    };
    expect_blocks("cust_disposition", 30, cases);
}

TEST_F(PlainReceipt, AsksForASignature)
{
    const std::string agreement = "  CARDHOLDER WILL PAY\n   CARD ISSUER ABOVE\n"
                                  "   AMOUNT PURSUANT TO\n  CARDHOLDER AGREEMENT";
    const std::vector<block_case> cases = {
        {"cardholdername:Jo", absent},
        {"u_need_signature:no", absent},
        {"u_need_signature:YES,cardholdername:/,u_flowflags:SIGCAPTURED",
         "SIGNATURE\n\nX_______________________\n           /\n\n" + agreement},
        {"u_need_signature:1", "SIGNATURE\n\nX_______________________\n\n" + agreement},
        {"u_flowflags:a sigcaptured", "   SIGNATURE CAPTURED\n     ELECTRONICALLY"},
    };
    expect_blocks("merch_signature", 24, cases);
}

TEST_F(PlainReceipt, ShowsTheDataOfTheChip)
{
    const std::vector<block_case> cases = {
        {"rcpt_emv_name:Visa Credit,rcpt_emv_aid:A0000000031010,rcpt_emv_tvr:8000,"
         "rcpt_emv_tsi:E800,rcpt_emv_iad:06,rcpt_emv_actype:TC,rcpt_emv_ac:1F2E,"
         "rcpt_emv_card_decline:00",
         "VISA CREDIT\n"
         "AID A0000000031010\nTVR 8000\nTSI E800\nIAD 06\nTC 1F2E\n"
         "\n"
         "OFFLINE DECLINE\n"
         "DATA 00"},
        {"rcpt_emv_card_decline:00", "\nOFFLINE DECLINE\nDATA 00"},
        {"rcpt_emv_actype:TC,rcpt_emv_ac:", absent},
        {"rcpt_emv_ac:1F2E,rcpt_emv_aid:", absent},
    };
    expect_blocks("cust_emv", 20, cases);
}

TEST_F(PlainReceipt, ClosesWithTheNotice)
{
    const std::string notice = " IMPORTANT - RETAIN\n THIS COPY FOR YOUR\n      RECORDS\n\n";
    const std::string copy = "   CUSTOMER COPY";
    const std::vector<block_case> cases = {
        {"", notice + copy},
        {"u_duplicate:1", notice + "     DUPLICATE\n\n" + copy},
        {"cardtype:CASH,order_noncash_price:10.50,order_cash_price:10",
         "NON CASH PRICE: $10.50\n\n" + notice + copy},
        {"cardtype:Visa,order_noncash_price:10.50,order_cash_price:10",
         "CASH PRICE: $10.00\n\n" + notice + copy},
        {"order_cash_price:0", "CASH PRICE: $0.00\n\n" + notice + copy},
        {"cardtype:cash,order_noncash_price:,order_cash_price:10", notice + copy},
    };
    expect_blocks("cust_notice", 20, cases);
    expect_blocks("merch_notice", 20, {{"", notice + "   MERCHANT COPY"}});
}

TEST_F(PlainReceipt, AddsNotes)
{
    const std::vector<block_case> cases = {
        {"rcpt_user_notes:Thank you,order_notes:To go", "       TO GO\n     THANK YOU"},
        {"rcpt_user_notes:Thank you,order_notes:", "     THANK YOU"},
        {"order_notes: ", absent},
    };
    expect_blocks("merch_notes", 20, cases);
}

} // namespace
