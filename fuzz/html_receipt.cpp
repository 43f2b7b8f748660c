// The HTML receipt, as an HTML5 parser sees it.
#include "receipt.hpp"

#include <cstddef>
#include <vector>

#include <gumbo.h>

namespace
{

using fuzz::receipt_input;
using fuzz::require;

// Texts of the record on which nothing but their own element depends, and the ids of those.
struct free_text {
    const char *key;
    std::string_view id;
};
constexpr free_text free_texts[] = {
    {"merch_name", "merch_name"},
    {"merch_addr1", "merch_addr1"},
    {"merch_addr2", "merch_addr2"},
    {"merch_addr3", "merch_addr3"},
    {"merch_phone", "merch_phone"},
    {"merch_email", "merch_email"},
    {"merch_url", "merch_url"},
    {"account", "account"},
    {"custref", "custref"},
    {"ttid", "ttid"},
    {"auth", "auth"},
    {"batch", "batch"},
    {"stan", "stan"},
    {"printdata", "printdata"},
    {"rcpt_emv_name", "name"},
    {"rcpt_emv_tvr", "tvr"},
    {"rcpt_emv_iad", "iad"},
    {"order_notes", "order_notes"},
    {"rcpt_user_notes", "user_notes"},
};

// The parser's memory, all given back at once: it asks for some ten thousand small pieces a page,
// which the sanitizer's own allocation makes dear.
class arena
{
  public:
    void *allocate(std::size_t size)
    {
        constexpr std::size_t alignment = alignof(std::max_align_t);
        used_ = (used_ + alignment - 1) / alignment * alignment;
        require(size <= memory_.size() - used_, "a page fits into the parser's memory");
        used_ += size;
        return memory_.data() + used_ - size;
    }
    void reset() { used_ = 0; }

  private:
    std::vector<char> memory_ = std::vector<char>(std::size_t{64} << 20);
    std::size_t used_ = 0;
};

// Valid until the next page is parsed.
const GumboOutput &parsed_page(const std::string &page)
{
    static arena memory;
    memory.reset();
    GumboOptions options = kGumboDefaultOptions;
    options.userdata = &memory;
    options.allocator = [](void *from, std::size_t size) {
        return static_cast<arena *>(from)->allocate(size);
    };
    options.deallocator = [](void * /*from*/, void * /*memory*/) {};
    return *gumbo_parse_with_options(&options, page.c_str(), page.size());
}

const GumboNode &child_at(const GumboNode &node, unsigned int at)
{
    return *static_cast<const GumboNode *>(node.v.element.children.data[at]);
}

// The elements of a receipt without their texts, and the texts of the elements that have an id.
struct outline {
    std::vector<std::string> elements;
    fuzz::pairs texts;
};

std::string text_of(const GumboNode &node)
{
    std::string text;
    for (unsigned int i = 0; i < node.v.element.children.length; ++i) {
        const GumboNode &child = child_at(node, i);
        if (child.type != GUMBO_NODE_ELEMENT)
            text += child.v.text.text;
    }
    return text;
}

void add_element(const GumboNode &node, std::size_t depth, outline &out)
{
    const GumboElement &element = node.v.element;
    require(element.tag == GUMBO_TAG_DIV || element.tag == GUMBO_TAG_SPAN,
            "a receipt is made of div and span");
    std::string &line = out.elements.emplace_back(depth, ' ');
    line += gumbo_normalized_tagname(element.tag);
    for (unsigned int i = 0; i < element.attributes.length; ++i) {
        const auto &attribute = *static_cast<const GumboAttribute *>(element.attributes.data[i]);
        const std::string_view name = attribute.name;
        require(name == "id" || name == "class", "elements have an id and a class");
        line.append(" ").append(attribute.value);
        if (name == "id")
            out.texts.emplace_back(attribute.value, text_of(node));
    }
    for (unsigned int i = 0; i < element.children.length; ++i) {
        const GumboNode &child = child_at(node, i);
        require(child.type == GUMBO_NODE_ELEMENT || child.type == GUMBO_NODE_TEXT ||
                    child.type == GUMBO_NODE_WHITESPACE,
                "a receipt holds elements and texts");
        if (child.type == GUMBO_NODE_ELEMENT)
            add_element(child, depth + 1, out);
    }
}

// A page with all blocks of the receipt in its body.
outline outline_of(const receipt_input &from)
{
    const auto blocks = fuzz::checked_receipt(from, fuzz::common_blocks, [&] {
        return Qel_rcpt_generate_html(from.record(), from.config());
    });
    std::string page = "<!DOCTYPE html><title>t</title><body>";
    for (const fuzz::block &block : blocks) {
        require(block.text.starts_with("<div id=\"rcpt_" + block.name + "\""),
                "the element has the block's name");
        page += block.text;
    }
    page += "</body>";
    const GumboOutput &parsed = parsed_page(page);
    require(parsed.errors.length == 0 || !fuzz::is_clean_text(page), "the blocks are valid");

    outline out;
    const GumboNode &body = child_at(*parsed.root, 1);
    require(body.v.element.children.length == blocks.size(), "a block is one element");
    for (unsigned int i = 0; i < blocks.size(); ++i)
        add_element(child_at(body, i), 0, out);
    return out;
}

std::size_t count_of_fields(const receipt_input &from)
{
    const char *custom = from.value("rcpt_custom");
    const qel::dict fields(
        Qel_hash_dict_deserialize(custom, Qel_str_len(custom), ',', ':', '"', '"', 0));
    return Qel_hash_dict_num_keys(fields.get());
}

// Takes out of the record what markup is made of; false if there was none.
bool replace_markup(const receipt_input &from)
{
    bool has_markup = false;
    for (auto [key, value] : fuzz::pairs_of(from.record())) {
        if (value.find_first_of("<>&") == std::string::npos)
            continue;
        has_markup = true;
        std::ranges::replace_if(
            value, [](char chr) { return chr == '<' || chr == '>' || chr == '&'; }, '_');
        Qel_hash_dict_insert(from.record(), key.c_str(), value.c_str());
    }
    return has_markup;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    Qel_rcpt_init();
    const receipt_input from(fuzz::input(data, size));
    outline shown = outline_of(from);
    for (const auto &[key, id] : free_texts) {
        const std::string value = Qel_str_safe(from.value(key));
        for (const auto &[shown_id, text] : shown.texts)
            require(shown_id != id || value.empty() || !fuzz::is_clean(value) || text == value,
                    "the text is shown as it is");
    }
    // What markup is made of stands for itself in a title, an item or a custom field just as well.
    // The fields are sorted by their names, and those whose names are alike then are one.
    const std::size_t fields = count_of_fields(from);
    if (replace_markup(from) && count_of_fields(from) == fields) {
        outline plain = outline_of(from);
        std::ranges::sort(shown.elements);
        std::ranges::sort(plain.elements);
        require(plain.elements == shown.elements, "no text becomes markup");
    }
    return 0;
}
