// XML: a tree is built as the input says, written, and read by a parser.
#include "fuzz.hpp"

#include <deque>
#include <memory>

#include <libxml/parser.h>

namespace
{

using fuzz::require;

// An element or a text, with its level in the tree; in the order in which they are written.
struct item {
    std::size_t level;
    bool is_text;
    std::string text; // of an element, its name
    fuzz::pairs attributes;
};

// A name that is written as it is, without colons; ASCII only, where that is easily told.
bool is_plain_name(std::string_view name)
{
    constexpr std::string_view inner = "-.0123456789ABCDEFGHIJKLMNOPQRSTUVWXYZ_"
                                       "abcdefghijklmnopqrstuvwxyz";
    return !name.empty() && inner.find(name.front()) > inner.find('9') &&
           name.find_first_not_of(inner) == name.npos;
}

// A value that stands in a start tag as it is.
bool is_plain_value(std::string_view value)
{
    return std::ranges::all_of(value, [](char chr) {
        return chr >= ' ' && chr < '\x7F' &&
               std::string_view("&<>\"'").find(chr) == std::string_view::npos;
    });
}

// A text that may be indentation to a parser.
bool is_blank(std::string_view text)
{
    return text.find_first_not_of(" \t\r\n") == text.npos;
}

class builder
{
  public:
    builder() : root_(Qel_xml_create_element("root", nullptr)), open_{root_.get()}
    {
        items_.push_back({0, false, "root", {}});
    }

    void take_step(fuzz::input &from)
    {
        Qel_xml_node_t *const parent = open_.back();
        switch (from.byte() % 8) {
        case 0: {
            const std::string name = from.text();
            open_.push_back(Qel_xml_create_element(name.c_str(), parent));
            items_.push_back({open_.size() - 1, false, name, {}});
            return;
        }
        case 1: {
            const std::string name = from.text();
            const std::string text = from.text();
            items_.push_back({open_.size(), false, name, {}});
            items_.push_back({open_.size() + 1, true, text, {}});
            Qel_xml_node_t *element =
                Qel_xml_create_element_with_text(name.c_str(), text.c_str(), 0, parent);
            require(Qel_xml_node_num_children(element) == 1, "the text is a child");
            return;
        }
        case 2: {
            const std::string name = from.text();
            const std::string value = from.text();
            insert_attribute(name, value);
            return;
        }
        case 4: {
            const std::string name = from.text();
            const std::string attribute = from.text();
            const std::string value = from.text();
            open_from_tag(name, attribute, value);
            return;
        }
        default:
            if (open_.size() > 1)
                open_.pop_back();
        }
    }

    const Qel_xml_node_t *root() const { return root_.get(); }
    const std::vector<item> &items() const { return items_; }

  private:
    // Where the parts make a right tag.
    void open_from_tag(const std::string &name, const std::string &attribute,
                       const std::string &value)
    {
        if (!is_plain_name(name) || !is_plain_name(attribute) || !is_plain_value(value))
            return;
        tags_.push_back(name + ' ' + attribute + "=\"" + value + '"');
        open_.push_back(
            Qel_xml_create_element_from_tag(tags_.back().c_str(), nullptr, open_.back()));
        items_.push_back({open_.size() - 1, false, name, {{attribute, value}}});
    }

    // On the element that was added last, while it is open.
    void insert_attribute(const std::string &name, const std::string &value)
    {
        const bool is_open = items_.back().level == open_.size() - 1 && is_plain_name(name);
        if (!is_open)
            return;
        const bool is_new = std::ranges::none_of(
            items_.back().attributes, [&](const auto &one) { return one.first == name; });
        const bool is_set =
            Qel_xml_node_insert_attribute(open_.back(), name.c_str(), value.c_str(), 0, false);
        require(is_set == is_new, "an attribute is set once");
        if (is_new)
            items_.back().attributes.emplace_back(name, value);
    }

    std::deque<std::string> tags_; // which outlive the tree
    qel::xml_doc root_;
    std::vector<Qel_xml_node_t *> open_;
    std::vector<item> items_;
};

void read(xmlNode *node, std::size_t level, std::vector<item> &items)
{
    for (; node != nullptr; node = node->next) {
        if (node->type == XML_TEXT_NODE) {
            items.push_back({level, true, reinterpret_cast<const char *>(node->content), {}});
            continue;
        }
        require(node->type == XML_ELEMENT_NODE, "a tree holds elements and texts");
        item element{level, false, reinterpret_cast<const char *>(node->name), {}};
        for (xmlAttr *attr = node->properties; attr != nullptr; attr = attr->next) {
            const std::unique_ptr<xmlChar, decltype(xmlFree)> value(
                xmlNodeListGetString(node->doc, attr->children, 1), xmlFree);
            element.attributes.emplace_back(reinterpret_cast<const char *>(attr->name),
                                            value ? reinterpret_cast<const char *>(value.get())
                                                  : "");
        }
        items.push_back(element);
        read(node->children, level + 1, items);
    }
}

std::vector<item> read(const std::string &text)
{
    const std::unique_ptr<xmlDoc, decltype(&xmlFreeDoc)> doc(
        xmlReadMemory(text.data(), static_cast<int>(text.size()), nullptr, "UTF-8",
                      XML_PARSE_NONET | XML_PARSE_NOERROR | XML_PARSE_NOWARNING | XML_PARSE_HUGE),
        xmlFreeDoc);
    require(doc != nullptr, "XML is well-formed");
    std::vector<item> items;
    read(xmlDocGetRootElement(doc.get()), 0, items);
    return items;
}

void compare(std::vector<item> wanted, std::vector<item> got)
{
    for (std::vector<item> *items : {&wanted, &got})
        std::erase_if(*items, [](const item &one) { return one.is_text && is_blank(one.text); });
    require(got.size() == wanted.size(), "every element and text is there");
    for (std::size_t i = 0; i < got.size(); ++i) {
        const item &want = wanted[i];
        require(got[i].level == want.level && got[i].is_text == want.is_text,
                "everything stands where it was put");
        const bool is_plain =
            want.is_text ? fuzz::is_clean_text(want.text) : is_plain_name(want.text);
        require(!is_plain || got[i].text == want.text, "names and texts stay as they are");
        require(got[i].attributes.size() == want.attributes.size(), "attributes are there");
        for (std::size_t j = 0; j < want.attributes.size(); ++j) {
            const auto &[name, value] = want.attributes[j];
            require(got[i].attributes[j].first == name, "and stay as they are");
            require(!fuzz::is_clean_text(value) || got[i].attributes[j].second == value,
                    "and stay as they are");
        }
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    fuzz::input from(data, size);
    builder tree;
    while (!from.empty())
        tree.take_step(from);
    for (const auto flags : {QEL_XML_WRITER_NONE, QEL_XML_WRITER_PRETTYPRINT_SPACE}) {
        const std::string written = fuzz::taken(Qel_xml_write(tree.root(), flags, nullptr));
        compare(tree.items(), read(written));
    }
    return 0;
}
