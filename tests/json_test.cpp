#include "hostile_text.hpp"
#include "trees.hpp"

#include <qelstdlib_json.hpp>

#include <nlohmann/json.hpp>

#include <ctime>
#include <random>
#include <utility>
#include <vector>

namespace
{

using namespace std::string_literals;
using namespace std::string_view_literals;
using namespace test;

TEST(JsonRead, ReadableTexts)
{
    const std::pair<std::string, std::string_view> cases[] = {
        {"\xEF\xBB\xBF { \"a\" : [ true , false , null ] } \r\n\t", R"({"a":[true,false,null]})"},
        {R"(["\"\\\/\b\f\n\r\t\u00e9\u20AC"])", R"(["\"\\/\b\f\n\r\t\u00e9\u20ac"])"},
        {R"("scalar")", R"("scalar")"},
        // numbers keep their text
        {"[-0, 1.0,1E5\t,1e400,-1e-400/**/,123456789012345678901234567890]",
         "[-0,1.0,1E5,1e400,-1e-400,123456789012345678901234567890]"},
        {"12.50", "12.50"},
        {R"({"7":"8","a-1":[1,"2",3]})", R"({"7":"8","a-1":[1,"2",3]})"},
        // comments
        {"/* \" [1 */[1,// it's \"2\r2/*/*/,/***/3]//", "[1,2,3]"},
        {"[//\n1,//\r2]", "[1,2]"},
        {R"(["//","/*",1])", R"(["//","/*",1])"},
        // repeated names
        {R"({"a":1,"b":2,"a":{"c":[]},"b":3})", R"({"a":{"c":[]},"b":3})"},
        // NUL ends a text
        {R"({"a\u0000x":1,"a":"b\u0000c"})", R"({"a":"b"})"},
        // surrogates
        {R"(["\ud83D\uDE00"])", R"(["\ud83d\ude00"])"},
        {R"(["\uD800","\uDC00x","\uD800\uD800\uDC00","\uD800\n","\uDBFF\u0041"])",
         R"(["\ufffd","\ufffdx","\ufffd\ud800\udc00","\ufffd\n","\ufffdA"])"},
        {R"(["\uDC00\uDC00","\uD800\uE000","\uDBFF\uDFFF"])",
         R"(["\ufffd\ufffd","\ufffd\ue000","\udbff\udfff"])"},
        {R"(["\\uD800","\\\uD800"])", R"(["\\uD800","\\\ufffd"])"},
        // broken bytes
        {"[\"a\xFF\xFE\", \"\xE2\x82\", \"\xED\xA0\x80z\", 5]",
         R"(["a\ufffd","\ufffd","\ufffdz",5])"},
        {"/*\xFF*/[1]//\xFF", "[1]"},
    };
    for (const auto &[text, tree] : cases) {
        EXPECT_EQ(compact(read(text).get()), tree) << text;
    }
}

TEST(JsonRead, UnreadableTextsAndWhereTheyFail)
{
    constexpr auto syntax = QEL_JSON_ERROR_SYNTAX;
    const struct {
        std::string text;
        uint32_t flags;
        Qel_json_error_t error;
        size_t line, pos;
    } cases[] = {
        {"", repair, QEL_JSON_ERROR_EMPTY, 1, 1},
        {" \n ", repair, syntax, 2, 2},
        {"// only", repair, syntax, 1, 8},
        {"\xEF\xBB\xBF", repair, syntax, 1, 4},
        {"{\"a\":1} x", repair, syntax, 1, 9},
        {"[1,\n2 3]", repair, syntax, 2, 3},
        {"1\0"s, repair, syntax, 1, 2},
        {"[\"\0\"]"s, repair, syntax, 1, 3},
        {"[1]//\0"s, repair, syntax, 1, 6},
        {"[1-2]", repair, syntax, 1, 2},
        {"[1,]", repair, syntax, 1, 4},
        {"\"\\", repair, syntax, 1, 3},
        {"\"\\uD8", repair, syntax, 1, 6},
        {"/* x", repair, syntax, 1, 5},
        {"[\xFF]", repair, syntax, 1, 2},
        {"[\"\xFF\", x]", repair, syntax, 1, 7},
        {"[\"\xFF\",\"\xE2\x82\xFF\xFF\", x]", repair, syntax, 1, 14},
        {"[\"\xFF\"]", strict, QEL_JSON_ERROR_ENCODING, 1, 3},
        {"[1]/*\xFF*/", strict, QEL_JSON_ERROR_ENCODING, 1, 6},
        {"[\n\"\\uD800\"]", strict, QEL_JSON_ERROR_ENCODING, 2, 2},
        {"[x, \"\xFF\"]", strict, syntax, 1, 2},
        {repeat("[", 513), repair, QEL_JSON_ERROR_DEPTH, 1, 513},
        {repeat("[{\"a\":", 257), repair, QEL_JSON_ERROR_DEPTH, 1, 256 * 6 + 1},
        {"x" + repeat("[", 513), repair, syntax, 1, 1},
    };
    for (const auto &c : cases) {
        size_t processed = 99999, line = 99999, pos = 99999;
        Qel_json_error_t error = QEL_JSON_ERROR_SUCCESS;
        const qel::json root(
            Qel_json_read(c.text.data(), c.text.size(), c.flags, &processed, &error, &line, &pos));
        EXPECT_EQ(root, nullptr) << c.text;
        EXPECT_EQ(error, c.error) << c.text;
        EXPECT_EQ(std::pair(line, pos), std::pair(c.line, c.pos)) << c.text;
        EXPECT_EQ(processed, pos - 1 + (line == 1 ? 0 : c.text.rfind('\n') + 1)) << c.text;
    }
}

TEST(JsonRead, OutputsOfReadableText)
{
    size_t processed = 0, line = 9, pos = 9;
    Qel_json_error_t error = QEL_JSON_ERROR_DEPTH;
    const qel::json root(
        Qel_json_read("[\"\xFF\xFF\"]\n", 7, repair, &processed, &error, &line, &pos));
    EXPECT_EQ(error, QEL_JSON_ERROR_SUCCESS);
    EXPECT_EQ((std::vector{processed, line, pos}), (std::vector<size_t>{7, 0, 0}));
}

TEST(JsonRead, DepthCountsOpenLevelsOnly)
{
    EXPECT_NE(read(repeat("[", 512) + repeat("]", 512)), nullptr);
    EXPECT_NE(read(repeat("{\"a\":[", 256) + "1" + repeat("]}", 256)), nullptr);
    EXPECT_NE(read("[" + repeat("[{}],", 1000) + "\"" + repeat("[", 600) + "\"]"), nullptr);
}

// Writes down what the reader tells it, with offsets.
struct event_log {
    void add(const std::string &what, size_t offset)
    {
        log += what + "@" + std::to_string(offset) + " ";
    }
    void begin(qel::json_kind kind, size_t offset)
    {
        add(kind == qel::json_kind::object ? "{" : "[", offset);
    }
    void end(qel::json_kind kind, size_t offset)
    {
        add(kind == qel::json_kind::object ? "}" : "]", offset);
    }
    void name(std::string_view name, size_t offset) { add(std::string(name) + ":", offset); }
    void value(qel::json_kind kind, std::string_view text, size_t offset)
    {
        const std::string spelling(text);
        add(kind == qel::json_kind::string ? "'" + spelling + "'"
                                           : "    idbn"[static_cast<size_t>(kind)] + spelling,
            offset);
    }
    std::string log;
};

TEST(JsonReader, EventsWithTheirOffsets)
{
    const std::pair<std::string, std::string_view> cases[] = {
        {R"({ "a" : [1,-2.5e3 ,true, null],"b":{}} )",
         "{@0 a:@2 [@8 i1@9 d-2.5e3@11 btrue@19 nnull@25 ]@29 b:@31 {@35 }@36 }@37 "},
        {"\xEF\xBB\xBF/**/[//]\n\"\u00E9\\n\"/*]*/]", "[@7 '\u00E9\n'@12 ]@23 "},
        {R"("\ud83d\ude00\u0041\/")", "'\U0001F600A/'@0 "},
    };
    for (const auto &[source, events] : cases) {
        event_log log;
        EXPECT_EQ(qel::json_reader(source, log).read().problem, qel::json_problem::none) << source;
        EXPECT_EQ(log.log, events);
    }
}

TEST(JsonReader, FaultsSayWhatWhereAndWhatInstead)
{
    using problem = qel::json_problem;
    using wanted = qel::json_wanted;
    const struct {
        std::string source;
        problem found;
        wanted instead;
        size_t begin, at;
    } cases[] = {
        {"", problem::unexpected, wanted::value, 0, 0},
        {"[1,]", problem::unexpected, wanted::value, 3, 3},
        {"[1 truth", problem::unexpected, wanted::comma_or_bracket, 3, 6},
        {"[1 \"ab\"", problem::unexpected, wanted::comma_or_bracket, 3, 6},
        {"{\"a\" 12", problem::unexpected, wanted::colon, 5, 5},
        {"{\"a\":1 null", problem::unexpected, wanted::comma_or_brace, 7, 10},
        {"{\"a\":1,}", problem::unexpected, wanted::name, 7, 7},
        {"{} []", problem::unexpected, wanted::end_of_text, 3, 3},
        {"1,", problem::unexpected, wanted::end_of_text, 1, 1},
        {"{\"a\"}", problem::unexpected, wanted::colon, 4, 4},
        {"{\"a:\" 1", problem::unexpected, wanted::colon, 6, 6},
        {"{\"a\":}", problem::unexpected, wanted::value, 5, 5},
        {"{\"a\" :: 1}", problem::unexpected, wanted::value, 6, 6},
        {"[\"a\":1]", problem::unexpected, wanted::comma_or_bracket, 4, 4},
        {"{,", problem::unexpected, wanted::name, 1, 1},
        {"{]", problem::unexpected, wanted::name, 1, 1},
        {"[}", problem::unexpected, wanted::value, 1, 1},
        {"[1}", problem::unexpected, wanted::comma_or_bracket, 2, 2},
        {"[[],]", problem::unexpected, wanted::value, 4, 4},
        {"{1", problem::unexpected, wanted::name, 1, 1},
        {"[1 fals", problem::unexpected, wanted::comma_or_bracket, 3, 7},
        {"[/*\0*/1]"s, problem::unexpected, wanted::value, 3, 3},
        {"[1 -x", problem::incomplete_number, wanted::comma_or_bracket, 3, 4},
        {"[1,01]", problem::overlong_number, wanted::comma_or_bracket, 3, 4},
        {"[1. ]", problem::incomplete_number, wanted::value, 1, 3},
        {"[\"ab", problem::unclosed_string, wanted::value, 1, 4},
        {"\"a\tb", problem::control_character, wanted::value, 2, 2},
        {"\"a\\x\"", problem::unknown_escape, wanted::value, 2, 3},
        {"\"a\\u12x\"", problem::incomplete_escape, wanted::value, 2, 6},
        {"\"a\\uDC00\"", problem::lone_surrogate, wanted::value, 2, 7},
        {"\"a\\uD800\\n\"", problem::lone_surrogate, wanted::value, 2, 9},
        {"\"a\\uD800\\uD800\"", problem::lone_surrogate, wanted::value, 2, 13},
        {"\"ab\xE2\x82 \"", problem::broken_utf8, wanted::value, 3, 5},
        {"\"ab\xC0\x80\"", problem::broken_utf8, wanted::value, 3, 3},
        {"\"ab\xED\xA0\x80\"", problem::broken_utf8, wanted::value, 3, 4},
        {"\"\xE0\xA0\x80\xE0\x9F\x80\"", problem::broken_utf8, wanted::value, 4, 5},
        {"\"\xF0\x90\x80\x80\xF0\x8F\x80\x80\"", problem::broken_utf8, wanted::value, 5, 6},
        {"\"\xF4\x8F\xBF\xBF\xF4\x90\x80\x80\"", problem::broken_utf8, wanted::value, 5, 6},
        {"\"\xF5\x80\x80\x80\"", problem::broken_utf8, wanted::value, 1, 1},
        {"[/* *", problem::unclosed_comment, wanted::value, 1, 5},
        {"[/x", problem::lone_slash, wanted::value, 1, 2},
        {"[[[[]]]]", problem::too_deep, wanted::value, 3, 3},
    };
    for (const auto &c : cases) {
        event_log log;
        qel::json_rules rules;
        rules.max_levels = 3;
        const qel::json_fault fault = qel::json_reader(c.source, log, rules).read();
        EXPECT_EQ(fault.problem, c.found) << c.source;
        EXPECT_EQ(fault.wanted, c.instead) << c.source;
        EXPECT_EQ(std::pair(fault.begin, fault.at), std::pair(c.begin, c.at)) << c.source;
    }
}

TEST(JsonReader, LevelsBeyondTheMostAreTooDeep)
{
    qel::json_handler nobody;
    qel::json_rules rules;
    rules.max_levels = 5000;
    const std::string most = repeat("[", qel::json_most_levels);
    EXPECT_EQ(qel::json_reader(most + "{", nobody, rules).read().problem,
              qel::json_problem::too_deep);
    EXPECT_EQ(qel::json_reader(most, nobody, rules).read().problem, qel::json_problem::unexpected);
}

// The parts of a string that need a look stand at any place among those that do not, near the end
// of the text as well.
TEST(JsonReader, StringsOfAnyLength)
{
    const std::pair<std::string_view, std::string_view> parts[] = {
        {"", ""},
        {"\\n", "\n"},
        {"\u00E9", "\u00E9"},
        {"\\uD83D\\uDE00", "\U0001F600"},
        {"\x7F", "\x7F"},
        {"\xFF", "\uFFFD"},
        {"\\uD800", "\uFFFD"},
    };
    for (const auto &[written, meant] : parts) {
        for (size_t length = 0; length < 20; ++length) {
            for (size_t place = 0; place <= length; ++place) {
                std::string source(length, 'a');
                std::string text = source;
                source.insert(place, written);
                text.insert(place, meant);
                event_log log;
                qel::json_rules rules;
                rules.repair = true;
                const std::string quoted = "\"" + source + "\"";
                qel::json_reader(quoted, log, rules).read();
                ASSERT_EQ(log.log, "'" + text + "'@0 ");
            }
        }
    }
}

TEST(JsonReader, ControlCharactersAtAnyPlace)
{
    for (const char control : {'\0', '\n', '\x1F'}) {
        for (size_t place = 0; place < 20; ++place) {
            std::string source = "\"" + repeat("a", 19) + "\"";
            source.insert(1 + place, 1, control);
            qel::json_handler nobody;
            const qel::json_fault fault = qel::json_reader(source, nobody).read();
            ASSERT_EQ(fault.problem, qel::json_problem::control_character);
            ASSERT_EQ(fault.at, 1 + place);
        }
    }
}

TEST(JsonTree, TypesAndValues)
{
    const qel::json root = read(R"({"s":"","i":-1,"d":1e0,"b":true,"n":null,"o":{},"a":[1,"x"]})");
    const std::pair<const char *, Qel_json_type_t> types[] = {
        {"s", QEL_JSON_TYPE_STRING}, {"i", QEL_JSON_TYPE_INTEGER}, {"d", QEL_JSON_TYPE_DECIMAL},
        {"b", QEL_JSON_TYPE_BOOL},   {"n", QEL_JSON_TYPE_NULL},    {"o", QEL_JSON_TYPE_OBJECT},
        {"a", QEL_JSON_TYPE_ARRAY},  {"A", QEL_JSON_TYPE_UNKNOWN}};
    for (const auto &[name, type] : types) {
        const Qel_json_node_t *const value = Qel_json_object_value(root.get(), name);
        EXPECT_EQ(Qel_json_node_type(value), type) << name;
        EXPECT_EQ(Qel_json_object_value_string(root.get(), name) != nullptr, name == "s"sv) << name;
        const qel::json created(Qel_json_node_create(type));
        EXPECT_EQ(Qel_json_node_type(created.get()), type) << name;
        EXPECT_EQ(Qel_json_node_type(read(compact(created.get())).get()), type) << name;
    }
    const Qel_json_node_t *const array = Qel_json_object_value(root.get(), "a");
    EXPECT_EQ(Qel_json_object_num_children(root.get()), 7u);
    EXPECT_EQ(Qel_json_object_num_children(array), 2u);
    EXPECT_EQ(Qel_json_array_len(array), 2u);
    EXPECT_EQ(Qel_json_array_len(root.get()), 0u);
    EXPECT_EQ(Qel_json_array_at(root.get(), 0), nullptr);
    EXPECT_EQ(Qel_json_array_at(array, 2), nullptr);
    EXPECT_EQ(Qel_json_object_value(array, ""), nullptr);
}

TEST(JsonTree, MembersKeepTheirOrder)
{
    const auto name = [](int at) { return "the member number " + std::to_string(at); };
    // From some number of members on, they are found by another way than at first.
    for (const int count : {3, 100}) {
        const qel::json object(Qel_json_node_create(QEL_JSON_TYPE_OBJECT));
        for (int at = 0; at < 2 * count; ++at) { // each is inserted and then replaced
            Qel_json_object_insert_string(object.get(), name(at % count).c_str(), name(at).c_str());
        }
        Qel_json_node_destroy(Qel_json_object_value(object.get(), name(0).c_str()));
        EXPECT_EQ(Qel_json_object_value(object.get(), name(0).c_str()), nullptr);
        std::string expected;
        for (int at = 1; at < count; ++at) {
            EXPECT_EQ(Qel_json_object_value_string(object.get(), name(at).c_str()),
                      name(count + at));
            expected += (at == 1 ? "{\"" : ",\"") + name(at) + "\":\"" + name(count + at) + '"';
        }
        EXPECT_EQ(compact(object.get()), expected + "}");
    }
}

TEST(JsonTree, TakenNodeOutlivesItsTree)
{
    qel::json root = read(R"({"a":[{"b":"c"},2],"d":3})");
    qel::json taken(Qel_json_array_at(Qel_json_object_value(root.get(), "a"), 0));
    Qel_json_take_from_parent(taken.get());
    EXPECT_EQ(compact(root.get()), R"({"a":[2],"d":3})");
    root.reset();
    EXPECT_STREQ(Qel_json_object_value_string(taken.get(), "b"), "c");

    const qel::json home(Qel_json_node_create(QEL_JSON_TYPE_OBJECT));
    EXPECT_TRUE(Qel_json_object_insert(home.get(), "x", taken.release()));
    EXPECT_EQ(compact(home.get()), R"({"x":{"b":"c"}})");

    // Back in its own tree it goes with that.
    Qel_json_node_t *const back = Qel_json_object_value(home.get(), "x");
    Qel_json_take_from_parent(back);
    EXPECT_TRUE(Qel_json_object_insert(home.get(), "y", back));
    const qel::json other = read(R"([[1],2])");
    Qel_json_node_t *const first = Qel_json_array_at(other.get(), 0);
    Qel_json_take_from_parent(first);
    EXPECT_TRUE(Qel_json_array_insert(other.get(), first));
    EXPECT_EQ(compact(other.get()), "[2,[1]]");
}

TEST(JsonTree, RefusedInsertionsLeaveTheValueWithTheCaller)
{
    const qel::json root = read(R"({"a":[[]]})");
    Qel_json_node_t *const array = Qel_json_object_value(root.get(), "a");
    Qel_json_node_t *const inner = Qel_json_array_at(array, 0);
    const qel::json value(Qel_json_node_create(QEL_JSON_TYPE_NULL));

    EXPECT_FALSE(Qel_json_object_insert(array, "x", value.get()));
    EXPECT_FALSE(Qel_json_array_insert(root.get(), value.get()));
    EXPECT_FALSE(Qel_json_object_insert(root.get(), "x", inner)); // has a parent
    EXPECT_FALSE(Qel_json_object_insert(root.get(), "x", root.get()));
    EXPECT_FALSE(Qel_json_array_insert(inner, root.get())); // would be its own ancestor
    EXPECT_FALSE(Qel_json_object_insert_string(array, "x", "x"));
    EXPECT_EQ(compact(root.get()), R"({"a":[[]]})");
}

TEST(JsonWrite, Layout)
{
    const qel::json root = read(R"({"a":"b","c":{"d":[1,[],{"e":null}]},"f":{}})");
    const qel::text text(Qel_json_write(root.get(), QEL_JSON_WRITER_PRETTYPRINT_SPACE, nullptr));
    EXPECT_STREQ(text.get(), R"({
  "a": "b",
  "c": {
    "d": [
      1,
      [],
      {
        "e": null
      }
    ]
  },
  "f": {}
})");
}

TEST(JsonWrite, Escapes)
{
    const qel::json root(Qel_json_node_create(QEL_JSON_TYPE_OBJECT));
    Qel_json_object_insert_string(root.get(), "\u00E9\"",
                                  "\"\\/\b\f\n\r\t\x01\x1F\x7F' \u00E9\uFFFF\U0001F600\xFF\xC3z");
    EXPECT_EQ(compact(root.get()), R"({"\u00e9\"":"\"\\/\b\f\n\r\t\u0001\u001f)"
                                   "\x7F"
                                   R"(' \u00e9\uffff\ud83d\ude00\ufffdz"})");
}

TEST(JsonWrite, HostileTextsAreReadBackEqual)
{
    std::mt19937 random(11);
    for (int round = 0; round < 3000; ++round) {
        const hostile_text name = random_text(random);
        const hostile_text value = random_text(random);
        const qel::json root(Qel_json_node_create(QEL_JSON_TYPE_OBJECT));
        Qel_json_object_insert_string(root.get(), name.raw.c_str(), value.raw.c_str());
        ASSERT_EQ(nlohmann::json::parse(compact(root.get())),
                  nlohmann::json({{name.json, value.json}}));
    }
}

// Minutes if an insertion cost as much as there are members, about a second as it is.
// Processor time, so that other programs do not count; quadratic, it would be minutes.
TEST(JsonTree, ManyMembersCostLinearTime)
{
    constexpr int count = 200000;
    std::string text = "{";
    for (int at = 0; at < count; ++at) {
        const std::string name = "\"member " + std::to_string(at) + "\":";
        text += name + "1," + name + "2,";
    }
    text.back() = '}';
    const std::clock_t start = std::clock();
    const qel::json root = read(text);
    EXPECT_LT((std::clock() - start) / CLOCKS_PER_SEC, 30);
    EXPECT_EQ(Qel_json_object_num_children(root.get()), size_t{count});
}

TEST(JsonTree, MembersAndElementsRemovedOneByOneCostLinearTime)
{
    constexpr int count = 100000;
    const auto name = [](int at) { return "member " + std::to_string(at); };
    const std::clock_t start = std::clock();
    for (const int step : {1, count - 1, 7919}) { // forwards, backwards, and all over
        const qel::json object(Qel_json_node_create(QEL_JSON_TYPE_OBJECT));
        for (int at = 0; at < count; ++at)
            Qel_json_object_insert_string(object.get(), name(at).c_str(), "");
        for (int i = 0, at = 0; i < count; ++i, at = (at + step) % count)
            Qel_json_node_destroy(Qel_json_object_value(object.get(), name(at).c_str()));
        EXPECT_EQ(compact(object.get()), "{}");
    }
    constexpr int elements = 4 * count; // each of which costs little to move
    for (const bool from_front : {true, false}) {
        const qel::json array = read("[0" + repeat(",0", elements - 1) + "]");
        for (int left = elements; left > 0; --left)
            Qel_json_node_destroy(
                Qel_json_array_at(array.get(), from_front ? 0 : static_cast<size_t>(left - 1)));
        EXPECT_EQ(compact(array.get()), "[]");
    }
    EXPECT_LT((std::clock() - start) / CLOCKS_PER_SEC, 30);
}

TEST(Absent, EveryArgumentOfJson)
{
    EXPECT_EQ(Qel_json_read(nullptr, 5, 0, nullptr, nullptr, nullptr, nullptr), nullptr);
    EXPECT_EQ(Qel_json_read("x", 1, 0, nullptr, nullptr, nullptr, nullptr), nullptr);
    EXPECT_EQ(Qel_json_node_type(nullptr), QEL_JSON_TYPE_UNKNOWN);
    EXPECT_EQ(Qel_json_object_value_string(nullptr, "a"), nullptr);
    EXPECT_FALSE(Qel_json_object_insert_string(nullptr, "a", "b"));
    EXPECT_FALSE(Qel_json_object_insert(nullptr, "a", nullptr));
    EXPECT_EQ(Qel_json_object_num_children(nullptr), 0u);
    EXPECT_EQ(Qel_json_array_at(nullptr, 0), nullptr);
    EXPECT_FALSE(Qel_json_array_insert(nullptr, nullptr));
    EXPECT_EQ(Qel_json_write(nullptr, 0, nullptr), nullptr);
    Qel_json_node_destroy(nullptr);

    const qel::json object = read(R"({"":""})");
    EXPECT_EQ(Qel_json_object_value_string(object.get(), nullptr), nullptr);
    EXPECT_FALSE(Qel_json_object_insert_string(object.get(), "a", nullptr));
    EXPECT_FALSE(Qel_json_object_insert_string(object.get(), nullptr, "a"));
    EXPECT_FALSE(Qel_json_object_insert(object.get(), "a", nullptr));
    const qel::json value(Qel_json_node_create(QEL_JSON_TYPE_NULL));
    EXPECT_FALSE(Qel_json_object_insert(object.get(), nullptr, value.get()));
    Qel_json_take_from_parent(object.get()); // a root stays as it is
}

} // namespace
