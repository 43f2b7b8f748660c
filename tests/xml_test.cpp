#include "hostile_text.hpp"
#include "trees.hpp"

#include <libxml/parser.h>

#include <ctime>
#include <map>
#include <memory>
#include <random>
#include <utility>

namespace
{

using namespace std::string_literals;
using namespace test;

TEST(XmlWrite, Layout)
{
    const qel::xml_doc doc(Qel_xml_create_doc());
    EXPECT_EQ(write(doc.get()), "");
    Qel_xml_node_t *const block = Qel_xml_create_element("Block", doc.get());
    Qel_xml_create_element_with_text("a", "x y", 0, block);
    Qel_xml_node_t *const group = Qel_xml_create_element("group", block);
    Qel_xml_node_insert_attribute(group, "id", "i", 0, false);
    Qel_xml_node_insert_attribute(group, "class", "", 0, false);
    Qel_xml_create_element("empty", group);
    Qel_xml_create_element_with_text("blank", "", 0, group);
    Qel_xml_create_element_with_text("absent", nullptr, 0, group);
    Qel_xml_create_element("i", Qel_xml_create_element_with_text("p", "mixed", 0, doc.get()));

    EXPECT_EQ(write(doc.get()), R"(<Block>
  <a>x y</a>
  <group id="i" class="">
    <empty/>
    <blank></blank>
    <absent/>
  </group>
</Block>
<p>mixed<i/></p>)");
    EXPECT_EQ(write(group, QEL_XML_WRITER_NONE),
              R"(<group id="i" class=""><empty/><blank></blank><absent/></group>)");
    EXPECT_EQ(Qel_xml_node_num_children(group), 3u);
    Qel_xml_node_destroy(group); // leaves its parent
    EXPECT_EQ(write(block, QEL_XML_WRITER_NONE), "<Block><a>x y</a></Block>");
}

TEST(Xml, LosesAnyOfItsChildren)
{
    const std::pair<std::string_view, const char *> cases[] = {
        {"a", "<r><b/><c/><d/></r>"}, {"b", "<r><a/><c/><d/></r>"}, {"c", "<r><a/><b/><d/></r>"},
        {"ca", "<r><b/><d/></r>"},    {"bac", "<r><d/></r>"},
    };
    for (const auto &[lost, expected] : cases) {
        const qel::xml_doc root(Qel_xml_create_element("r", nullptr));
        std::map<char, Qel_xml_node_t *> children;
        for (const char name : {'a', 'b', 'c'})
            children[name] = Qel_xml_create_element(std::string(1, name).c_str(), root.get());
        for (const char name : lost)
            Qel_xml_node_destroy(children[name]);
        Qel_xml_create_element("d", root.get());
        EXPECT_EQ(write(root.get(), QEL_XML_WRITER_NONE), expected) << lost;
        EXPECT_EQ(Qel_xml_node_num_children(root.get()), 4 - lost.size());
    }
}

TEST(XmlWrite, Encoding)
{
    const struct {
        const char *raw, *text, *value;
    } cases[] = {
        {"&<>\"'", "&amp;&lt;&gt;&quot;&apos;", "&amp;&lt;&gt;&quot;&apos;"},
        {"a\r\n\tb", "a&#13;\n\tb", "a&#13;&#10;&#9;b"},
        {"\x01\x02\x1F\x7F", "\uFFFD\uFFFD\uFFFD\x7F", "\uFFFD\uFFFD\uFFFD\x7F"},
        {"\u00E9\xFF\x80z\xED\xA0\x80", "\u00E9\uFFFDz\uFFFD", "\u00E9\uFFFDz\uFFFD"},
    };
    for (const auto &[raw, text, value] : cases) {
        const qel::xml_doc root(Qel_xml_create_element_with_text("t", raw, 0, nullptr));
        Qel_xml_node_insert_attribute(root.get(), "v", raw, 0, false);
        EXPECT_EQ(write(root.get()), "<t v=\""s + value + "\">" + text + "</t>");
    }
}

TEST(XmlWrite, NamesAreMadeValid)
{
    const std::pair<const char *, const char *> cases[] = {
        {"plain-Name_1.2", "plain-Name_1.2"},
        {"", "_"},
        {"1st", "_1st"},
        {"-a", "_-a"},
        {" a", "_a"},
        {"a b/c>", "a_b_c_"},
        {"ns:a", "ns_a"},
        {"\u00E9t\u00E9\U0001F600", "\u00E9t\u00E9\U0001F600"},
        {"\u00B7x", "_\u00B7x"},      // a middle dot may only follow
        {"a\u00D7b\u037Ec", "a_b_c"}, // signs among letters
        {"\U000F0000", "_"},          // private use
        {"a\xFF\xFE-", "a_-"},
    };
    for (const auto &[raw, name] : cases) {
        const qel::xml_doc root(Qel_xml_create_element(raw, nullptr));
        EXPECT_EQ(write(root.get()), "<"s + name + "/>");
    }
}

TEST(XmlTree, NamesOfOneTreeStayApart)
{
    constexpr std::pair<const char *, std::string_view> names[] = {
        {"item", "<item/>"},
        {"items", "<items/>"}, // begins as another
        {"it", "<it/>"},
        {"i tem", "<i_tem/>"},
        {"i_tem", "<i_tem/>"},
        {"I", "<I/>"},
        {"", "<_/>"},
        {"name_of_fifteen", "<name_of_fifteen/>"},
        {"name_of_sixteen_", "<name_of_sixteen_/>"},
        {"name_of_seventeen", "<name_of_seventeen/>"},
    };
    const qel::xml_doc doc(Qel_xml_create_doc());
    std::string expected;
    for (const auto &[first, first_written] : names) {
        for (const auto &[second, second_written] : names) {
            Qel_xml_create_element(first, doc.get());
            Qel_xml_create_element(second, doc.get());
            expected.append(first_written).append(second_written);
        }
    }
    EXPECT_EQ(write(doc.get(), QEL_XML_WRITER_NONE), expected);
}

TEST(XmlTree, LongestLengthKeepsWholeCharacters)
{
    constexpr auto text = "a\u00E9\u20ACb";
    const std::pair<size_t, std::string> cases[] = {
        {0, text}, {1, "a"}, {2, "a"}, {3, "a\u00E9"}, {5, "a\u00E9"}, {6, "a\u00E9\u20AC"},
        {7, text}};
    for (const auto &[max_len, kept] : cases) {
        const qel::xml_doc root(Qel_xml_create_element_with_text("t", text, max_len, nullptr));
        Qel_xml_node_insert_attribute(root.get(), "v", text, max_len, false);
        EXPECT_EQ(write(root.get()), "<t v=\"" + kept + "\">" + kept + "</t>") << max_len;
    }
    const qel::xml_doc broken(Qel_xml_create_element_with_text("t", "\x80\x80\x80", 2, nullptr));
    EXPECT_EQ(write(broken.get()), "<t></t>"); // no whole character fits
}

TEST(XmlTree, AttributesOfOneName)
{
    const qel::xml_doc root(Qel_xml_create_element("a", nullptr));
    EXPECT_TRUE(Qel_xml_node_insert_attribute(root.get(), "x y", "1", 0, false));
    EXPECT_TRUE(Qel_xml_node_insert_attribute(root.get(), "z", "2", 0, true));
    EXPECT_FALSE(Qel_xml_node_insert_attribute(root.get(), "x y", "3", 0, false));
    EXPECT_FALSE(Qel_xml_node_insert_attribute(root.get(), "x_y", "4", 0, false)); // written alike
    EXPECT_FALSE(Qel_xml_node_insert_attribute(root.get(), "z", nullptr, 0, true));
    EXPECT_EQ(write(root.get()), R"(<a x_y="1" z="2"/>)");
    EXPECT_TRUE(Qel_xml_node_insert_attribute(root.get(), "x y", "5", 0, true));
    EXPECT_EQ(write(root.get()), R"(<a x_y="5" z="2"/>)");
}

TEST(XmlTree, ElementsFromTags)
{
    const qel::xml_doc doc(Qel_xml_create_doc());
    Qel_xml_node_t *const div =
        Qel_xml_create_element_from_tag(R"(div id="a" class="b c")", nullptr, doc.get());
    Qel_xml_create_element_from_tag("p", "1 < 2", div);
    Qel_xml_create_element_from_tag(R"(p x="")", "", div);
    Qel_xml_create_element_from_tag(R"(hr x="1")", nullptr, div);
    EXPECT_EQ(Qel_xml_node_num_children(div), 3u);
    EXPECT_EQ(write(doc.get()), R"(<div id="a" class="b c">
  <p>1 &lt; 2</p>
  <p x=""></p>
  <hr x="1"/>
</div>)");
    for (const char *none : {"", static_cast<const char *>(nullptr)}) {
        const qel::xml_doc root(Qel_xml_create_element_from_tag(none, "x", nullptr));
        EXPECT_EQ(write(root.get()), "<_>x</_>");
    }
}

// What was made from a tag takes attributes as if its own had been inserted one by one.
TEST(XmlTree, AttributesOfATagAreLikeOthers)
{
    const struct {
        const char *name, *value;
        bool overwrite, is_set;
        std::string_view written;
    } cases[] = {
        {"n", "5", false, true, R"(<a id="1" cl="2 3" n="5"/>)"},
        {"id", "5", false, false, R"(<a id="1" cl="2 3"/>)"},
        {"id", "&", true, true, R"(<a id="&amp;" cl="2 3"/>)"},
        {"cl", "", true, true, R"(<a id="1" cl=""/>)"},
        {"c", "5", true, true, R"(<a id="1" cl="2 3" c="5"/>)"},
        {"id", nullptr, true, false, R"(<a id="1" cl="2 3"/>)"},
    };
    for (const auto &[name, value, overwrite, is_set, written] : cases) {
        const qel::xml_doc root(
            Qel_xml_create_element_from_tag(R"(a id="1" cl="2 3")", nullptr, nullptr));
        EXPECT_EQ(Qel_xml_node_insert_attribute(root.get(), name, value, 0, overwrite), is_set);
        EXPECT_EQ(write(root.get()), written);
    }
}

// A tag that is not right is the caller's fault, but stays within its text.
TEST(XmlTree, WrongTagsAreNotReadPastTheirEnd)
{
    for (const char *wrong : {"a ", "a x", "a x=", "a x=\"", "a x=\"1", "a =\"", "a=\"1\"",
                              "a x=\"1\"y=\"2\"", "a  =\"\"=\"", "\"=\"", "=\"\" =\""}) {
        const std::string tag = wrong; // in memory of its own, whose end sanitizers watch
        const qel::xml_doc root(Qel_xml_create_element_from_tag(tag.c_str(), nullptr, nullptr));
        EXPECT_EQ(write(root.get()), "<" + tag + "/>");
        Qel_xml_node_insert_attribute(root.get(), "n", "5", 0, true);
        EXPECT_TRUE(write(root.get()).ends_with(" n=\"5\"/>")) << tag;
    }
}

// From some number on, attributes are found by another way than at first.
TEST(XmlTree, ManyAttributesKeepTheirOrderAndCostLinearTime)
{
    const std::clock_t start = std::clock();
    for (const int count : {15, 16, 17, 32, 33, 200000}) {
        const qel::xml_doc root(Qel_xml_create_element("a", nullptr));
        const auto insert = [&](int at, int value, bool overwrite) {
            return Qel_xml_node_insert_attribute(root.get(), ("n" + std::to_string(at)).c_str(),
                                                 std::to_string(value).c_str(), 0, overwrite);
        };
        std::string expected = "<a";
        for (int at = 0; at < count; ++at) {
            ASSERT_TRUE(insert(at, at, false));
            expected +=
                " n" + std::to_string(at) + "=\"" + std::to_string(at % 3 == 0 ? -at : at) + '"';
        }
        for (int at = 0; at < count; ++at) {
            ASSERT_FALSE(insert(at, 7, false)) << at;
            ASSERT_TRUE(at % 3 != 0 || insert(at, -at, true)) << at;
        }
        ASSERT_EQ(write(root.get()), expected + "/>") << count;
    }
    EXPECT_LT((std::clock() - start) / CLOCKS_PER_SEC, 30);
}

std::string string_of(xmlChar *str)
{
    const std::unique_ptr<xmlChar, decltype(xmlFree)> owner(str, xmlFree);
    return reinterpret_cast<const char *>(str);
}

TEST(XmlWrite, HostileTextsAreReadBackEqual)
{
    std::mt19937 random(13);
    for (int round = 0; round < 3000; ++round) {
        const hostile_text name = random_text(random);
        const hostile_text value = random_text(random);
        const qel::xml_doc root(
            Qel_xml_create_element_with_text(name.raw.c_str(), value.raw.c_str(), 0, nullptr));
        Qel_xml_node_insert_attribute(root.get(), "v", value.raw.c_str(), 0, false);
        Qel_xml_node_insert_attribute(root.get(), ("n" + name.raw).c_str(), "", 0, false);
        const std::string text = write(root.get());

        const std::unique_ptr<xmlDoc, decltype(&xmlFreeDoc)> doc(
            xmlReadMemory(text.data(), static_cast<int>(text.size()), nullptr, "UTF-8",
                          XML_PARSE_NONET | XML_PARSE_NOERROR | XML_PARSE_NOWARNING),
            xmlFreeDoc);
        ASSERT_NE(doc, nullptr) << text;
        xmlNode *const element = xmlDocGetRootElement(doc.get());
        ASSERT_EQ(string_of(xmlNodeGetContent(element)), value.xml) << text;
        ASSERT_EQ(string_of(xmlGetProp(element, BAD_CAST "v")), value.xml) << text;
    }
}

// A character as it is handed in, and what is written for it in an XML text, in the value of an XML
// attribute and in JSON.
struct written_char {
    std::string_view raw, text, value, json;
};

constexpr written_char written_chars[] = {
    {"&", "&amp;", "&amp;", "&"},
    {"<", "&lt;", "&lt;", "<"},
    {">", "&gt;", "&gt;", ">"},
    {"\"", "&quot;", "&quot;", "\\\""},
    {"'", "&apos;", "&apos;", "'"},
    {"\\", "\\", "\\", "\\\\"},
    {"\n", "\n", "&#10;", "\\n"},
    {"\r", "&#13;", "&#13;", "\\r"},
    {"\x1F", "\uFFFD", "\uFFFD", "\\u001f"},
    {" ", " ", " ", " "},
    {"\x7F", "\x7F", "\x7F", "\x7F"},
    {"\u00E9", "\u00E9", "\u00E9", "\\u00e9"},
    {"\xFF", "\uFFFD", "\uFFFD", "\\ufffd"},
};

// Texts are looked at in stretches, so every place in more than two of them is tried.
TEST(Write, AnyCharacterAtAnyPlace)
{
    constexpr size_t longest = 40;
    for (const auto &[raw, text, value, json] : written_chars) {
        for (size_t place = 0; place < longest; ++place) {
            const std::string before(place, 'b');
            for (const std::string &after : {""s, "a"s, std::string(longest - place, 'a')}) {
                const std::string whole = before + std::string(raw) + after;
                const auto with = [&](std::string_view chr) {
                    return before + std::string(chr) + after;
                };
                const qel::xml_doc root(
                    Qel_xml_create_element_with_text("t", whole.c_str(), 0, nullptr));
                Qel_xml_node_insert_attribute(root.get(), "v", whole.c_str(), 0, false);
                ASSERT_EQ(write(root.get()), "<t v=\"" + with(value) + "\">" + with(text) + "</t>");

                const qel::json object(Qel_json_node_create(QEL_JSON_TYPE_OBJECT));
                Qel_json_object_insert_string(object.get(), whole.c_str(), whole.c_str());
                ASSERT_EQ(compact(object.get()), "{\"" + with(json) + "\":\"" + with(json) + "\"}");
            }
        }
    }
}

TEST(Trees, DeepOnesAreWrittenAndReleased)
{
    constexpr size_t depth = 100000;
    const qel::json array(Qel_json_node_create(QEL_JSON_TYPE_ARRAY));
    const qel::xml_doc root(Qel_xml_create_element("a", nullptr));
    Qel_json_node_t *inner_array = array.get();
    Qel_xml_node_t *inner_element = root.get();
    for (size_t level = 1; level < depth; ++level) {
        Qel_json_array_insert(inner_array, Qel_json_node_create(QEL_JSON_TYPE_ARRAY));
        inner_array = Qel_json_array_at(inner_array, 0);
        inner_element = Qel_xml_create_element("a", inner_element);
    }
    EXPECT_EQ(compact(array.get()), repeat("[", depth) + repeat("]", depth));
    EXPECT_EQ(write(root.get(), QEL_XML_WRITER_NONE),
              repeat("<a>", depth - 1) + "<a/>" + repeat("</a>", depth - 1));
}

TEST(Absent, EveryArgumentOfXml)
{
    EXPECT_FALSE(Qel_xml_node_insert_attribute(nullptr, "a", "b", 0, true));
    EXPECT_EQ(Qel_xml_node_num_children(nullptr), 0u);
    EXPECT_EQ(Qel_xml_write(nullptr, 0, nullptr), nullptr);
    size_t len = 1;
    EXPECT_EQ(Qel_xml_write(nullptr, 0, &len), nullptr);
    EXPECT_EQ(len, 0u);
    Qel_xml_node_destroy(nullptr);
    const qel::xml_doc element(Qel_xml_create_element_with_text(nullptr, nullptr, 0, nullptr));
    EXPECT_FALSE(Qel_xml_node_insert_attribute(element.get(), nullptr, "b", 0, true));
    EXPECT_EQ(write(element.get()), "<_/>");
    const qel::xml_doc doc(Qel_xml_create_doc());
    EXPECT_FALSE(Qel_xml_node_insert_attribute(doc.get(), "a", "b", 0, true)); // not an element
    EXPECT_EQ(write(doc.get()), "");
}

} // namespace
