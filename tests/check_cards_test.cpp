// Card numbers in the values of a record.
#include "checked_record.hpp"

#include <cstdlib>
#include <iostream>
#include <map>
#include <random>
#include <utility>

namespace
{

using test::Check;
using test::clean_sale;
using test::find;
using test::findings_of;
using test::rules_in;

// Numbers that schemes and processors publish for tests; of Mir one that is made up.
constexpr const char *test_numbers[] = {
    "4111111111111111",    // Visa
    "4242424242424242",    //
    "4012888888881881",    //
    "4000056655665556",    //
    "4007000000027",       // of 13 digits
    "4222222222222",       //
    "5555555555554444",    // Mastercard
    "5105105105105100",    //
    "5200828282828210",    //
    "2223003122003222",    //
    "2223000048400011",    //
    "378282246310005",     // American Express
    "371449635398431",     //
    "370000000000002",     //
    "6011111111111117",    // Discover
    "6011000990139424",    //
    "6011963280099774",    //
    "30569309025904",      // Diners Club
    "38520000023237",      //
    "36259600000004",      //
    "30123400000000",      //
    "3530111333300000",    // JCB
    "3566002020360505",    //
    "3088000000000017",    //
    "6243030000000001",    // UnionPay
    "6221261111117766",    //
    "8171999927660000",    //
    "8171999900000000021", // of 19 digits
    "6205500000000000004", //
    "6759649826438453",    // Maestro
    "6304000000000000",    //
    "6771798021000008",    //
    "6799990100000000019", //
    "5000000000000000005", //
    "6703444444444449",    // Bancontact
    "5019555544445555",    // Dankort
    "5019717010103742",    //
    "6331101999990016",    // Switch
    "5610591081018250",    // Bankcard
    "6362970000457013",    // Elo
    "5078601870000127985", // Aura
    "6062825624254001",    // Hipercard
    "6082015309577308",    // RuPay
    "6074825972083818",    //
    "9792020000000001",    // Troy
    "6501700194147183",    //
    "2200000000000004",    // Mir
};

std::string grouped(std::string_view number, const std::string &separator)
{
    std::string text;
    for (std::size_t i = 0; i < number.size(); ++i)
        text.append(i > 0 && i % 4 == 0 ? separator : "").append(1, number[i]);
    return text;
}

// 4-6-5 for 15 digits, as such cards have it; in the middle otherwise.
std::string parted(std::string_view number)
{
    std::string text(number);
    const std::size_t first = number.size() == 15 ? 4 : number.size() / 2;
    text.insert(first, " ");
    if (number.size() == 15)
        text.insert(11, " ");
    return text;
}

TEST_F(Check, FindsCardNumbersInTenWaysOfWritingThem)
{
    struct way {
        const char *name;
        std::string (*write)(std::string_view number);
    };
    const way ways[] = {
        {"digits alone", [](std::string_view n) { return std::string(n); }},
        {"in fours", [](std::string_view n) { return grouped(n, " "); }},
        {"with hyphens", [](std::string_view n) { return grouped(n, "-"); }},
        {"with two blanks", [](std::string_view n) { return grouped(n, "  "); }},
        {"as on the card", parted},
        {"with no-break spaces", [](std::string_view n) { return grouped(n, "\xC2\xA0"); }},
        {"with dashes", [](std::string_view n) { return grouped(n, " \xE2\x80\x93 "); }},
        {"within a sentence",
         [](std::string_view n) { return "card " + grouped(n, " ") + ", 2 items at 15.00"; }},
        {"between letters", [](std::string_view n) { return "PAN" + std::string(n) + "X"; }},
        {"among other numbers",
         [](std::string_view n) { return "7 " + grouped(n, " ") + " 12 29 123"; }},
    };
    static_assert(std::size(ways) == 10);
    std::map<std::string_view, std::size_t> found;
    for (const char *number : test_numbers) {
        for (const auto &[name, write] : ways) {
            test::record sale{clean_sale};
            Qel_hash_dict_insert(sale, "order_notes", write(number).c_str());
            const auto findings = findings_of(sale);
            EXPECT_EQ(rules_in(findings), "card-number") << number << " " << name;
            found[name] += findings.empty() ? 0 : 1;
        }
    }
    if (std::getenv("QELRCPT_RANDOM_NUMBERS") != nullptr) {
        for (const auto &[name, count] : found)
            std::cout << name << ": " << count << " of " << std::size(test_numbers) << " found\n";
    }
}

// Of texts of 13 to 19 digits by chance, one in ten has a check digit and one in five of these
// begins as cards do. scripts/card-numbers counts a million.
TEST_F(Check, TakesFewTextsOfDigitsForCardNumbers)
{
    const char *wanted = std::getenv("QELRCPT_RANDOM_NUMBERS");
    const int count = wanted == nullptr ? 20'000 : std::stoi(wanted);
    std::mt19937 random(20261123);
    std::uniform_int_distribution<int> length(13, 19);
    std::uniform_int_distribution<int> digit('0', '9');
    std::map<std::size_t, std::pair<int, int>> taken; // and all, by length
    int total = 0;
    for (int i = 0; i < count; ++i) {
        std::string text(static_cast<std::size_t>(length(random)), ' ');
        std::ranges::generate(text, [&] { return static_cast<char>(digit(random)); });
        test::record record;
        Qel_hash_dict_insert(record, i % 2 == 0 ? "ordernum" : "order_notes", text.c_str());
        const bool is_taken = find(findings_of(record), "card-number") != nullptr;
        taken[text.size()].first += is_taken ? 1 : 0;
        taken[text.size()].second += 1;
        total += is_taken ? 1 : 0;
    }
    if (wanted != nullptr) {
        for (const auto &[size, counts] : taken)
            std::cout << size << " digits: " << counts.first << " of " << counts.second << "\n";
        std::cout << total << " of " << count << " taken for card numbers\n";
    }
    EXPECT_LT(total, count * 3 / 100);
    EXPECT_GT(total, count / 100);
}

// What numbers of so many digits begin with, of all issuers together; none outside of it.
TEST_F(Check, KnowsWhereIssuersRangesBeginAndEnd)
{
    using range = std::pair<int, int>;
    const std::vector<range> of_13 = {{400000, 509999}, {560000, 589999}, {606282, 606282},
                                      {630400, 630499}, {639000, 639099}, {670000, 679999}};
    const std::vector<range> of_14 = {
        {300000, 305999}, {309500, 309599}, {360000, 369999}, {380000, 399999}, {500000, 509999},
        {560000, 589999}, {606282, 606282}, {630400, 630499}, {639000, 639099}, {670000, 679999}};
    const std::vector<range> of_15 = {{180000, 180099}, {213100, 213199}, {300000, 305999},
                                      {309500, 309599}, {340000, 349999}, {360000, 399999},
                                      {500000, 509999}, {560000, 589999}, {606282, 606282},
                                      {630400, 630499}, {639000, 639099}, {670000, 679999}};
    const std::vector<range> of_16 = {
        {220000, 220599}, {222100, 272099}, {300000, 305999}, {308800, 310299}, {311200, 312099},
        {315800, 315999}, {333700, 334999}, {352800, 358999}, {360000, 369999}, {380000, 589999},
        {600000, 610999}, {620000, 639999}, {644000, 659999}, {670000, 679999}, {810000, 829999},
        {860000, 860099}, {970400, 970499}, {979200, 979299}, {986000, 986099}};
    std::vector<range> more = {
        {220000, 220599}, {300000, 305999}, {308800, 310299}, {311200, 312099}, {315800, 315999},
        {333700, 334999}, {352800, 358999}, {360000, 369999}, {380000, 399999}, {500000, 509999},
        {560000, 589999}, {600400, 600999}, {601100, 601199}, {604001, 604200}, {606282, 606282},
        {610000, 610999}, {620000, 639999}, {644000, 659999}, {670000, 679999}, {810000, 817199},
        {970400, 970499}};
    const auto is_found = [](int prefix, std::size_t digits) {
        std::string numbers; // one of ten has the right check digit
        for (char check = '0'; check <= '9'; ++check) {
            std::string number = std::to_string(prefix);
            number.resize(digits - 1, '0');
            numbers += number + check + "/";
        }
        test::record sale{clean_sale};
        Qel_hash_dict_insert(sale, "order_notes", numbers.c_str());
        return !findings_of(sale).empty();
    };
    const auto judge = [&](const std::vector<range> &ranges, std::size_t digits) {
        for (const auto &[first, last] : ranges) {
            EXPECT_FALSE(is_found(first - 1, digits)) << first << " " << digits;
            EXPECT_TRUE(is_found(first, digits)) << first << " " << digits;
            EXPECT_TRUE(is_found(last, digits)) << last << " " << digits;
            EXPECT_FALSE(is_found(last + 1, digits)) << last << " " << digits;
        }
    };
    judge(of_13, 13);
    judge(of_14, 14);
    judge(of_15, 15);
    judge(of_16, 16);
    judge(more, 17);
    judge(more, 18);
    more[8].second = 509999; // Visa's, too
    more.erase(more.begin() + 9);
    judge(more, 19);
}

TEST_F(Check, TakesNoOtherNumbersForCardNumbers)
{
    const char *const others[] = {
        "4111111111111112",          // the check digit
        "41111111111111111",         // 17 digits
        "9411111111111111114",       // another issuer
        "4111 1111 1111",            // too few digits
        "4111/1111/1111/1111",       //
        "4111    1111    1111 1111", // columns
        "660123450010690040",        // a reference number
        "031426094107 0012345 1",    //
        "12.50 13.20 41.11 11.11 11.11 11.11",
    };
    for (const char *other : others) {
        test::record sale{clean_sale};
        Qel_hash_dict_insert(sale, "order_notes", other);
        EXPECT_EQ(rules_in(findings_of(sale)), "") << other;
    }
}

} // namespace
