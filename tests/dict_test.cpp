// Dictionaries; what holds for any calls and any text, the fuzz targets say.
#include "qelstdlib_tests.hpp"

#include <utility>

namespace
{

using test::absent;
using pair_list = std::vector<std::pair<std::string, std::string>>;

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

// The keys have the same length and the same ends, and come to more than are hashed quickly; some
// are longer than those.
TEST(Dict, TellsKeysApartWhateverTheirNumberAndLength)
{
    const auto key_of = [](unsigned number, std::size_t len) {
        const std::string middle = std::to_string(10000 + number);
        return "beginnin" + middle + std::string(len, '-') + "theirend";
    };
    for (const std::uint32_t flags : {QEL_HASH_DICT_NONE, QEL_HASH_DICT_CASECMP}) {
        for (const std::size_t len : {0U, 11U, 12U, 100U}) {
            SCOPED_TRACE(len);
            const qel::dict dict(Qel_hash_dict_create(0, 75, flags));
            for (unsigned i = 0; i < 300; ++i) {
                Qel_hash_dict_insert(dict.get(), key_of(i, len).c_str(), "first");
                Qel_hash_dict_insert(dict.get(), key_of(i, len).c_str(), std::to_string(i).c_str());
                EXPECT_TRUE(Qel_hash_dict_remove(dict.get(), key_of(i / 2, len).c_str()) ||
                            i % 2 == 1);
                EXPECT_EQ(Qel_hash_dict_num_keys(dict.get()), (i + 1U) / 2U);
            }
            for (unsigned i = 0; i < 300; ++i)
                EXPECT_STREQ(Qel_hash_dict_get_direct(dict.get(), key_of(i, len).c_str()),
                             i < 150 ? absent : std::to_string(i).c_str());
        }
    }
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

} // namespace
