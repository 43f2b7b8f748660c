// Records far larger than any sale, on a small stack: the results are as defined, and neither the
// depth of a document nor the length of a text is the depth of a recursion. That the cost is linear
// is the benchmarks' to show, but for keys made to be slow.
#include "colliding_keys.hpp"
#include "test_record.hpp"
#include "utility.hpp"

#include <qel_rcpt.h>

#include <algorithm>
#include <functional>
#include <random>
#include <string>
#include <string_view>
#include <vector>

#include <ctime>

#include <pthread.h>

namespace
{

using test::record;
using namespace std::string_literals;

// Sanitizers make every frame larger.
constexpr std::size_t stack_size = (is_sanitized ? 1024 : 128) * 1024;

void on_small_stack(const std::function<void()> &call)
{
    pthread_attr_t attr;
    ASSERT_EQ(pthread_attr_init(&attr), 0);
    ASSERT_EQ(pthread_attr_setstacksize(&attr, stack_size), 0);
    pthread_t thread{};
    const auto run = [](void *arg) -> void * {
        (*static_cast<const std::function<void()> *>(arg))();
        return nullptr;
    };
    ASSERT_EQ(pthread_create(&thread, &attr, run, const_cast<std::function<void()> *>(&call)), 0);
    ASSERT_EQ(pthread_join(thread, nullptr), 0);
    pthread_attr_destroy(&attr);
}

class Size : public testing::Test
{
  protected:
    Size() { Qel_rcpt_init(); }
    ~Size() override { Qel_rcpt_deinit(); }
};

// The customer's block, of one form.
using form = std::function<Qel_hash_dict_t *(Qel_hash_dict_t *kvs)>;

const form plain = [](Qel_hash_dict_t *kvs) {
    return Qel_rcpt_generate_plain(kvs, nullptr, 40, "\n");
};
const form html = [](Qel_hash_dict_t *kvs) { return Qel_rcpt_generate_html(kvs, nullptr); };
const form xml = [](Qel_hash_dict_t *kvs) { return Qel_rcpt_generate_xml(kvs, nullptr); };
const form json = [](Qel_hash_dict_t *kvs) { return Qel_rcpt_generate_json(kvs, nullptr); };
const form moneris = [](Qel_hash_dict_t *kvs) {
    return Qel_rcpt_generate_plain_moneris(kvs, nullptr);
};
const form moneris_ecomm = [](Qel_hash_dict_t *kvs) {
    return Qel_rcpt_generate_plain_moneris_ecomm(kvs, nullptr);
};

// "" when there is none.
std::string block(const form &generate, Qel_hash_dict_t *kvs, const char *key)
{
    const qel::dict blocks(generate(kvs));
    return Qel_str_safe(Qel_hash_dict_get_direct(blocks.get(), key));
}

std::size_t count(std::string_view text, std::string_view part)
{
    std::size_t found = 0;
    for (std::size_t at = text.find(part); at != text.npos; at = text.find(part, at + part.size()))
        ++found;
    return found;
}

std::string repeated(std::string_view part, std::size_t times)
{
    std::string text;
    text.reserve(part.size() * times);
    for (; times > 0; --times)
        text += part;
    return text;
}

// How often a text stands in a block of a form.
struct occurrence {
    const form &generate;
    const char *key;
    std::string_view text;
    std::size_t times;
};

void expect_occurrences(Qel_hash_dict_t *kvs, const std::vector<occurrence> &occurrences)
{
    for (const auto &[generate, key, text, times] : occurrences)
        EXPECT_EQ(count(block(generate, kvs, key), text), times) << key << ": " << text;
}

TEST_F(Size, TenThousandLineItems)
{
    constexpr std::size_t items = 10'000;
    const std::string item = R"({"name":"Tea","qty":"2","price":"1.5","sku":"T","notes":"hot"},)";
    const std::string list = "[" + repeated(item, items - 1) + R"({"name":"Last","price":"1"}])";
    const record kvs{{"line_items", list.c_str()},
                     {"moneris_rcpt_data", (R"({"items":)" + list + "}").c_str()}};
    on_small_stack([&] {
        expect_occurrences(kvs, {{plain, "cust_items", "TEA (2)", items - 1},
                                 {plain, "cust_items", "\nLAST ()", 1},
                                 {html, "cust_items", ">Tea</span>", items - 1},
                                 {xml, "cust_items", "<item>", 2 * items - 1},
                                 {json, "cust_items", R"("type": "note")", items - 1},
                                 {moneris_ecomm, "cust_line_items", "\r\n| T  ", items - 1},
                                 {moneris, "cust_items", "TEA", 0}});
    });
}

// An item with a chain of modifiers below it, each in an array and an object of its own.
std::string nested_items(std::size_t depth)
{
    return repeated(R"([{"name":"a","modifiers":)", depth - 1) + R"([{"name":"a"}])" +
           repeated("}]", depth - 1);
}

// The document may have 512 levels; a deeper one is no document.
TEST_F(Size, ModifiersToTheLimitAndBeyond)
{
    struct {
        std::size_t depth;
        std::size_t shown;
    } const cases[] = {{255, 255}, {256, 256}, {257, 0}, {300'000, 0}};
    for (const auto &c : cases) {
        const record kvs{{"line_items", nested_items(c.depth).c_str()}};
        on_small_stack([&] {
            expect_occurrences(kvs, {{plain, "cust_items", "A ()", c.shown},
                                     {html, "cust_items", ">a</span>", c.shown},
                                     {xml, "cust_items", "<name>a</name>", c.shown},
                                     {json, "cust_items", R"("name": "a")", c.shown}});
        });
    }
}

TEST_F(Size, TenMegabytesOfNotes)
{
    const std::string words = repeated("abcdefg ", 10'000'000 / 8); // five of them a line
    const std::string unbroken(10'000'000, 'x');
    const record kvs{{"order_notes", words.c_str()},
                     {"rcpt_user_notes", unbroken.c_str()},
                     {"printdata", unbroken.c_str()},
                     {"merch_addr2", words.c_str()}};
    on_small_stack([&] {
        expect_occurrences(
            kvs, {{plain, "cust_notes", "\n", words.size() / 40 + unbroken.size() / 40 - 1},
                  {plain, "cust_disposition", "X\nX", unbroken.size() / 40 - 1},
                  {html, "cust_notes", "abcdefg ", words.size() / 8},
                  {xml, "cust_notes", unbroken, 1},
                  {json, "cust_notes", words, 1},
                  {moneris, "cust_merch_info", "ABCDEFG", words.size() / 8},
                  {moneris_ecomm, "cust_merch_info", "ABCDEFG", words.size() / 8}});
    });
}

TEST_F(Size, AHundredThousandCustomFields)
{
    constexpr std::size_t fields = 100'000;
    std::string custom;
    for (std::size_t i = fields; i > 0; --i)
        custom += "k" + std::to_string(1'000'000 + i) + ":v,";
    const record kvs{{"rcpt_custom", custom.c_str()}, {"rcpt_host_ts", "012324153000"}};
    on_small_stack([&] {
        expect_occurrences(kvs, {{plain, "cust_reference", "\nK1", fields},
                                 {html, "cust_reference", "id=\"custom_k1", 3 * fields},
                                 {xml, "cust_reference", "<k1", fields},
                                 {json, "cust_reference", "\"k1", fields},
                                 {moneris, "cust_reference", "K1", 0}});
        const std::string sorted = block(plain, kvs, "cust_reference");
        EXPECT_LT(sorted.find("K1000001"), sorted.find("K1100000"));
    });
}

// Keys of the same bytes, in an order that nobody chose.
std::vector<std::string> shuffled(std::vector<std::string> keys)
{
    std::mt19937 random(17);
    for (std::string &key : keys)
        std::ranges::shuffle(key, random);
    return keys;
}

// In seconds of this thread's processor time.
double cost(const std::function<void()> &call)
{
    const auto now = [] {
        timespec time{};
        clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
        return static_cast<double>(time.tv_sec) + 1e-9 * static_cast<double>(time.tv_nsec);
    };
    const double begin = now();
    call();
    return now() - begin;
}

// Everything that finds keys which a record may hold: dictionaries of either kind, custom fields,
// members of objects and attributes.
const std::function<void(const std::vector<std::string> &)> uses_of_keys[] = {
    [](const auto &keys) {
        const qel::dict dict(Qel_hash_dict_create(16, 75, QEL_HASH_DICT_NONE));
        for (const std::string &key : keys)
            Qel_hash_dict_insert(dict.get(), key.c_str(), "");
        EXPECT_EQ(Qel_hash_dict_num_keys(dict.get()), keys.size());
    },
    [](const auto &keys) {
        const qel::dict dict(Qel_hash_dict_create(16, 75, QEL_HASH_DICT_CASECMP));
        for (const std::string &key : keys)
            Qel_hash_dict_insert(dict.get(), key.c_str(), "");
        EXPECT_EQ(Qel_hash_dict_num_keys(dict.get()), keys.size());
    },
    [](const auto &keys) {
        std::string custom;
        for (const std::string &key : keys)
            custom += key + ":v,";
        const record kvs{{"rcpt_custom", custom.c_str()}};
        EXPECT_EQ(count(block(plain, kvs, "cust_reference"), "V"), keys.size());
    },
    [](const auto &keys) {
        const qel::json object(Qel_json_node_create(QEL_JSON_TYPE_OBJECT));
        for (const std::string &key : keys)
            Qel_json_object_insert_string(object.get(), key.c_str(), "");
        EXPECT_EQ(Qel_json_object_num_children(object.get()), keys.size());
    },
    [](const auto &keys) {
        const qel::xml_doc element(Qel_xml_create_element("a", nullptr));
        for (const std::string &key : keys) // a whole word in front, so that it is a name
            Qel_xml_node_insert_attribute(element.get(), ("key_from" + key).c_str(), "", 0, false);
    },
};

TEST_F(Size, KeysMadeToCollideCostWhatOthersDo)
{
    for (const auto &colliding : {test::colliding_keys(15), test::colliding_ascii_keys(16),
                                  test::keys_with_same_ends(20'000)}) {
        for (const auto &use : uses_of_keys) {
            const auto others = shuffled(colliding);
            const auto costs_the_same = [&] {
                const double usual = cost([&] { use(others); });
                return cost([&] { use(colliding); }) < 3 * usual;
            };
            bool once = false; // a host may take time away now and then, and it counts
            for (int i = 0; i < 5 && !once; ++i)
                once = costs_the_same();
            EXPECT_TRUE(once) << colliding.back() << ' ' << &use - uses_of_keys;
        }
    }
}

TEST(JsonDepth, HasALimit)
{
    const auto read = [](const std::string &text) {
        Qel_json_error_t error = QEL_JSON_ERROR_SUCCESS;
        const qel::json root(
            Qel_json_read(text.data(), text.size(), 0, nullptr, &error, nullptr, nullptr));
        const qel::text again(Qel_json_write(root.get(), QEL_JSON_WRITER_NONE, nullptr));
        EXPECT_EQ(again == nullptr, error != QEL_JSON_ERROR_SUCCESS);
        EXPECT_TRUE(again == nullptr || again.get() == text);
        return error;
    };
    const auto arrays = [](std::size_t depth) {
        return std::string(depth, '[') + std::string(depth, ']');
    };
    const auto objects = [](std::size_t depth) {
        return repeated(R"({"a":)", depth) + "0" + std::string(depth, '}');
    };
    on_small_stack([&] {
        EXPECT_EQ(read(arrays(512)), QEL_JSON_ERROR_SUCCESS);
        EXPECT_EQ(read(objects(512)), QEL_JSON_ERROR_SUCCESS);
        EXPECT_EQ(read(arrays(513)), QEL_JSON_ERROR_DEPTH);
        EXPECT_EQ(read(objects(513)), QEL_JSON_ERROR_DEPTH);
        EXPECT_EQ(read(std::string(10'000'000, '[')), QEL_JSON_ERROR_DEPTH);
    });
}

// Ten megabytes of one kind of token after the other, and a million members of much the same name.
TEST(JsonTokens, OfAnyLengthAndNumber)
{
    constexpr std::size_t bytes = 10'000'000;
    const auto filled = [](std::string_view begin, std::string_view part, std::string_view end) {
        std::string text(begin);
        return text.append(repeated(part, bytes / part.size())).append(end);
    };
    std::string members = "{";
    for (int i = 0; i < 1'000'000; ++i)
        members += "\"member" + std::to_string(i) + "\":0,";
    members.back() = '}';
    struct token_case {
        std::string text;
        bool is_read;
    };
    const token_case cases[] = {
        {filled("", "1", ""), true},
        {filled("0.", "5", "e-7"), true},
        {filled("\"", "a", "\""), true},
        {filled("\"", "\\n", "\""), true},
        {filled("\"", "\\ud83d", "\""), true},
        {filled("\"", "\xFF", "\""), true},
        {filled("\"", "\u00E9", "\""), true},
        {filled("", " \n", "0"), true},
        {filled("", "//\n", "0"), true},
        {filled("/*", "* ", "*/0"), true},
        {filled("[", "{},", "0]"), true},
        {filled("[", "1,", "1]"), true},
        {members, true},
        {filled("[", "1-", "]"), false},
        {filled("/*", "*", ""), false},
        {filled("\"", "\\\\", ""), false},
        {filled("", "/", ""), false},
        {filled("[", "\xFF", "]"), false},
    };
    for (const token_case &one : cases) {
        on_small_stack([&] {
            const qel::json root(Qel_json_read(one.text.data(), one.text.size(),
                                               QEL_JSON_READER_REPLACE_BAD_CHARS, nullptr, nullptr,
                                               nullptr, nullptr));
            EXPECT_EQ(root != nullptr, one.is_read) << one.text.substr(0, 20);
        });
    }
}

// A tree that is built has no limit.
TEST(TreeDepth, HasNoLimitWhenBuilt)
{
    constexpr std::size_t depth = 200'000;
    on_small_stack([&] {
        qel::json array(Qel_json_node_create(QEL_JSON_TYPE_ARRAY));
        const qel::xml_doc document(Qel_xml_create_doc());
        Qel_xml_node_t *element = document.get();
        for (std::size_t level = 1; level < depth; ++level) {
            qel::json outer(Qel_json_node_create(QEL_JSON_TYPE_ARRAY));
            Qel_json_array_insert(outer.get(), array.release());
            array = std::move(outer);
            element = Qel_xml_create_element("a", element);
        }
        EXPECT_EQ(std::string_view(qel::text(Qel_json_write(array.get(), 0, nullptr)).get()),
                  std::string(depth, '[') + std::string(depth, ']'));
        const std::string written = qel::text(Qel_xml_write(document.get(), 0, nullptr)).get();
        EXPECT_EQ(count(written, "</a>"), depth - 2);
    });
}

} // namespace
