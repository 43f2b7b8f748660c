// XML trees and their writing.
#include "formats_int.h"
#include "key_hash.h"
#include "qelstdlib_int.h"

#include <array>
#include <cstdint>
#include <cstring>
#include <type_traits>

namespace
{

// A text in an arena, where whole stretches of it may be read: what is after it is filled up.
struct kept_text {
    std::string_view view;
};

// The attributes of an element, in their order.
struct attribute {
    kept_text name;
    kept_text value{};
    attribute *next = nullptr;
};

// Where the attributes of an element with more than a few are found by the hashes of their names:
// each stands in the slot that its hash names or in one of the next, with no empty slot between.
struct attribute_index {
    attribute **slots;
    std::size_t num_slots;
    std::size_t count;
    attribute *last;
};

// Holds the nodes of one tree with their texts. They go when the tree does, all at once: the
// nodes link to each other and own nothing.
class arena
{
  public:
    arena() = default;
    arena(const arena &) = delete;
    arena &operator=(const arena &) = delete;

    template <typename T, typename... Fields>
    T *create(Fields... fields)
    {
        static_assert(std::is_trivially_destructible_v<T>);
        static_assert(alignof(T) <= formats::stretch_len);
        // NOLINTNEXTLINE(cppcoreguidelines-owning-memory): the arena owns the place
        return new (allocate(sizeof(T))) T{fields...};
    }

    attribute **create_slots(std::size_t count)
    {
        std::byte *const slots = allocate(count * sizeof(attribute *));
        return new (slots) attribute *[count] {};
    }

    // A copy of the text, filled up with spaces.
    kept_text keep(std::string_view text)
    {
        if (text.empty()) {
            return {};
        }
        std::byte *const kept = allocate(text.size());
        std::memset(free_ - formats::stretch_len, ' ', formats::stretch_len);
        std::memcpy(kept, text.data(), text.size());
        return {{reinterpret_cast<const char *>(kept), text.size()}};
    }

    // Where a valid name stands once it is kept: most that recur have a place of their own.
    kept_text &place_of_name(const char *name)
    {
        return names_[static_cast<unsigned char>(*name) % names_.size()];
    }

  private:
    // In whole stretches, so that what is allocated next is aligned.
    std::byte *allocate(std::size_t size)
    {
        size = (size + formats::stretch_len - 1) / formats::stretch_len * formats::stretch_len;
        if (size > left_) {
            return add_chunk(size);
        }
        std::byte *const allocated = free_;
        free_ += size;
        left_ -= size;
        return allocated;
    }

    // Each chunk is twice as large as the one before, so that many nodes take few of them.
    std::byte *add_chunk(std::size_t size)
    {
        next_chunk_ *= 2;
        left_ = std::max(size, next_chunk_) - size;
        std::byte *const chunk =
            chunks_.emplace_back(std::make_unique_for_overwrite<std::byte[]>(size + left_)).get();
        free_ = chunk + size;
        return chunk;
    }

    static constexpr std::size_t first_chunk = 4000;
    static_assert(first_chunk % formats::stretch_len == 0);

    alignas(formats::stretch_len) std::array<std::byte, first_chunk> first_;
    std::array<kept_text, 32> names_{};
    std::vector<std::unique_ptr<std::byte[]>> chunks_; // beside the first
    std::size_t next_chunk_ = first_chunk;
    std::size_t left_ = first_chunk;
    std::byte *free_ = first_.data();
};

} // namespace

struct Qel_xml_node {
    [[nodiscard]] bool is_element() const { return !name.view.empty(); }

    arena *memory;
    kept_text name; // of an element; a document has none
    Qel_xml_node *parent = nullptr;
    Qel_xml_node *previous = nullptr; // the siblings
    Qel_xml_node *next = nullptr;
    Qel_xml_node *first_child = nullptr;
    Qel_xml_node *last_child = nullptr;
    std::size_t num_children = 0; // the text among them
    attribute *first_attribute = nullptr;
    attribute_index *index = nullptr;
    std::optional<kept_text> text = std::nullopt; // the first child
};

namespace
{

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

enum class place { content, attribute };

// What is written for an ASCII character in place of it; empty when it stands for itself.
constexpr std::string_view ascii_entity(char chr, place where)
{
    switch (chr) {
    case '&':
        return "&amp;";
    case '<':
        return "&lt;";
    case '>':
        return "&gt;";
    case '"':
        return "&quot;";
    case '\'':
        return "&apos;";
    case '\r':
        return "&#13;"; // a parser would make a bare one a line feed
    case '\t':
        return where == place::attribute ? "&#9;" : ""; // and these a space
    case '\n':
        return where == place::attribute ? "&#10;" : "";
    default:
        return static_cast<unsigned char>(chr) < ' ' ? formats::replacement_utf8 : "";
    }
}

bool is_ascii(char chr)
{
    return static_cast<unsigned char>(chr) < 0x80;
}

// By byte, whether it stands for itself.
using plain_bytes = std::array<bool, 256>;

constexpr plain_bytes bytes_plain_in(place where)
{
    plain_bytes plain{};
    for (int byte = 0; byte < 0x80; ++byte) {
        plain[static_cast<std::size_t>(byte)] =
            ascii_entity(static_cast<char>(byte), where).empty();
    }
    return plain;
}

constexpr plain_bytes plain_in_content = bytes_plain_in(place::content);
constexpr plain_bytes plain_in_attribute = bytes_plain_in(place::attribute);

void append_non_ascii(qel::text_builder &out, std::string_view &text)
{
    const std::string_view before = text;
    const std::optional<char32_t> chr = formats::take_char(text);
    if (!chr || *chr == 0xFFFE || *chr == 0xFFFF) {
        out.append(formats::replacement_utf8);
    } else {
        out.append(before.substr(0, before.size() - text.size()));
    }
}

// What may have to be encoded in some place.
formats::stretch find_special(formats::stretch bytes)
{
    return formats::below_space(bytes) | (bytes == '&') | (bytes == '<') | (bytes == '>') |
           (bytes == '"') | (bytes == '\'');
}

void append_encoded(qel::text_builder &out, std::string_view text, place where)
{
    const plain_bytes &plain = where == place::content ? plain_in_content : plain_in_attribute;
    const auto is_plain = [&](char chr) { return plain[static_cast<unsigned char>(chr)]; };
    formats::append_plain(out, text, is_plain);
    while (!text.empty()) {
        if (is_ascii(text.front())) {
            out.append(ascii_entity(text.front(), where));
            text.remove_prefix(1);
        } else {
            append_non_ascii(out, text);
        }
        formats::append_plain(out, text, is_plain);
    }
}

// Room to put a text, of which whole stretches are copied.
std::size_t room_for(const kept_text &text)
{
    return text.view.size() + formats::stretch_len;
}

// Copies the text and gives the end of the copy.
char *put(char *place, const kept_text &text)
{
    for (std::size_t at = 0; at < text.view.size(); at += formats::stretch_len) {
        std::memcpy(place + at, text.view.data() + at, formats::stretch_len);
    }
    return place + text.view.size();
}

// As put; absent when something in the text may have to be encoded.
char *put_plain(char *place, const kept_text &text)
{
    for (std::size_t at = 0; at < text.view.size(); at += formats::stretch_len) {
        formats::stretch bytes;
        std::memcpy(&bytes, text.view.data() + at, sizeof bytes);
        if (formats::has_any(find_special(bytes))) {
            return nullptr;
        }
        std::memcpy(place + at, &bytes, sizeof bytes);
    }
    return place + text.view.size();
}

// Walks the tree along its links: one that was built may be deeper than the program's stack allows.
class writer
{
  public:
    explicit writer(bool on_lines) : on_lines_(on_lines) {}

    qel::text_builder &write(const Qel_xml_node &root)
    {
        const Qel_xml_node *node = &root;
        while (node != nullptr) {
            begin_node(*node);
            if (node->first_child != nullptr) {
                node = node->first_child;
                continue;
            }
            end_node(*node);
            while (node != &root && node->next == nullptr) {
                node = node->parent;
                end_node(*node);
            }
            node = node == &root ? nullptr : node->next;
        }
        return out_;
    }

  private:
    void begin_node(const Qel_xml_node &node)
    {
        if (!node.is_element()) {
            return;
        }
        append_tag("<", node.name);
        for (const attribute *attr = node.first_attribute; attr != nullptr; attr = attr->next) {
            append_attribute(*attr);
        }
        if (node.num_children == 0) {
            out_.append("/>");
            return;
        }
        out_.append('>');
        ++depth_;
        if (node.text) {
            begin_text(node);
        }
    }

    // All of it but attributes and the closing bracket.
    void append_tag(std::string_view bracket, const kept_text &name)
    {
        if (on_lines_ && !out_.empty()) {
            formats::begin_line(out_, depth_);
        }
        char *const begin = out_.reserve(bracket.size() + room_for(name));
        out_.extend_to(put(begin + bracket.copy(begin, bracket.size()), name));
    }

    void append_attribute(const attribute &attr)
    {
        char *const begin = out_.reserve(room_for(attr.name) + room_for(attr.value));
        char *end = begin;
        *end++ = ' ';
        end = put(end, attr.name);
        *end++ = '=';
        *end++ = '"';
        if (char *const value_end = put_plain(end, attr.value)) {
            *value_end = '"';
            out_.extend_to(value_end + 1);
            return;
        }
        out_.extend_to(end);
        append_encoded(out_, attr.value.view, place::attribute);
        out_.append('"');
    }

    void begin_text(const Qel_xml_node &element)
    {
        append_text(*element.text);
        // White space beside a text would become part of it.
        if (on_lines_) {
            on_lines_ = false;
            on_one_line_ = &element;
        }
    }

    void append_text(const kept_text &text)
    {
        if (const char *const end = put_plain(out_.reserve(room_for(text)), text)) {
            out_.extend_to(end);
        } else {
            append_encoded(out_, text.view, place::content);
        }
    }

    void end_node(const Qel_xml_node &node)
    {
        if (!node.is_element() || node.num_children == 0) {
            return;
        }
        --depth_;
        append_tag("</", node.name);
        out_.append('>');
        if (on_one_line_ == &node) {
            on_one_line_ = nullptr;
            on_lines_ = true;
        }
    }

    qel::text_builder out_{1023};
    std::size_t depth_ = 0; // of open elements
    bool on_lines_;
    const Qel_xml_node *on_one_line_ =
        nullptr; // the open element for which on_lines_ was turned off
};

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

char *Qel_xml_write(const Qel_xml_node_t *node, uint32_t flags, size_t *len) noexcept
{
    if (node == nullptr) {
        if (len != nullptr) {
            *len = 0;
        }
        return nullptr;
    }
    writer out((flags & QEL_XML_WRITER_PRETTYPRINT_SPACE) != 0);
    return formats::finish(out.write(*node), len);
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
