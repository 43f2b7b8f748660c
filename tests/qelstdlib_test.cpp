#include "qelstdlib.hpp"

#include <algorithm>
#include <cstdlib>
#include <ctime>
#include <limits>
#include <random>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>
#include <malloc.h>

namespace
{

using pair_list = std::vector<std::pair<std::string, std::string>>;
using texts = std::vector<const char *>;

constexpr std::int64_t int64_least = std::numeric_limits<std::int64_t>::min();
constexpr std::int64_t int64_most = std::numeric_limits<std::int64_t>::max();

const char *absent = nullptr; // a variable, so that the compiler does not warn of it

// The new text, or "(absent)".
std::string taken(char *new_text)
{
    const qel::text text(new_text);
    return text ? text.get() : "(absent)";
}

pair_list contents(const qel::dict &dict)
{
    pair_list pairs;
    for (auto [key, val] : qel::pairs(dict.get()))
        pairs.emplace_back(key, val);
    return pairs;
}

qel::dict make_dict(std::uint32_t flags, const pair_list &pairs)
{
    qel::dict dict(Qel_hash_dict_create(~std::size_t{0}, 0, flags)); // hints: any value is taken
    for (const auto &[key, val] : pairs)
        Qel_hash_dict_insert(dict.get(), key.c_str(), val.c_str());
    return dict;
}

qel::dict parse_pairs(const std::string &text, char escape = '"')
{
    return qel::dict(
        Qel_hash_dict_deserialize(text.c_str(), text.size(), ',', ':', '"', escape, 0));
}

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

TEST(Dict, AbsentIsAccepted)
{
    const qel::dict none;
    const qel::dict dict = make_dict(QEL_HASH_DICT_NONE, {{"a", "1"}});
    for (const auto &[handle, key] : {std::pair(none.get(), "a"), std::pair(dict.get(), absent)}) {
        const char *val = "kept";
        EXPECT_FALSE(Qel_hash_dict_get(handle, key, &val));
        EXPECT_STREQ(val, "kept");
        EXPECT_EQ(Qel_hash_dict_get_direct(handle, key), nullptr);
        EXPECT_STREQ(Qel_hash_dict_get_direct_default(handle, key, "def"), "def");
        EXPECT_FALSE(Qel_hash_dict_insert(handle, key, "b"));
        EXPECT_FALSE(Qel_hash_dict_remove(handle, key));
    }
    EXPECT_TRUE(Qel_hash_dict_get(dict.get(), "a", nullptr));
    EXPECT_EQ(Qel_hash_dict_enumerate(dict.get(), nullptr), 1U);
    EXPECT_TRUE(Qel_hash_dict_insert(dict.get(), "empty", absent));
    EXPECT_STREQ(Qel_hash_dict_get_direct_default(dict.get(), "empty", "def"), "");
    Qel_hash_dict_enum_t *walk = nullptr;
    EXPECT_EQ(Qel_hash_dict_enumerate(dict.get(), &walk), 2U);
    for (const bool has_next : {true, true, false})
        EXPECT_EQ(Qel_hash_dict_enumerate_next(dict.get(), walk, nullptr, nullptr), has_next);
    Qel_hash_dict_enumerate_free(walk);

    EXPECT_EQ(Qel_hash_dict_num_keys(none.get()), 0U);
    EXPECT_EQ(contents(none), pair_list());
    Qel_hash_dict_enumerate_free(nullptr);
    Qel_hash_dict_destroy(nullptr);
    Qel_hash_dict_merge(nullptr, dict.get());
    EXPECT_EQ(Qel_hash_dict_deserialize(absent, 5, ',', ':', '"', '"', 0), nullptr);
}

TEST(Dict, OrderOfTheWalk)
{
    const pair_list pairs{{"b", "1"}, {"A", "2"}, {"é", "3"}, {"_", "4"}, {"c", "5"}};
    for (const std::uint32_t flags : {0U, 1U, 8U, 16U}) // a sorted walk takes both order flags
        EXPECT_EQ(contents(make_dict(flags, pairs)), pairs);
    EXPECT_EQ(contents(make_dict(24, pairs)),
              (pair_list{{"A", "2"}, {"_", "4"}, {"b", "1"}, {"c", "5"}, {"é", "3"}}));
    EXPECT_EQ(contents(make_dict(25, pairs)),
              (pair_list{{"_", "4"}, {"A", "2"}, {"b", "1"}, {"c", "5"}, {"é", "3"}}));
}

TEST(Dict, LendsTextsThatLast)
{
    const qel::dict dict = make_dict(QEL_HASH_DICT_CASECMP, {{"Key", "value"}});
    const char *const lent = Qel_hash_dict_get_direct(dict.get(), "KEY");
    for (int i = 0; i < 5000; ++i)
        Qel_hash_dict_insert(dict.get(), std::to_string(i).c_str(), lent);
    EXPECT_STREQ(Qel_hash_dict_get_direct(dict.get(), "4999"), "value");

    // What it lends may be handed back to it.
    EXPECT_TRUE(Qel_hash_dict_insert(dict.get(), "key", lent + 2));
    EXPECT_STREQ(Qel_hash_dict_get_direct(dict.get(), "key"), "lue");
    EXPECT_TRUE(Qel_hash_dict_remove(dict.get(), (*qel::pairs(dict.get()).begin()).key));
    EXPECT_EQ(Qel_hash_dict_num_keys(dict.get()), 5000U);
}

TEST(Dict, Merge)
{
    qel::dict dict = make_dict(QEL_HASH_DICT_CASECMP, {{"One", "1"}, {"Two", "2"}});
    Qel_hash_dict_t *dest = dict.get();
    Qel_hash_dict_merge(&dest, nullptr);
    Qel_hash_dict_merge(&dest, dest);
    Qel_hash_dict_merge(&dest, make_dict(0, {{"z", "3"}, {"ONE", "4"}, {"Z", "5"}}).release());
    EXPECT_EQ(contents(dict), (pair_list{{"One", "4"}, {"Two", "2"}, {"z", "5"}}));

    qel::dict sorted = make_dict(24, {{"y", "6"}, {"x", "7"}, {"X", "8"}});
    Qel_hash_dict_merge(&dest, sorted.release()); // in its order: X, x, y
    EXPECT_EQ(contents(dict),
              (pair_list{{"One", "4"}, {"Two", "2"}, {"z", "5"}, {"X", "7"}, {"y", "6"}}));

    Qel_hash_dict_t *none = nullptr;
    Qel_hash_dict_merge(&none, dict.get());
    EXPECT_EQ(none, dict.get());
}

TEST(Dict, Deserialize)
{
    const std::pair<const char *, pair_list> rows[] = {
        {",,", {}},
        {",a:1,,b:,:v,", {{"a", "1"}, {"b", ""}, {"", "v"}}},
        {"a:1,A:2,a:http://x", {{"a", "http://x"}, {"A", "2"}}},
        {R"("a,b":"c:d",e:"")", {{"a,b", "c:d"}, {"e", ""}}},
        {R"("say ""hi""":"""")", {{"say \"hi\"", "\""}}},
        {R"(a:x"y,b"c:z)", {{"a", "x\"y"}, {"b\"c", "z"}}}, // a quote inside is ordinary
        {" a : \"1\" ", {{" a ", " \"1\" "}}},
    };
    for (const auto &[text, pairs] : rows) {
        const qel::dict dict = parse_pairs(text);
        EXPECT_TRUE(dict) << text;
        EXPECT_EQ(contents(dict), pairs) << text;
    }
    for (const char *broken : {"a", "a:1,b", "\"a:1", "a:\"1", "a:\"1\"x", "\"a\"x:1", "\"a\",b:1",
                               "a:\"1\":2", "a:\"\"\"", "\""})
        EXPECT_FALSE(parse_pairs(broken)) << broken;

    const qel::dict start(Qel_hash_dict_deserialize("a:1,b:2", 3, ',', ':', '"', '"', 1));
    EXPECT_EQ(contents(start), (pair_list{{"a", "1"}}));
    EXPECT_STREQ(Qel_hash_dict_get_direct(start.get(), "A"), "1");
}

TEST(U64Table, KeepsTheLastText)
{
    const qel::u64str table(Qel_hash_u64str_create(128, 75, 0));
    for (const char *text : {"zero", "one", "two"})
        Qel_hash_u64str_insert(table.get(), ~0ULL, text);
    Qel_hash_u64str_insert(table.get(), 0, absent);
    Qel_hash_u64str_insert(nullptr, 1, "a");
    EXPECT_STREQ(Qel_hash_u64str_get_direct(table.get(), ~0ULL), "two");
    EXPECT_STREQ(Qel_hash_u64str_get_direct(table.get(), 0), "");
    EXPECT_EQ(Qel_hash_u64str_get_direct(table.get(), 1), nullptr);
    EXPECT_EQ(Qel_hash_u64str_get_direct(nullptr, 0), nullptr);
    Qel_hash_u64str_destroy(nullptr);
}

// The fields in their order, for comparison and for messages.
std::string fields_of(const Qel_time_localtm_t &tm)
{
    std::string text;
    for (const std::int64_t value : {tm.month, tm.day, tm.year, tm.year2, tm.hour, tm.min, tm.sec,
                                     tm.wday, tm.yday, tm.isdst, tm.gmtoff})
        text += std::to_string(value) + ' ';
    return text + tm.abbr;
}

std::string local_fields(Qel_time_t t, const Qel_time_tz_t *zone)
{
    Qel_time_localtm_t tm{};
    Qel_time_tolocal(t, &tm, zone);
    return fields_of(tm);
}

TEST(Time, Parse)
{
    const std::pair<const char *, const char *> rows[] = {
        {"070423153000", "7 4 2023 23 15 30 0 0 0 0 42 "},
        {"010169000000", "1 1 1969 69 0 0 0 0 0 0 42 "},
        {"123199235960", "12 31 1999 99 23 59 60 0 0 0 42 "},
        {"023168000000", "2 31 2068 68 0 0 0 0 0 0 42 "}, // the calendar is not consulted
    };
    for (const auto &[text, fields] : rows) {
        Qel_time_localtm_t tm{};
        tm.gmtoff = 42;
        EXPECT_TRUE(Qel_time_parsefmt(text, "%m%d%y%H%M%S", &tm)) << text;
        EXPECT_EQ(fields_of(tm), fields);
    }
    Qel_time_localtm_t tm{};
    for (const char *bad :
         texts{absent, "", "07042315300", "0704231530000", "130423153000", "000423153000",
               "070023153000", "073223153000", "070423243000", "070423156000", "070423153061",
               "0704231530 1", "07042315301 ", "+7042315300"})
        EXPECT_FALSE(Qel_time_parsefmt(bad, "%m%d%y%H%M%S", &tm)) << bad;
    EXPECT_FALSE(Qel_time_parsefmt("07", absent, &tm));
    EXPECT_FALSE(Qel_time_parsefmt("07", "%m", nullptr));
    EXPECT_FALSE(Qel_time_parsefmt("07-04", "%m/%d", &tm));
    EXPECT_EQ(fields_of(tm), fields_of({}));
    EXPECT_TRUE(Qel_time_parsefmt("07%at 4", "%m%%at 4", &tm));
}

TEST(Time, Write)
{
    Qel_time_localtm_t tm{};
    EXPECT_EQ(taken(Qel_time_to_str("%d/%m/%y %H:%M:%S %Y", &tm)), "00/00/00 00:00:00 0000");
    tm = {7, 4, 2023, 23, 15, 30, 9, 0, 0, 0, 0, ""};
    EXPECT_EQ(taken(Qel_time_to_str("%m/%d/%y %H:%M:%S", &tm)), "07/04/23 15:30:09");
    EXPECT_EQ(taken(Qel_time_to_str("%d/%m/%Y%% %q%", &tm)), "04/07/2023% %q%");
    tm = {int64_least, 123, -5, -5, 0, 0, 0, 0, 0, 0, 0, ""};
    EXPECT_EQ(taken(Qel_time_to_str("%m|%d|%y|%Y", &tm)), "-9223372036854775808|123|-5|-5");
    EXPECT_EQ(taken(Qel_time_to_str(absent, &tm)), "");
    EXPECT_EQ(taken(Qel_time_to_str("%d", nullptr)), "");
}

TEST(Time, ZonesAndTheirRules)
{
    const struct {
        const char *zone;
        Qel_time_t t;
        const char *fields;
    } rows[] = {
        {"America/Toronto", 1700000000, "11 14 2023 23 17 13 20 2 317 0 -18000 EST"},
        {"America/Toronto", 1678604399, "3 12 2023 23 1 59 59 0 70 0 -18000 EST"},
        {"America/Toronto", 1678604400, "3 12 2023 23 3 0 0 0 70 1 -14400 EDT"},
        {"America/Toronto", 4118126400, "7 1 2100 0 8 0 0 4 181 1 -14400 EDT"}, // by rule
        {"America/Argentina/Buenos_Aires", 0, "12 31 1969 69 21 0 0 3 364 0 -10800 -03"},
        {"Etc/GMT+5", -1, "12 31 1969 69 18 59 59 3 364 0 -18000 -05"},
        {"Asia/Kolkata", 1700000000, "11 15 2023 23 3 43 20 3 318 0 19800 IST"},
        {"UTC", -1, "12 31 1969 69 23 59 59 3 364 0 0 UTC"},
        {"UTC", 951782400, "2 29 2000 0 0 0 0 2 59 0 0 UTC"},
        {"UTC", int64_most, "12 4 292277026596 96 15 30 7 0 338 0 0 UTC"},
    };
    for (const auto &[name, t, fields] : rows) {
        const qel::time_tz zone(Qel_time_tz_load(name));
        ASSERT_TRUE(zone) << name;
        EXPECT_EQ(local_fields(t, zone.get()), fields);
        // The two digits count up before year 0 too.
        EXPECT_NE(local_fields(int64_least, zone.get()).find(" -292277022657 43 "),
                  std::string::npos);
        Qel_time_tolocal(t, nullptr, zone.get());
    }
    EXPECT_LE(std::abs(Qel_time() - std::time(nullptr)), 60);
}

// The C library's calendar beside ours.
TEST(Time, CalendarOfFourHundredYears)
{
    const qel::time_tz utc(Qel_time_tz_load("UTC"));
    constexpr std::int64_t first = -14831769600; // 1500-01-01
    constexpr std::int64_t cycle = std::int64_t{146097} * 86400;
    constexpr std::int64_t step = 86400 - 3607; // meets every day, and all times of a day
    for (std::int64_t t = first; t < first + 2 * cycle; t += step) {
        const auto when = static_cast<std::time_t>(t);
        if (when != t)
            continue; // beyond the years of a machine of 32 bits
        std::tm tm{};
        gmtime_r(&when, &tm);
        Qel_time_localtm_t ours{};
        Qel_time_tolocal(t, &ours, utc.get());
        const Qel_time_localtm_t theirs = {tm.tm_mon + 1,
                                           tm.tm_mday,
                                           tm.tm_year + 1900,
                                           (tm.tm_year + 1900) % 100,
                                           tm.tm_hour,
                                           tm.tm_min,
                                           tm.tm_sec,
                                           tm.tm_wday,
                                           tm.tm_yday,
                                           0,
                                           0,
                                           "UTC"};
        ASSERT_EQ(fields_of(ours), fields_of(theirs)) << t;
    }
}

TEST(Time, OnlyNamesOfTheDatabaseAreLoaded)
{
    const std::string long_name =
        "America/" + std::string(57, 'x'); // a byte more than is looked for
    for (const char *name :
         texts{absent, "", "Nowhere/None", "America", "/usr/share/zoneinfo/America/Toronto",
               "file:America/Toronto", "America/../America/Toronto", "America/./Toronto",
               "America//Toronto", "America/Toronto/", "libc:localtime", "Fixed/UTC+01:00:00",
               "tzdata.zi", long_name.c_str()})
        EXPECT_EQ(Qel_time_tz_load(name), nullptr) << name;
    Qel_time_tz_destroy(nullptr);
}

std::size_t allocated()
{
    return mallinfo2().uordblks;
}

// Names that nobody has must not be kept by whoever loads zones.
TEST(Time, UnknownNamesLeaveNothingBehind)
{
    const auto load = [](int number) {
        const std::string name = "Nowhere/" + std::string(40, 'x') + std::to_string(number);
        EXPECT_EQ(Qel_time_tz_load(name.c_str()), nullptr);
    };
    load(0);
    const std::size_t before = allocated();
    for (int number = 1; number < 20'000; ++number)
        load(number);
    EXPECT_LT(allocated(), before + 100'000);
}

TEST(Time, AbsentZoneIsTheSystemsOwn)
{
    const std::pair<const char *, const char *> rows[] = {
        {"XYZ-3:30", "7 14 2023 23 15 30 0 5 194 0 12600 XYZ"},
        {"EST5EDT,M3.2.0,M11.1.0", "7 14 2023 23 8 0 0 5 194 1 -14400 EDT"},
        {"Asia/Tokyo", "7 14 2023 23 21 0 0 5 194 0 32400 JST"},
    };
    for (const auto &[tz, fields] : rows) {
        setenv("TZ", tz, 1);
        EXPECT_EQ(local_fields(1689336000, nullptr), fields);
    }
    // Beyond the years that the C library knows: in UTC.
    EXPECT_EQ(local_fields(int64_most, nullptr), "12 4 292277026596 96 15 30 7 0 338 0 0 UTC");
    EXPECT_NE(local_fields(int64_least, nullptr).find(" -292277022657 43 "), std::string::npos);
}

} // namespace
