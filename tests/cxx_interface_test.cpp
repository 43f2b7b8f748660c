// The C++ interface: values in, values out, and nothing that outlives or underlives its owner.
#include <qel_rcpt.hpp>

#include <gtest/gtest.h>

#include <map>
#include <type_traits>

namespace
{

namespace rcpt = qel::rcpt;

class CxxInterface : public testing::Test
{
    const rcpt::session session_;
};

TEST_F(CxxInterface, RecordsFromListMapAndRangeRenderAlike)
{
    const rcpt::record from_list{{"amount", "12.34"}, {"tax", "1.00"}};
    const std::map<std::string, std::string> map{{"amount", "12.34"}, {"tax", "1.00"}};
    const std::vector<std::pair<const char *, std::string_view>> range{{"amount", "12.34"},
                                                                       {"tax", "1.00"}};
    const std::string_view money =
        "SUBTOTAL:     $11.34\nTAX:           $1.00\nTOTAL:        $12.34";
    for (const rcpt::record &record : {from_list, rcpt::record(map), rcpt::record(range),
                                       rcpt::record(map.begin(), map.end())}) {
        const rcpt::blocks blocks = rcpt::render_plain(record, {}, 20, "\n");
        EXPECT_EQ(blocks.find(rcpt::copy::merchant, "money"), money);
    }
}

TEST_F(CxxInterface, RecordIsAValue)
{
    rcpt::record original{{"amount", "1.00"}};
    rcpt::record changed = original;
    changed.set("amount", "2.00").set("ttid", "7");
    EXPECT_EQ(original.get("amount"), "1.00");
    EXPECT_EQ(original.get("ttid"), std::nullopt);
    EXPECT_EQ(changed.size(), 2U);

    rcpt::record taken = std::move(original);
    EXPECT_EQ(taken.get("amount"), "1.00");
    EXPECT_EQ(original.size(), 0U); // NOLINT(bugprone-use-after-move)
    original.set("amount", "3.00");
    EXPECT_EQ(original.get("amount"), "3.00");

    rcpt::record &same = taken;
    taken = same;
    EXPECT_EQ(taken.get("amount"), "1.00");
    EXPECT_TRUE(taken.erase("amount"));
    EXPECT_FALSE(taken.erase("amount"));
}

// Both copies have a merch_info block, whose name begins as a merchant copy's keys do.
TEST_F(CxxInterface, BlocksKnowTheirCopyAndName)
{
    const rcpt::blocks blocks =
        rcpt::render_plain({{"amount", "1.00"}, {"u_need_signature", "yes"}}, {}, 40, "\n");
    std::string order;
    for (const auto &[copy, name, text] : blocks) {
        order.append(copy == rcpt::copy::customer ? " c:" : " m:").append(name);
        EXPECT_FALSE(text.empty()) << name;
    }
    EXPECT_EQ(order, " c:merch_info c:reference c:money c:disposition c:notice"
                     " m:merch_info m:reference m:money m:disposition m:signature m:notice");
    EXPECT_EQ(blocks.find(rcpt::copy::customer, "signature"), std::nullopt);
    EXPECT_EQ(blocks.find(rcpt::copy::customer, "merch_info").value().find("UNKNOWN MERCHANT NAME"),
              9U);

    const rcpt::blocks notes =
        rcpt::render_plain({{"printdata", "Hello"}, {"rcpt_user_notes", "Bye"}}, {}, 40, "\n");
    EXPECT_TRUE(notes.has(rcpt::copy::merchant));
    for (const auto copy : {rcpt::copy::customer, rcpt::copy::merchant}) {
        const std::string whole = notes.join(copy, "|");
        std::string expected;
        for (const char *name : {"merch_info", "reference", "disposition", "notice", "notes"})
            expected.append(expected.empty() ? "" : "|").append(notes.find(copy, name).value());
        EXPECT_EQ(whole, expected);
    }
}

TEST_F(CxxInterface, BlocksOutliveTheRecordAndMoves)
{
    rcpt::blocks kept = [] {
        const rcpt::record record{{"printdata", "kept"}};
        return rcpt::render_xml(record);
    }();
    const rcpt::blocks moved = std::move(kept);
    EXPECT_NE(moved.find(rcpt::copy::customer, "disposition").value().find("kept"),
              std::string_view::npos);
    static_assert(!std::is_copy_constructible_v<rcpt::blocks>);
}

TEST_F(CxxInterface, ConfigurationReachesTheGenerators)
{
    rcpt::config shop;
    shop.customer_lang = rcpt::language::french;
    shop.merchant_lang = rcpt::language_of("de");
    shop.country_code = rcpt::country::canada;
    shop.currency_code = rcpt::currency::canadian_dollar;
    shop.zone = rcpt::time_zone("Asia/Tokyo");
    const rcpt::record sale{{"amount", "5"}, {"timestamp", "0"}};

    const rcpt::blocks both = rcpt::render_plain(sale, shop, 24, "\n");
    EXPECT_EQ(both.find(rcpt::copy::customer, "money"),
              "SOUS-TOTAL:        5.00$\nTOTAL:             5.00$");
    EXPECT_EQ(both.find(rcpt::copy::merchant, "money"),
              "ZWISCHENSUMME:     $5.00\nGESAMT:            $5.00");
    EXPECT_EQ(both.find(rcpt::copy::merchant, "reference"),
              "KASSE:                 1\nZEIT:  01/01/70 09:00:00");

    shop.industries = rcpt::industry::retail | rcpt::industry::self_service;
    EXPECT_FALSE(rcpt::render_plain(sale, shop).has(rcpt::copy::merchant));
    EXPECT_EQ(rcpt::render_plain(sale, shop).join(rcpt::copy::merchant, "\n"), "");
}

template <typename Blocks, typename = void>
constexpr bool lends = false;
template <typename Blocks>
constexpr bool lends<Blocks, std::void_t<decltype(std::declval<Blocks>().begin()),
                                         decltype(std::declval<Blocks>().end()),
                                         decltype(std::declval<Blocks>().find({}, "money"))>> =
    true;

// Texts borrowed from receipts that are gone must not compile.
static_assert(lends<rcpt::blocks &> && lends<const rcpt::blocks &>);
static_assert(!lends<rcpt::blocks> && !lends<const rcpt::blocks>);

template <typename Record, typename = void>
constexpr bool lends_value = false;
template <typename Record>
constexpr bool lends_value<Record, std::void_t<decltype(std::declval<Record>().get("amount"))>> =
    true;

static_assert(lends_value<rcpt::record &> && lends_value<const rcpt::record &>);
static_assert(!lends_value<rcpt::record> && !lends_value<const rcpt::record>);
static_assert(!lends_value<decltype(rcpt::record().set("a", "1").strip_control())>);

// The C interface's bits too.
constexpr Qel_rcpt_ind_t fuel_shop = QEL_RCPT_IND_RETAIL | QEL_RCPT_IND_AUTOFUEL;
static_assert(fuel_shop == 33U);

TEST_F(CxxInterface, UnknownTimeZoneThrows)
{
    EXPECT_THROW(rcpt::time_zone("Mars/Olympus_Mons"), std::invalid_argument);
    EXPECT_THROW(rcpt::time_zone(""), std::invalid_argument);
    EXPECT_EQ(rcpt::time_zone().native(), nullptr);
}

TEST_F(CxxInterface, EveryFormRenders)
{
    rcpt::record sale{{"action", "void"},
                      {"rcpt_custom", "correction_type:purchase"},
                      {"amount", "1.00"},
                      {"tax", "0.00"},
                      {"examount", "0.00"}};
    rcpt::config shop;
    const auto block = [](const rcpt::blocks &blocks, std::string_view name) {
        return blocks.find(rcpt::copy::merchant, name).value_or("no such block").substr(0, 19);
    };
    EXPECT_EQ(block(rcpt::render_html(sale, shop), "money"), "<div id=\"rcpt_money");
    EXPECT_EQ(block(rcpt::render_xml(sale, shop), "money"), "<money>\n  <subtotal");
    EXPECT_EQ(block(rcpt::render_json(sale, shop), "money"), "{\n  \"subtotal\": \"$1");
    EXPECT_EQ(block(rcpt::render_moneris(sale, shop), "type"), "TYPE: PURCHASE CORR");
    EXPECT_EQ(sale.size(), 5U); // the in-store layout leaves the record alone

    shop.industries = rcpt::industry::ecommerce;
    EXPECT_EQ(block(rcpt::render_moneris(sale, shop), "refund_policy").substr(15), "    ");
    EXPECT_EQ(sale.size(), 3U);
    EXPECT_EQ(rcpt::render_moneris_ecommerce(sale).size(), 10U);
}

TEST_F(CxxInterface, PrintsForAPrinter)
{
    const rcpt::record sale{{"amount", "1.00"}, {"ordernum", "A-1"}};
    const rcpt::blocks blocks = rcpt::render_plain(sale, {}, 42);
    rcpt::printer device;
    device.has_barcode = true;
    device.logo_key = "A1";
    const rcpt::printed made = rcpt::print(blocks, sale, rcpt::copy::merchant, device);
    EXPECT_TRUE(made);
    EXPECT_TRUE(made.has_barcode);
    EXPECT_NE(made.bytes.find("MERCHANT COPY"), std::string::npos);
    EXPECT_NE(made.bytes.find(std::string("0EA1\x01\x01")), std::string::npos);
    device.columns = 65;
    const rcpt::printed none = rcpt::print(blocks, sale, rcpt::copy::merchant, device);
    EXPECT_FALSE(none);
    EXPECT_EQ(none.fault, QEL_RCPT_PRINT_FAULT_WIDTH);
    EXPECT_EQ(none.bytes, "");
}

TEST_F(CxxInterface, SaysWhatIsWrongWithARecord)
{
    rcpt::record sale{{"merch_name", "Shop"},      {"merch_addr1", "1 Road"}, {"action", "sale"},
                      {"cardtype", "cash"},        {"amount", "$5"},          {"code", "SUCCESS"},
                      {"timestamp", "1773502867"}, {"line_items", "[]"}};
    const auto findings = rcpt::check(sale);
    ASSERT_EQ(findings.size(), 1U);
    EXPECT_EQ(findings[0].severity, rcpt::severity::error);
    EXPECT_EQ(findings[0].rule, "amount-unreadable");
    EXPECT_EQ(findings[0].key, "amount");
    EXPECT_EQ(findings[0].offset, std::size_t{0});
    EXPECT_EQ(findings[0].message.substr(0, 21), "'$5' is not an amount");
    EXPECT_EQ(findings[0].source, "");

    sale.set("amount", "5").set("rcpt_duplicate", "yes");
    EXPECT_TRUE(rcpt::check(sale).empty());
    const auto online =
        rcpt::check(sale.set("moneris_rcpt_data", "{}"), {}, rcpt::form::moneris_ecomm);
    ASSERT_EQ(online.size(), 1U);
    EXPECT_EQ(online[0].rule, "duplicate-unmarked");
    EXPECT_FALSE(online[0].offset.has_value());
    EXPECT_EQ(online[0].date, "2026-11");
}

TEST(CxxInterfaceSession, MayFollowAnother)
{
    for (int i = 0; i < 2; ++i) {
        const rcpt::session session;
        EXPECT_FALSE(rcpt::render_json({{"amount", "1.00"}}).empty());
    }
}

} // namespace
