// Texts, numbers, buffers and lists.
#include "qelstdlib_tests.hpp"

#include <algorithm>
#include <random>
#include <utility>

namespace
{

using namespace test;

// Generated input, the same in every run.
class generator
{
  public:
    std::size_t below(std::size_t end) { return random_() % end; }

    std::string text(const std::vector<std::string> &pieces, std::size_t max_pieces)
    {
        std::string made;
        for (std::size_t left = below(max_pieces + 1); left > 0; --left)
            made += pieces[below(pieces.size())];
        return made;
    }

  private:
    std::mt19937 random_{20240229};
};

TEST(Text, AbsentIsAccepted)
{
    EXPECT_TRUE(Qel_str_isempty(absent) && Qel_str_isempty("") && !Qel_str_isempty(" "));
    EXPECT_EQ(Qel_str_len(absent) + Qel_utf8_cnt(absent), 0U);
    EXPECT_STREQ(Qel_str_safe(absent), "");
    EXPECT_EQ(Qel_str_to_int64(absent), 0);
    EXPECT_EQ(Qel_atofi100(absent), 0);
    for (char *none : {Qel_str_dot_money_out(absent), Qel_strdup(absent), Qel_strdup_trim(absent),
                       Qel_strdup_replace_str(absent, "a", "b"),
                       Qel_strdup_replace_charset(absent, "a", 1, "b")})
        EXPECT_EQ(none, nullptr);
    Qel_str_upper(nullptr);
    Qel_mem_move(nullptr, "a", 1);
    Qel_mem_set(nullptr, 0, 1);
    Qel_free(nullptr);
}

TEST(Text, Comparison)
{
    const struct {
        const char *a, *b;
        bool same, same_ignoring_case;
    } rows[] = {
        {nullptr, "", true, true},      {nullptr, nullptr, true, true},
        {nullptr, "a", false, false},   {"Sale", "Sale", true, true},
        {"SALE", "sale", false, true},  {"sale", "sal", false, false},
        {"@[`{", "`{@[", false, false}, {"É", "é", false, false}, // case is ASCII
    };
    for (const auto &[a, b, same, same_ignoring_case] : rows) {
        EXPECT_TRUE(Qel_str_eq(a, b) == same && Qel_str_eq(b, a) == same) << b;
        EXPECT_EQ(Qel_str_caseeq(a, b), same_ignoring_case) << b;
        EXPECT_EQ(Qel_str_caseeq_max(b, a, 100), same_ignoring_case) << b;
    }
    EXPECT_TRUE(Qel_str_caseeq_max("VISA debit", "visa credit", 5));
    EXPECT_FALSE(Qel_str_caseeq_max("VISA debit", "visa credit", 6));
    EXPECT_FALSE(Qel_str_caseeq_max("vis", "visa", 4));
    EXPECT_TRUE(Qel_str_caseeq_max("vis", "visa", 3));

    EXPECT_TRUE(Qel_str_caseeq_start("Visa Debit", "VISA"));
    EXPECT_TRUE(Qel_str_caseeq_start("a", absent));
    EXPECT_FALSE(Qel_str_caseeq_start("Vis", "visa"));
    EXPECT_FALSE(Qel_str_caseeq_start(absent, absent));

    EXPECT_STREQ(Qel_str_casestr("one TWO two", "two"), "TWO two");
    EXPECT_STREQ(Qel_str_casestr("aaab", "AAB"), "aab");
    EXPECT_STREQ(Qel_str_casestr("abc", absent), "abc");
    EXPECT_EQ(Qel_str_casestr("tw", "two"), nullptr);
    EXPECT_EQ(Qel_str_casestr(absent, ""), nullptr);
}

TEST(Text, KindsOfTextAndBytes)
{
    for (const char *yes : {"1", "y", "YES", "t", "True", "oN"})
        EXPECT_TRUE(Qel_str_istrue(yes)) << yes;
    for (const char *no : texts{absent, "", "0", "no", "2", "11", "yes ", "tru", "enabled"})
        EXPECT_FALSE(Qel_str_istrue(no)) << no;
    for (const char *space : texts{absent, "", " \t\n\v\f\r"})
        EXPECT_TRUE(Qel_str_isspace(space));
    for (const char *other : {" \x08", "\x0E", "\u00a0", " a "})
        EXPECT_FALSE(Qel_str_isspace(other)) << other;
    for (int chr = -128; chr < 128; ++chr)
        EXPECT_EQ(Qel_chr_isdigit(static_cast<char>(chr)), chr >= 48 && chr <= 57) << chr;
    EXPECT_EQ(Qel_utf8_cnt("café €5 😀"), 9U);
    EXPECT_EQ(Qel_utf8_cnt("\x80\x80z\xC3"), 2U); // broken
}

TEST(Text, UpperCase)
{
    const std::pair<std::string, std::string> rows[] = {
        {"az AZ 09 `{ àéñöüýþ", "AZ AZ 09 `{ ÀÉÑÖÜÝÞ"},
        {"ÿāęłńőšžź ĺň ıß", "ŸĀĘŁŃŐŠŽŹ ĹŇ ıß"},
        {"ÉŠŸŽĀŃ×÷ĸŉſ бα€ǆ", "ÉŠŸŽĀŃ×÷ĸŉſ бα€ǆ"},
        {"\xA9\xC3z\xE2\xA0z\xC3", "\xA9\xC3Z\xE2\xA0Z\xC3"}, // broken
    };
    for (const auto &[text, capitals] : rows) {
        std::string upper = text;
        Qel_str_upper(upper.data());
        EXPECT_EQ(upper, capitals);
    }
}

TEST(Numbers, Integers)
{
    const std::pair<std::int64_t, texts> rows[] = {
        {42, {"42", "+42", "0042", "42.9", " \t42 apples"}},
        {-17, {"-17", "\n-17"}},
        {0, {"", "x1", "--5", "+-5", "- 5", ".5"}},
        {int64_most, {"9223372036854775807", "9223372036854775808", "99999999999999999999999"}},
        {int64_least, {"-9223372036854775808", "-9223372036854775809", "-18446744073709551617"}},
    };
    for (const auto &[value, spellings] : rows)
        for (const char *text : spellings)
            EXPECT_EQ(Qel_str_to_int64(text), value) << text;
}

TEST(Numbers, AmountsInHundredths)
{
    const std::pair<std::int64_t, texts> rows[] = {
        {1234,
         {"12.34", "12.349", "012.34", " 12.34 ", "+12.34", "12.34x", "--12.34", "-+-12.34",
          "- -12.34", " + \t12.34"}},
        {-150, {"-1.5", "-1.509", "---1.5", "-1.5.5", "- 1.5", " -\n1.50", "-  + 1.5"}},
        {100, {"1", "1.", "1,234.50", "1 000", "1.x9", "1e3"}},
        {-50, {"-0.50", "-.5"}},
        {1, {"0.01"}},
        {0, {"", "0.00", "-0.00", "0.009", "abc", ".", "-", "- ", "- $1", "$1"}},
        {-int64_most, {"-92233720368547758.07"}},
        {int64_most, {"92233720368547758.07", "92233720368547758.08", "184467440737095516.17"}},
        {int64_least, {"-92233720368547758.08", "-92233720368547758.09", "-99999999999999999999"}},
    };
    for (const auto &[value, spellings] : rows)
        for (const char *text : spellings)
            EXPECT_EQ(Qel_atofi100(text), value) << text;
}

TEST(Numbers, MoneyText)
{
    const std::pair<const char *, texts> rows[] = {
        {"12.30", {"12.3", "0012.309", "+12.3", " 12.30\t"}},
        {"7.00", {"7", "7.", "007.00"}},
        {"-3.50", {"-3.5"}},
        {"0.00", {"0", ".0", "-0.00", "-0.009", "000"}},
        {"-0.01", {"-.01"}},
        {"123456789012345678901234567890.98", {"123456789012345678901234567890.987"}},
        {"(absent)", {"", " ", ".", "-", "-.", "- 5", "--5", "+-5", "5 5", "1,50", "1.2.3"}},
        {"(absent)", {"$5", "5x", "0x10", "1e5", "nan"}},
    };
    for (const auto &[money, spellings] : rows)
        for (const char *text : spellings)
            EXPECT_EQ(taken(Qel_str_dot_money_out(text)), money) << text;
}

TEST(Text, ChangedCopies)
{
    const struct {
        const char *text, *search, *replace, *result;
    } rows[] = {
        {"a-b-c", "-", "+", "a+b+c"}, {"aaaaa", "aa", "b", "bba"}, {"abab", "ab", nullptr, ""},
        {"x", "x", "xx", "xx"},       {"aab", "ab", "-", "a-"},    {"Abc", "a", "x", "Abc"},
        {"abc", "", "x", "abc"},      {"", "a", "b", ""},          {"abc", nullptr, "x", "abc"},
    };
    for (const auto &[text, search, replace, result] : rows)
        EXPECT_EQ(taken(Qel_strdup_replace_str(text, search, replace)), result);

    EXPECT_EQ(taken(Qel_strdup_replace_charset("a\r\nb\tc", "\r\n\t", 2, "_")), "a__b\tc");
    EXPECT_EQ(taken(Qel_strdup_replace_charset("a\xFF", "\xFF", 1, "aa")), "aaa");
    EXPECT_EQ(taken(Qel_strdup_replace_charset("abc", "ca", 2, absent)), "b");
    EXPECT_EQ(taken(Qel_strdup_replace_charset("abc", absent, 0, "x")), "abc");

    EXPECT_EQ(taken(Qel_strdup_trim(" \r\n a b\t ")), "a b");
    EXPECT_EQ(taken(Qel_strdup_trim(" \t")), "");
}

TEST(Formatting, Directives)
{
    char *text = nullptr;
    std::size_t len = Qel_asprintf(&text, "%s=%lld %llu %02llu:%02llu %%", "k",
                                   static_cast<long long>(int64_least), ~0ULL, 7ULL, 123ULL);
    EXPECT_EQ(len, 52U);
    EXPECT_EQ(taken(text), "k=-9223372036854775808 18446744073709551615 07:123 %");

    const std::string unknown = "[%s]%d %5s %q%s%";
    Qel_asprintf(&text, unknown.c_str(), absent, "x");
    EXPECT_EQ(taken(text), "[]%d %5s %qx%");

    EXPECT_EQ(Qel_asprintf(&text, absent, 0), 0U);
    EXPECT_EQ(taken(text), "");
    EXPECT_EQ(Qel_asprintf(nullptr, "a"), 0U);
}

TEST(Formatting, CutsAreBetweenCharacters)
{
    const std::string whole = "aé€😀b";
    const std::size_t ends[] = {0, 1, 3, 6, 10, 11}; // of its characters, in bytes
    for (std::size_t size = 1; size <= whole.size() + 2; ++size) {
        std::string area(whole.size() + 2, '#');
        const std::size_t end = *(std::ranges::upper_bound(ends, size - 1) - 1);
        EXPECT_EQ(Qel_snprintf(area.data(), size, "%s", whole.c_str()), end);
        EXPECT_EQ(area.c_str(), whole.substr(0, end));
        EXPECT_EQ(area.find_first_not_of('#', size), std::string::npos) << "wrote past size";
    }

    char area[4] = "###";
    EXPECT_EQ(Qel_snprintf(area, 0, "a"), 0U);
    EXPECT_STREQ(area, "###");
    EXPECT_EQ(Qel_snprintf(area, 3, "%s%s", "aé", "b"), 1U); // what is lost first decides
    const std::pair<const char *, std::size_t> cut_at_3[] = {
        {"a\x80\x80", 2},     // stray bytes: nothing to keep whole
        {"é\x80", 2},         // a whole character before one
        {"\xE2\x82\x80", 0},  // a character that has three
        {"a\xF0\x9F\x98", 1}, // one that has four, and lost more than the cut took
        {"\xE2\x82"
         "a",
         2}, // one that had lost its end before
    };
    for (const auto &[text, kept] : cut_at_3)
        EXPECT_EQ(Qel_snprintf(area, 3, "%s", text), kept) << text;
    EXPECT_EQ(Qel_snprintf(area, 3, absent, 0), 0U);
    EXPECT_EQ(Qel_snprintf(const_cast<char *>(absent), 3, "a"), 0U);
}

TEST(Memory, MovesOverlappingAreas)
{
    char area[] = "abcdef";
    Qel_mem_move(area + 1, area, 5);
    Qel_mem_set(area + 1, 'z', 2);
    Qel_mem_move(area, nullptr, 2);
    EXPECT_STREQ(area, "azzcde");
}

TEST(Buffer, GrowsAndFinishes)
{
    Qel_buf_t *buf = Qel_buf_create();
    Qel_buf_add_str(buf, "ab");
    Qel_buf_add_str(buf, nullptr);
    Qel_buf_add_byte(buf, 'c');
    Qel_buf_add_fill(buf, '-', 3);
    Qel_buf_add_str(buf, Qel_buf_peek(buf));
    EXPECT_STREQ(Qel_buf_peek(buf), "abc---abc---");
    std::size_t len = 0;
    EXPECT_EQ(taken(Qel_buf_finish_str(buf, &len)), "abc---abc---");
    EXPECT_EQ(len, 12U);
    EXPECT_EQ(taken(Qel_buf_finish_str(Qel_buf_create(), nullptr)), "");

    Qel_buf_add_str(nullptr, "a");
    Qel_buf_add_byte(nullptr, 'a');
    Qel_buf_add_fill(nullptr, 'a', 2);
    Qel_buf_add_str_just(nullptr, "a", QEL_STR_JUSTIFY_LEFT_TRUNC_RIGHT, ' ', 2);
    EXPECT_STREQ(Qel_buf_peek(nullptr), "");
    Qel_buf_cancel(nullptr);
    EXPECT_EQ(Qel_buf_finish_str(nullptr, nullptr), nullptr);
    EXPECT_EQ(Qel_buf_finish_str(nullptr, &len), nullptr);
    EXPECT_EQ(len, 0U);
}

std::string cell(const char *text, std::size_t width)
{
    const qel::buf buf(Qel_buf_create());
    Qel_buf_add_str_just(buf.get(), text, QEL_STR_JUSTIFY_LEFT_TRUNC_RIGHT, '.', width);
    return Qel_buf_peek(buf.get());
}

TEST(Buffer, CellsHaveTheirWidth)
{
    EXPECT_EQ(cell("abcdefghij", 8), "abcdefgh");
    EXPECT_EQ(cell("ab", 5), "ab...");
    EXPECT_EQ(cell(nullptr, 3), "...");
    EXPECT_EQ(cell("éé€x", 3), "éé€");

    generator random;
    for (int round = 0; round < 1000; ++round) {
        const std::string text = random.text({"a", " ", "é", "€", "😀", "\x80", "\xC3"}, 12);
        const std::size_t width = random.below(12);
        const std::string made = cell(text.c_str(), width);
        ASSERT_EQ(Qel_utf8_cnt(made.c_str()), width) << text;
        const bool fits = Qel_utf8_cnt(text.c_str()) <= width;
        ASSERT_TRUE(fits ? made.starts_with(text) : text.starts_with(made)) << text;
    }
}

TEST(List, KeepsOrderAndJoins)
{
    const qel::list_str list(Qel_list_str_create(QEL_LIST_STR_NONE));
    EXPECT_EQ(taken(Qel_list_str_join_str(list.get(), "-")), "");
    for (const char *entry : texts{"A", absent, "B"})
        Qel_list_str_insert(list.get(), entry);
    EXPECT_EQ(taken(Qel_list_str_join_str(list.get(), "\r\n")), "A\r\n\r\nB");
    Qel_list_str_insert(list.get(), Qel_list_str_at(list.get(), 0));
    EXPECT_EQ(taken(Qel_list_str_join_str(list.get(), absent)), "ABA");
    EXPECT_EQ(Qel_list_str_len(list.get()), 4U);
    EXPECT_STREQ(Qel_list_str_at(list.get(), 1), "");
    EXPECT_STREQ(Qel_list_str_at(list.get(), 3), "A");
    EXPECT_EQ(Qel_list_str_at(list.get(), 4), nullptr);

    Qel_list_str_insert(nullptr, "a");
    EXPECT_EQ(Qel_list_str_len(nullptr), 0U);
    EXPECT_EQ(Qel_list_str_at(nullptr, 0), nullptr);
    EXPECT_EQ(taken(Qel_list_str_join_str(nullptr, "-")), "");
    Qel_list_str_destroy(nullptr);
}

TEST(List, EntriesStayWhereTheyAre)
{
    const qel::list_str list(Qel_list_str_create(QEL_LIST_STR_NONE));
    std::string joined;
    std::vector<const char *> borrowed;
    for (std::size_t i = 0; i < 2000; ++i) {
        const std::string entry(i % 700, static_cast<char>('a' + i % 26));
        Qel_list_str_insert(list.get(), entry.c_str());
        borrowed.push_back(Qel_list_str_at(list.get(), i));
        joined += entry;
    }
    std::string again;
    for (const char *entry : borrowed)
        again += entry;
    EXPECT_EQ(again, joined);
    EXPECT_EQ(taken(Qel_list_str_join_str(list.get(), "")), joined);
}

} // namespace
