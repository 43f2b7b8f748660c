// XML trees and their writing.
#include "formats_int.h"

#include <array>
#include <cstdint>
#include <cstring>
#include <type_traits>

namespace
{

enum class node_type { document, element, text };

// The attributes of an element, in their order.
struct attribute {
    std::string_view name;
    std::string_view value;
    attribute *next = nullptr;
};

// Holds the nodes of one tree with their texts. They go when the tree does, all at once: the
// nodes link to each other and own nothing.
class arena
{
  public:
    arena() = default;
    arena(const arena &) = delete;
    arena &operator=(const arena &) = delete;

    template <typename T>
    T *create(const T &value)
    {
        static_assert(std::is_trivially_destructible_v<T>);
        // NOLINTNEXTLINE(cppcoreguidelines-owning-memory): the arena owns the place
        return new (allocate<alignof(T)>(sizeof(T))) T(value);
    }

    std::string_view keep(std::string_view text)
    {
        std::byte *const kept = allocate<1>(text.size());
        if (!text.empty()) {
            std::memcpy(kept, text.data(), text.size());
        }
        return {reinterpret_cast<const char *>(kept), text.size()};
    }

  private:
    template <std::size_t Alignment>
    std::byte *allocate(std::size_t size)
    {
        const std::size_t misaligned = reinterpret_cast<std::uintptr_t>(free_) % Alignment;
        const std::size_t padding = misaligned == 0 ? 0 : Alignment - misaligned;
        if (padding + size > left_) {
            return add_chunk(size);
        }
        std::byte *const allocated = free_ + padding;
        free_ = allocated + size;
        left_ -= padding + size;
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

    alignas(std::max_align_t) std::array<std::byte, first_chunk> first_;
    std::vector<std::unique_ptr<std::byte[]>> chunks_; // beside the first
    std::size_t next_chunk_ = first_chunk;
    std::size_t left_ = first_chunk;
    std::byte *free_ = first_.data();
};

} // namespace

struct Qel_xml_node {
    node_type type;
    std::string_view text; // of an element, its name
    arena *memory;
    Qel_xml_node *parent = nullptr;
    Qel_xml_node *previous = nullptr; // the siblings
    Qel_xml_node *next = nullptr;
    Qel_xml_node *first_child = nullptr;
    Qel_xml_node *last_child = nullptr;
    std::size_t num_children = 0;
    attribute *first_attribute = nullptr;
    attribute *last_attribute = nullptr;
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

// By byte, whether it is a letter or digit of ASCII, or '_'.
constexpr std::array<bool, 256> word_bytes = [] {
    std::array<bool, 256> word{};
    std::fill(word.begin() + '0', word.begin() + '9' + 1, true);
    std::fill(word.begin() + 'A', word.begin() + 'Z' + 1, true);
    std::fill(word.begin() + 'a', word.begin() + 'z' + 1, true);
    word['_'] = true;
    return word;
}();

// Whether the name certainly stands in the tree as it is. Most do, and this is quick to tell.
bool is_plain_name(std::string_view name)
{
    const auto is_word_byte = [](char chr) { return word_bytes[static_cast<unsigned char>(chr)]; };
    const auto is_digit = [](char chr) { return chr >= '0' && chr <= '9'; };
    return !name.empty() && !is_digit(name.front()) &&
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
std::string_view keep_name(arena &memory, std::string_view name)
{
    return is_plain_name(name) ? memory.keep(name) : memory.keep(made_valid(name));
}

bool is_continuation(char chr)
{
    return (static_cast<unsigned char>(chr) & 0xC0) == 0x80;
}

// The text in at most max_len bytes of whole characters; 0 means no limit.
std::string_view limited(std::string_view text, std::size_t max_len)
{
    if (max_len == 0 || text.size() <= max_len) {
        return text;
    }
    while (max_len > 0 && is_continuation(text[max_len])) {
        --max_len;
    }
    return text.substr(0, max_len);
}

Qel_xml_node *append(Qel_xml_node &parent, const Qel_xml_node &node)
{
    Qel_xml_node *const child = parent.memory->create(node);
    child->parent = &parent;
    child->previous = parent.last_child;
    (parent.last_child == nullptr ? parent.first_child : parent.last_child->next) = child;
    parent.last_child = child;
    ++parent.num_children;
    return child;
}

// A tree of one node, in an arena of its own.
Qel_xml_node *create_root(node_type type, const char *name)
{
    auto memory = std::make_unique_for_overwrite<arena>();
    const std::string_view text =
        type == node_type::element ? keep_name(*memory, qel::view(name)) : std::string_view();
    arena &kept = *memory.release(); // the root's from here on
    // NOLINTNEXTLINE(clang-analyzer-cplusplus.NewDeleteLeaks): destroying the root releases it
    return kept.create(Qel_xml_node{type, text, &kept});
}

void unlink(Qel_xml_node &node)
{
    Qel_xml_node &parent = *node.parent;
    (node.previous == nullptr ? parent.first_child : node.previous->next) = node.next;
    (node.next == nullptr ? parent.last_child : node.next->previous) = node.previous;
    --parent.num_children;
}

attribute *find_attribute(const Qel_xml_node &node, std::string_view name)
{
    attribute *found = node.first_attribute;
    while (found != nullptr && found->name != name) {
        found = found->next;
    }
    return found;
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
        if (node.type == node_type::document) {
            return;
        }
        if (node.type == node_type::text) {
            append_encoded(out_, node.text, place::content);
            return;
        }
        begin_line();
        begin_element(node);
    }

    void begin_element(const Qel_xml_node &element)
    {
        out_.append('<').append(element.text);
        for (const attribute *attr = element.first_attribute; attr != nullptr; attr = attr->next) {
            out_.append(' ').append(attr->name).append("=\"");
            append_encoded(out_, attr->value, place::attribute);
            out_.append('"');
        }
        if (element.first_child == nullptr) {
            out_.append("/>");
            return;
        }
        out_.append('>');
        ++depth_;
        // White space beside a text would become part of it.
        if (on_lines_ && element.first_child->type == node_type::text) {
            on_lines_ = false;
            on_one_line_ = &element;
        }
    }

    // Of a node with children.
    void end_node(const Qel_xml_node &node)
    {
        if (node.type != node_type::element) {
            return;
        }
        --depth_;
        begin_line();
        if (on_one_line_ == &node) {
            on_one_line_ = nullptr;
            on_lines_ = true;
        }
        out_.append("</").append(node.text).append('>');
    }

    void begin_line()
    {
        if (on_lines_ && !out_.empty()) {
            out_.append('\n').append(2 * depth_, ' ');
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
    return create_root(node_type::document, "");
}

Qel_xml_node_t *Qel_xml_create_element(const char *name, Qel_xml_node_t *parent) noexcept
{
    if (parent == nullptr) {
        return create_root(node_type::element, name);
    }
    arena &memory = *parent->memory;
    return append(*parent, {node_type::element, keep_name(memory, qel::view(name)), &memory});
}

Qel_xml_node_t *Qel_xml_create_element_with_text(const char *name, const char *text, size_t max_len,
                                                 Qel_xml_node_t *parent) noexcept
{
    Qel_xml_node_t *const element = Qel_xml_create_element(name, parent);
    if (text != nullptr) {
        arena &memory = *element->memory;
        append(*element, {node_type::text, memory.keep(limited(text, max_len)), &memory});
    }
    return element;
}

bool Qel_xml_node_insert_attribute(Qel_xml_node_t *node, const char *name, const char *value,
                                   size_t max_len, bool overwrite) noexcept
{
    const bool takes_attributes = node != nullptr && node->type == node_type::element;
    if (!takes_attributes || name == nullptr || value == nullptr) {
        return false;
    }
    arena &memory = *node->memory;
    const std::string_view kept_name = keep_name(memory, name);
    attribute *const present = find_attribute(*node, kept_name);
    if (present != nullptr && !overwrite) {
        return false;
    }
    const std::string_view kept = memory.keep(limited(value, max_len));
    if (present != nullptr) {
        present->value = kept;
        return true;
    }
    attribute *const added = memory.create(attribute{kept_name, kept});
    (node->last_attribute == nullptr ? node->first_attribute : node->last_attribute->next) = added;
    node->last_attribute = added;
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
