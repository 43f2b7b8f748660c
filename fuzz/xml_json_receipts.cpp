// The XML and the JSON receipt: both are well-formed and hold the same values.
#include "receipt.hpp"

#include <memory>

#include <libxml/parser.h>
#include <nlohmann/json.hpp>

namespace
{

using fuzz::pairs;
using fuzz::receipt_input;
using fuzz::require;

// What XML holds of a text: U+FFFD in place of the characters that may not stand there.
std::string xml_text(std::string_view text)
{
    std::string seen;
    while (!text.empty()) {
        const std::string_view before = text;
        const char32_t chr = fuzz::take_char(text);
        const bool is_allowed = chr >= 0x20 ? chr != 0xFFFE && chr != 0xFFFF
                                            : chr == '\t' || chr == '\n' || chr == '\r';
        seen += is_allowed ? before.substr(0, before.size() - text.size()) : "\uFFFD";
    }
    return seen;
}

// The names and the texts of a block in their order. The custom fields, whose order and names
// differ between the forms, stand by themselves.
struct values {
    pairs own;
    pairs custom;
};

void read_elements(const xmlNode &parent, values &out, pairs &fields)
{
    require(parent.properties == nullptr, "values have no attributes");
    for (xmlNode *child = parent.children; child != nullptr; child = child->next) {
        if (child->type != XML_ELEMENT_NODE) {
            require(child->type == XML_TEXT_NODE, "a block holds elements and texts");
            continue;
        }
        const std::string name = reinterpret_cast<const char *>(child->name);
        if (xmlFirstElementChild(child) != nullptr) {
            read_elements(*child, out, name == "rcpt_custom" ? out.custom : fields);
            continue;
        }
        const std::unique_ptr<xmlChar, decltype(xmlFree)> text(xmlNodeGetContent(child), xmlFree);
        fields.emplace_back(name, reinterpret_cast<const char *>(text.get()));
    }
}

// All blocks are read as one document: making a parser costs more than a block.
std::vector<values> read_xml(const std::vector<fuzz::block> &blocks)
{
    std::string text = "<receipt>";
    for (const fuzz::block &block : blocks)
        text += block.text;
    text += "</receipt>";
    const std::unique_ptr<xmlDoc, decltype(&xmlFreeDoc)> doc(
        xmlReadMemory(text.data(), static_cast<int>(text.size()), nullptr, "UTF-8",
                      XML_PARSE_NONET | XML_PARSE_NOERROR | XML_PARSE_NOWARNING),
        xmlFreeDoc);
    require(doc != nullptr, "XML is well-formed");
    std::vector<values> all;
    for (const xmlNode *root = xmlFirstElementChild(xmlDocGetRootElement(doc.get()));
         root != nullptr; root = root->next) {
        require(root->type == XML_ELEMENT_NODE && all.size() < blocks.size() &&
                    reinterpret_cast<const char *>(root->name) == blocks[all.size()].name,
                "the element is the block");
        values &out = all.emplace_back();
        read_elements(*root, out, out.own);
    }
    require(all.size() == blocks.size(), "a block is one element");
    return all;
}

void read_members(const nlohmann::ordered_json &node, values &out, pairs &fields)
{
    for (const auto &[name, value] : node.items()) {
        if (value.is_object())
            read_members(value, out, name == "rcpt_custom" ? out.custom : fields);
        else
            fields.emplace_back(name, xml_text(value.get<std::string>()));
    }
}

values read_json(const fuzz::block &block)
{
    const auto root = nlohmann::ordered_json::parse(block.text, nullptr, false);
    require(!root.is_discarded(), "JSON is valid");
    require(root.is_array() == (block.name == "items"), "only the items are an array");
    values out;
    read_members(root, out, out.own);
    return out;
}

// An absent value is an element without text in XML and no member in JSON.
pairs without_empty(pairs all)
{
    std::erase_if(all, [](const auto &pair) { return pair.second.empty(); });
    return all;
}

pairs sorted_values(const pairs &fields)
{
    pairs only_values;
    for (const auto &[name, value] : fields)
        only_values.emplace_back("", value);
    std::ranges::sort(only_values);
    return only_values;
}

// JSON keeps fields apart whose names differ in case, and its reader here loses all but one of
// those whose names differ only where they have broken bytes or U+FFFD, which is shown for them.
void check_custom_fields(const receipt_input &from, const values &xml, const values &json)
{
    const char *custom = from.value("rcpt_custom");
    const qel::dict fields(
        Qel_hash_dict_deserialize(custom, Qel_str_len(custom), ',', ':', '"', '"', 0));
    const qel::dict any_case(Qel_hash_dict_deserialize(custom, Qel_str_len(custom), ',', ':', '"',
                                                       '"', QEL_HASH_DICT_CASECMP));
    require(xml.custom.size() == Qel_hash_dict_num_keys(any_case.get()), "XML has every field");
    for (const auto &[name, value] : fuzz::pairs_of(fields.get())) {
        const bool is_kept = fuzz::is_clean(name) && fuzz::is_clean(value) &&
                             name.find("\uFFFD") == std::string::npos;
        const auto found = std::ranges::find(json.custom, std::pair(name, value));
        require(!is_kept || found != json.custom.end(), "JSON has every field");
    }
    const std::size_t count = Qel_hash_dict_num_keys(fields.get());
    if (count == xml.custom.size() && count == json.custom.size())
        require(sorted_values(xml.custom) == sorted_values(json.custom), "both have the fields");
}

constexpr fuzz::shown_value shown_values[] = {
    {"merch_info", "merch_name"}, {"merch_info", "merch_addr1"}, {"merch_info", "merch_url"},
    {"reference", "laneid"},      {"reference", "cardtype"},     {"reference", "account"},
    {"reference", "custref"},     {"reference", "stan"},         {"disposition", "printdata"},
    {"notes", "order_notes"},
};

void check_shown(const receipt_input &from, const fuzz::block &block, const values &json)
{
    for (const auto &[name, key] : shown_values) {
        const std::string value = Qel_str_safe(from.value(key));
        if (name != block.name || value.empty() || !fuzz::is_clean(value))
            continue;
        require(std::ranges::find(json.own, std::pair(std::string(key), value)) != json.own.end(),
                "the value is held as it is");
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    Qel_rcpt_init();
    const receipt_input from(fuzz::input(data, size));
    const auto xml = fuzz::checked_receipt(from, fuzz::common_blocks, [&] {
        return Qel_rcpt_generate_xml(from.record(), from.config());
    });
    const auto json = fuzz::checked_receipt(from, fuzz::common_blocks, [&] {
        return Qel_rcpt_generate_json(from.record(), from.config());
    });
    require(xml.size() == json.size(), "both forms have the same blocks");
    const std::vector<values> all_in_xml = read_xml(xml);
    for (std::size_t i = 0; i < xml.size(); ++i) {
        require(xml[i].name == json[i].name, "both forms have the same blocks");
        const values &in_xml = all_in_xml[i];
        const values in_json = read_json(json[i]);
        require(without_empty(in_xml.own) == without_empty(in_json.own),
                "both forms hold the same values");
        check_shown(from, json[i], in_json);
        if (json[i].name == "reference")
            check_custom_fields(from, in_xml, in_json);
    }
    return 0;
}
