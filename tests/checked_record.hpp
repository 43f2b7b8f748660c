// What the check finds in a record, and a record of which it finds nothing wrong.
#ifndef TEST_CHECKED_RECORD_HPP
#define TEST_CHECKED_RECORD_HPP

#include "test_record.hpp"

#include <qel_rcpt_check.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include <gtest/gtest.h>

namespace test
{

struct finding {
    Qel_rcpt_severity_t severity;
    std::string rule;
    std::string key;
    std::size_t offset;
    std::string message;
};

// The merchant and the form of a case; as it is, a shop in the United States.
struct setting {
    std::uint32_t country = 840;
    std::uint32_t currency = 840;
    Qel_rcpt_form_t form = QEL_RCPT_FORM_GENERAL;
    Qel_rcpt_lang_t cust_lang = QEL_RCPT_LANG_EN;
    Qel_rcpt_ind_t industry = QEL_RCPT_IND_RETAIL;
};

inline std::vector<finding> findings_of(const record &checked, const setting &where = {})
{
    Qel_rcpt_config_t config{};
    config.country_code = where.country;
    config.currency_code = where.currency;
    config.cust_lang = where.cust_lang;
    config.industry = where.industry;
    std::vector<finding> findings;
    const auto take = [](void *info, const Qel_rcpt_finding_t *f) {
        static_cast<std::vector<finding> *>(info)->push_back(
            {f->severity, f->rule, f->key, f->offset, f->message});
    };
    const std::size_t errors = Qel_rcpt_check(checked, &config, where.form, take, &findings);
    const auto is_error = [](const finding &f) { return f.severity == QEL_RCPT_SEVERITY_ERROR; };
    EXPECT_EQ(errors, static_cast<std::size_t>(std::ranges::count_if(findings, is_error)));
    EXPECT_EQ(errors, Qel_rcpt_check(checked, &config, where.form, nullptr, nullptr));
    return findings;
}

// "rule rule", or the one finding of a rule.
inline std::string rules_in(const std::vector<finding> &findings)
{
    std::string rules;
    for (const finding &f : findings)
        rules += (rules.empty() ? "" : " ") + f.rule;
    return rules;
}

inline const finding *find(const std::vector<finding> &findings, std::string_view rule)
{
    const auto found = std::ranges::find(findings, rule, &finding::rule);
    return found == findings.end() ? nullptr : &*found;
}

// An approved chip sale of which nothing is wrong.
inline constexpr std::string_view clean_sale =
    "merch_name:Tillerbird Bakery,merch_addr1:418 Juniper Street,rcpt_custom:MID:0012345,"
    "action:sale,cardtype:VISA,u_cardclass:credit,rcpt_entry_mode:C,account:XXXXXXXXXXXX1234,"
    "timestamp:1773502867,auth:083261,rcpt_issuer_resp_code:00,amount:12.00,tax:2.00,code:AUTH,"
    "msoft_code:INT_SUCCESS,phard_code:SUCCESS,rcpt_emv_name:VISA CREDIT,"
    "rcpt_emv_aid:A0000000031010,rcpt_emv_tvr:0080008000,rcpt_emv_tsi:E800,rcpt_emv_actype:TC,"
    "rcpt_emv_ac:5C1A8E2F90B34D67,rcpt_emv_cvm:none,"
    R"(line_items:"[{""name"":""Rye"",""qty"":""1"",""price"":""10.00""}]")";

class Check : public testing::Test
{
  protected:
    static void SetUpTestSuite() { Qel_rcpt_init(); }
    static void TearDownTestSuite() { Qel_rcpt_deinit(); }
};

} // namespace test

#endif
