// XML trees.
#include "xml_node.h"

namespace
{

using formats::arena;
using formats::attribute;
using formats::attribute_index;

struct char_range {
    char32_t first;
    char32_t last;
};

// A colon is left out: it would ask for the declaration of a namespace.
constexpr std::array<char_range, 15> name_start_ranges{{{'A', 'Z'},
                                                        {'_', '_'},
                                                        {'a', 'z'},
                                                        {0xC0, 0xD6},
                                                        {0xD8, 0xF6},
                                                        {0xF8, 0x2FF},
                                                        {0x370, 0x37D},
                                                        {0x37F, 0x1FFF},
                                                        {0x200C, 0x200D},
                                                        {0x2070, 0x218F},
                                                        {0x2C00, 0x2FEF},
                                                        {0x3001, 0xD7FF},
                                                        {0xF900, 0xFDCF},
                                                        {0xFDF0, 0xFFFD},
                                                        {0x10000, 0xEFFFF}}};

// What a name may hold in addition, but not begin with.
constexpr std::array<char_range, 5> name_inner_ranges{
    {{'-', '.'}, {'0', '9'}, {0xB7, 0xB7}, {0x300, 0x36F}, {0x203F, 0x2040}}};

template <std::size_t Size>
bool in_ranges(char32_t chr, const std::array<char_range, Size> &ranges)
{
    return std::any_of(ranges.begin(), ranges.end(), [chr](const char_range &range) {
        return chr >= range.first && chr <= range.last;
    });
}

bool may_begin_name(char32_t chr)
{
    return in_ranges(chr, name_start_ranges);
}

bool may_stand_in_name(char32_t chr)
{
    return may_begin_name(chr) || in_ranges(chr, name_inner_ranges);
}

// Whether the name certainly stands in the tree as it is. Most do, and this is quick to tell.
bool is_plain_name(std::string_view name)
{
    const auto is_word_byte = [](char chr) {
        const char lower = static_cast<char>(chr | 0x20);
        return (lower >= 'a' && lower <= 'z') || qel::is_digit(chr) || chr == '_';
    };
    return !name.empty() && !qel::is_digit(name.front()) &&
           std::all_of(name.begin(), name.end(), is_word_byte);
}

std::string made_valid(std::string_view name)
{
    if (name.empty())
        return "_";
    std::string out;
    while (!name.empty()) {
        const std::string_view before = name;
        const std::optional<char32_t> chr = formats::take_char(name);
        if (!chr || !may_stand_in_name(*chr)) {
            out += '_';
            continue;
        }
        if (out.empty() && !may_begin_name(*chr))
            out += '_';
        out += before.substr(0, before.size() - name.size());
    }
    return out;
}

// Names are made valid when they enter the tree and not when they are written, so that attributes
// whose names would be written alike count as one.
std::string_view keep_name(arena &memory, std::string_view name)
{
    return memory.keep(is_plain_name(name) ? name : made_valid(name));
}

// The text in at most max_len bytes of whole characters; 0 means no limit.
std::string_view limited(std::string_view text, std::size_t max_len)
{
    if (max_len == 0 || text.size() <= max_len)
        return text;
    while (max_len > 0 && qel::is_continuation(text[max_len]))
        --max_len;
    return text.substr(0, max_len);
}

// A tree has its memory from its root, with which it goes.
arena &memory_below(const Qel_xml_node *parent)
{
    return parent != nullptr ? *parent->memory : *std::make_unique_for_overwrite<arena>().release();
}

// The parent's last child, or a root.
Qel_xml_node *create_node(arena &memory, std::string_view tag, std::size_t name_len,
                          Qel_xml_node *parent)
{
    if (parent == nullptr)
        return memory.create<Qel_xml_node>(&memory, tag, name_len);
    auto *const child =
        memory.create<Qel_xml_node>(&memory, tag, name_len, parent, parent->last_child);
    (parent->last_child == nullptr ? parent->first_child : parent->last_child->next) = child;
    parent->last_child = child;
    ++parent->num_children;
    return child;
}

Qel_xml_node *with_text(Qel_xml_node *element, const char *text, std::size_t max_len)
{
    if (text != nullptr) {
        element->text = element->memory->keep(limited(text, max_len));
        element->num_children = 1;
    }
    return element;
}

void unlink(Qel_xml_node &node)
{
    Qel_xml_node &parent = *node.parent;
    (node.previous == nullptr ? parent.first_child : node.previous->next) = node.next;
    (node.next == nullptr ? parent.last_child : node.next->previous) = node.previous;
    --parent.num_children;
}

// The slot with the attribute, or the empty one where it would be put.
attribute *&slot_of(const attribute_index &index, std::string_view name)
{
    const std::size_t last = index.num_slots - 1;
    auto at = static_cast<std::size_t>(qel::own_hasher()(name)) & last;
    while (index.slots[at] != nullptr && index.slots[at]->name != name)
        at = (at + 1) & last;
    return index.slots[at];
}

// Gives the index twice the slots, which are as many as a power of two, and at least twice as many
// as attributes.
void make_slots(Qel_xml_node &node)
{
    attribute_index &index = *node.index;
    index.num_slots *= 2;
    index.slots = node.memory->create_slots(index.num_slots);
    for (attribute *attr = node.first_attribute; attr != nullptr; attr = attr->next)
        slot_of(index, attr->name) = attr;
}

struct found_attribute {
    attribute *attr;
    bool is_new;
};

found_attribute find_or_add_indexed(Qel_xml_node &node, std::string_view name)
{
    attribute_index &index = *node.index;
    attribute *&slot = slot_of(index, name);
    if (slot != nullptr)
        return {slot, false};
    auto *const added = node.memory->create<attribute>(name);
    slot = added;
    index.last->next = added;
    index.last = added;
    if (2 * ++index.count > index.num_slots)
        make_slots(node);
    return {added, true};
}

// The attribute of that name, which is added where there is none.
found_attribute find_or_add(Qel_xml_node &node, std::string_view name)
{
    constexpr std::size_t few = 16; // a power of two
    if (node.index != nullptr)
        return find_or_add_indexed(node, name);
    std::size_t count = 0;
    attribute **link = &node.first_attribute;
    for (; *link != nullptr; link = &(*link)->next, ++count) {
        if ((*link)->name == name)
            return {*link, false};
    }
    attribute *const added = *link = node.memory->create<attribute>(name);
    if (++count == few) {
        node.index = node.memory->create<attribute_index>(nullptr, 2 * count, count, added);
        make_slots(node);
    }
    return {added, true};
}

// Makes the attributes that came with the element's tag like any other. In the tag each is a blank,
// the name, an equals sign and the value in double quotes.
void take_tag_apart(Qel_xml_node &node)
{
    constexpr std::string_view before_value = "=\"";
    std::string_view rest = node.tag.substr(node.name_len);
    node.tag = node.name();
    for (;;) {
        const std::size_t name_end = rest.find(before_value);
        if (name_end == std::string_view::npos)
            return;
        const std::string_view name = rest.substr(1, name_end - 1);
        rest.remove_prefix(name_end + before_value.size());
        const std::string_view value = rest.substr(0, rest.find('"'));
        find_or_add(node, name).attr->value = value;
        rest.remove_prefix(std::min(value.size() + 1, rest.size()));
    }
}

} // namespace

Qel_xml_node_t *Qel_xml_create_doc(void) noexcept
{
    return create_node(memory_below(nullptr), {}, 0, nullptr);
}

Qel_xml_node_t *Qel_xml_create_element(const char *name, Qel_xml_node_t *parent) noexcept
{
    arena &memory = memory_below(parent);
    const std::string_view kept = keep_name(memory, qel::view(name));
    return create_node(memory, kept, kept.size(), parent);
}

Qel_xml_node_t *Qel_xml_create_element_with_text(const char *name, const char *text, size_t max_len,
                                                 Qel_xml_node_t *parent) noexcept
{
    return with_text(Qel_xml_create_element(name, parent), text, max_len);
}

Qel_xml_node_t *Qel_xml_create_element_from_tag(const char *tag, const char *text,
                                                Qel_xml_node_t *parent) noexcept
{
    const std::string_view safe_tag = Qel_str_isempty(tag) ? "_" : tag;
    const std::size_t name_len = std::min(safe_tag.find(' '), safe_tag.size());
    return with_text(create_node(memory_below(parent), safe_tag, name_len, parent), text, 0);
}

bool Qel_xml_node_insert_attribute(Qel_xml_node_t *node, const char *name, const char *value,
                                   size_t max_len, bool overwrite) noexcept
{
    const bool takes_attributes = node != nullptr && node->is_element();
    if (!takes_attributes || name == nullptr || value == nullptr)
        return false;
    take_tag_apart(*node);
    arena &memory = *node->memory;
    const auto [attr, is_new] = find_or_add(*node, keep_name(memory, name));
    if (!is_new && !overwrite)
        return false;
    attr->value = memory.keep(limited(value, max_len));
    return true;
}

size_t Qel_xml_node_num_children(const Qel_xml_node_t *node) noexcept
{
    return node != nullptr ? node->num_children : 0;
}

// What hangs below a tree keeps its memory until the tree goes.
void Qel_xml_node_destroy(Qel_xml_node_t *node) noexcept
{
    if (node == nullptr)
        return;
    if (node->parent != nullptr) {
        unlink(*node);
        return;
    }
    const std::unique_ptr<arena> doomed(node->memory); // and the node in it
}
