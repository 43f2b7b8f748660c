// XML trees.
#include "xml_node.h"

namespace
{

using formats::arena;
using formats::attribute;
using formats::attribute_index;
using formats::kept_text;

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
    if (name.empty()) {
        return "_";
    }
    std::string out;
    while (!name.empty()) {
        const std::string_view before = name;
        const std::optional<char32_t> chr = formats::take_char(name);
        if (!chr || !may_stand_in_name(*chr)) {
            out += '_';
            continue;
        }
        if (out.empty() && !may_begin_name(*chr)) {
            out += '_';
        }
        out += before.substr(0, before.size() - name.size());
    }
    return out;
}

// Names are made valid when they enter the tree and not when they are written, so that attributes
// whose names would be written alike count as one.
[[gnu::noinline]] kept_text keep_new_name(arena &memory, std::string_view name)
{
    if (!is_plain_name(name)) {
        return memory.keep(made_valid(name));
    }
    const kept_text kept = memory.keep({name.data(), name.size() + 1}); // with its terminator
    return memory.place_of_name(name.data()) = {kept.view.substr(0, name.size())};
}

kept_text keep_name(arena &memory, const char *name)
{
    const kept_text known = memory.place_of_name(name);
    return !known.view.empty() && std::strcmp(known.view.data(), name) == 0
               ? known
               : keep_new_name(memory, name);
}

// The text in at most max_len bytes of whole characters; 0 means no limit.
std::string_view limited(std::string_view text, std::size_t max_len)
{
    if (max_len == 0 || text.size() <= max_len) {
        return text;
    }
    while (max_len > 0 && qel::is_continuation(text[max_len])) {
        --max_len;
    }
    return text.substr(0, max_len);
}

Qel_xml_node *append_element(Qel_xml_node &parent, const char *name)
{
    arena &memory = *parent.memory;
    auto *const child =
        memory.create<Qel_xml_node>(&memory, keep_name(memory, name), &parent, parent.last_child);
    (parent.last_child == nullptr ? parent.first_child : parent.last_child->next) = child;
    parent.last_child = child;
    ++parent.num_children;
    return child;
}

// A tree of one node, in an arena of its own: of an element, or of a document without a name.
Qel_xml_node *create_root(const char *name)
{
    auto memory = std::make_unique_for_overwrite<arena>();
    const kept_text kept_name = name != nullptr ? keep_name(*memory, name) : kept_text();
    arena *const kept = memory.release(); // the root's from here on
    // NOLINTNEXTLINE(clang-analyzer-cplusplus.NewDeleteLeaks): destroying the root releases it
    return kept->create<Qel_xml_node>(kept, kept_name);
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
    while (index.slots[at] != nullptr && index.slots[at]->name.view != name) {
        at = (at + 1) & last;
    }
    return index.slots[at];
}

// Gives the index twice the slots, which are as many as a power of two, and at least twice as many
// as attributes.
void make_slots(Qel_xml_node &node)
{
    attribute_index &index = *node.index;
    index.num_slots *= 2;
    index.slots = node.memory->create_slots(index.num_slots);
    for (attribute *attr = node.first_attribute; attr != nullptr; attr = attr->next) {
        slot_of(index, attr->name.view) = attr;
    }
}

struct found_attribute {
    attribute *attr;
    bool is_new;
};

found_attribute find_or_add_indexed(Qel_xml_node &node, const kept_text &name)
{
    attribute_index &index = *node.index;
    attribute *&slot = slot_of(index, name.view);
    if (slot != nullptr) {
        return {slot, false};
    }
    auto *const added = node.memory->create<attribute>(name);
    slot = added;
    index.last->next = added;
    index.last = added;
    if (2 * ++index.count > index.num_slots) {
        make_slots(node);
    }
    return {added, true};
}

// The attribute of that name, which is added where there is none.
found_attribute find_or_add(Qel_xml_node &node, const kept_text &name)
{
    constexpr std::size_t few = 16; // a power of two
    if (node.index != nullptr) {
        return find_or_add_indexed(node, name);
    }
    std::size_t count = 0;
    attribute **link = &node.first_attribute;
    for (; *link != nullptr; link = &(*link)->next, ++count) {
        if ((*link)->name.view == name.view) {
            return {*link, false};
        }
    }
    attribute *const added = *link = node.memory->create<attribute>(name);
    if (++count == few) {
        node.index = node.memory->create<attribute_index>(nullptr, 2 * count, count, added);
        make_slots(node);
    }
    return {added, true};
}

} // namespace

Qel_xml_node_t *Qel_xml_create_doc(void) noexcept
{
    return create_root(nullptr);
}

Qel_xml_node_t *Qel_xml_create_element(const char *name, Qel_xml_node_t *parent) noexcept
{
    const char *const safe_name = name != nullptr ? name : "";
    return parent != nullptr ? append_element(*parent, safe_name) : create_root(safe_name);
}

Qel_xml_node_t *Qel_xml_create_element_with_text(const char *name, const char *text, size_t max_len,
                                                 Qel_xml_node_t *parent) noexcept
{
    Qel_xml_node_t *const element = Qel_xml_create_element(name, parent);
    if (text != nullptr) {
        element->text = element->memory->keep(limited(text, max_len));
        element->num_children = 1;
    }
    return element;
}

bool Qel_xml_node_insert_attribute(Qel_xml_node_t *node, const char *name, const char *value,
                                   size_t max_len, bool overwrite) noexcept
{
    const bool takes_attributes = node != nullptr && node->is_element();
    if (!takes_attributes || name == nullptr || value == nullptr) {
        return false;
    }
    arena &memory = *node->memory;
    const auto [attr, is_new] = find_or_add(*node, keep_name(memory, name));
    if (!is_new && !overwrite) {
        return false;
    }
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
    if (node == nullptr) {
        return;
    }
    if (node->parent != nullptr) {
        unlink(*node);
        return;
    }
    const std::unique_ptr<arena> doomed(node->memory); // and the node in it
}
