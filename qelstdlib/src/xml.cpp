// XML trees and their writing.
#include "formats_int.h"

#include <array>

namespace
{

enum class node_type { document, element, text };

struct attribute {
    std::string name;
    std::string value;
};

} // namespace

struct Qel_xml_node {
    Qel_xml_node(node_type kind, std::string node_text) : type(kind), text(std::move(node_text)) {}
    ~Qel_xml_node() { formats::release_children(children); }
    Qel_xml_node(const Qel_xml_node &) = delete;
    Qel_xml_node &operator=(const Qel_xml_node &) = delete;

    node_type type;
    std::string text; // of an element, its name
    std::vector<attribute> attributes;
    Qel_xml_node *parent = nullptr;
    std::vector<std::unique_ptr<Qel_xml_node>> children;
};

namespace
{

using node_ptr = std::unique_ptr<Qel_xml_node>;

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

// Names are made valid when they enter the tree and not when they are written, so that attributes
// whose names would be written alike count as one.
std::string valid_name(std::string_view name)
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

node_ptr new_element(const char *name)
{
    return std::make_unique<Qel_xml_node>(node_type::element, valid_name(qel::view(name)));
}

Qel_xml_node *append(node_ptr child, Qel_xml_node &parent)
{
    child->parent = &parent;
    return parent.children.emplace_back(std::move(child)).get();
}

// The node in its place; without a parent it is the caller's.
Qel_xml_node *hand_out(node_ptr node, Qel_xml_node *parent)
{
    return parent != nullptr ? append(std::move(node), *parent) : node.release();
}

enum class place { content, attribute };

// What is written for an ASCII character in place of it; empty when it stands for itself.
std::string_view ascii_entity(char chr, place where)
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

void append_non_ascii(std::string &out, std::string_view &text)
{
    const std::string_view before = text;
    const std::optional<char32_t> chr = formats::take_char(text);
    if (!chr || *chr == 0xFFFE || *chr == 0xFFFF) {
        out += formats::replacement_utf8;
    } else {
        out += before.substr(0, before.size() - text.size());
    }
}

void append_encoded(std::string &out, std::string_view text, place where)
{
    const auto is_plain = [where](char chr) {
        return is_ascii(chr) && ascii_entity(chr, where).empty();
    };
    formats::append_plain(out, text, is_plain);
    while (!text.empty()) {
        if (is_ascii(text.front())) {
            out += ascii_entity(text.front(), where);
            text.remove_prefix(1);
        } else {
            append_non_ascii(out, text);
        }
        formats::append_plain(out, text, is_plain);
    }
}

// Walks the tree with a stack of its own: a tree that was built may be deeper than the program's
// stack allows.
class writer
{
  public:
    explicit writer(bool on_lines) : on_lines_(on_lines) { out_.reserve(1024); }

    const std::string &write(const Qel_xml_node &root)
    {
        begin_node(root, on_lines_);
        while (!open_.empty()) {
            step();
        }
        return out_;
    }

  private:
    struct level {
        const Qel_xml_node *node;
        std::size_t next; // the child to write next
        bool on_lines;    // whether each child goes on a line of its own
    };

    void step()
    {
        level &top = open_.back();
        if (top.next == top.node->children.size()) {
            end_node();
            return;
        }
        if (top.on_lines) {
            begin_line();
        }
        begin_node(*top.node->children[top.next++], top.on_lines);
    }

    void begin_node(const Qel_xml_node &node, bool on_lines)
    {
        switch (node.type) {
        case node_type::document:
            open_.push_back({&node, 0, on_lines});
            return;
        case node_type::element:
            begin_element(node, on_lines);
            return;
        case node_type::text:
            append_encoded(out_, node.text, place::content);
        }
    }

    void begin_element(const Qel_xml_node &element, bool on_lines)
    {
        out_ += '<';
        out_ += element.text;
        for (const attribute &attr : element.attributes) {
            out_ += ' ';
            out_ += attr.name;
            out_ += "=\"";
            append_encoded(out_, attr.value, place::attribute);
            out_ += '"';
        }
        if (element.children.empty()) {
            out_ += "/>";
            return;
        }
        out_ += '>';
        // White space beside a text would become part of it.
        const bool begins_with_text = element.children.front()->type == node_type::text;
        open_.push_back({&element, 0, on_lines && !begins_with_text});
        ++depth_;
    }

    void end_node()
    {
        const level ended = open_.back();
        open_.pop_back();
        if (ended.node->type != node_type::element) {
            return;
        }
        --depth_;
        if (ended.on_lines) {
            begin_line();
        }
        out_ += "</";
        out_ += ended.node->text;
        out_ += '>';
    }

    void begin_line()
    {
        if (!out_.empty()) {
            out_ += '\n';
            out_.append(2 * depth_, ' ');
        }
    }

    std::string out_;
    std::vector<level> open_;
    std::size_t depth_ = 0; // of open elements
    bool on_lines_;
};

} // namespace

Qel_xml_node_t *Qel_xml_create_doc(void) noexcept
{
    return std::make_unique<Qel_xml_node>(node_type::document, "").release();
}

Qel_xml_node_t *Qel_xml_create_element(const char *name, Qel_xml_node_t *parent) noexcept
{
    return hand_out(new_element(name), parent);
}

Qel_xml_node_t *Qel_xml_create_element_with_text(const char *name, const char *text, size_t max_len,
                                                 Qel_xml_node_t *parent) noexcept
{
    node_ptr element = new_element(name);
    if (text != nullptr) {
        std::string kept(limited(text, max_len));
        append(std::make_unique<Qel_xml_node>(node_type::text, std::move(kept)), *element);
    }
    return hand_out(std::move(element), parent);
}

bool Qel_xml_node_insert_attribute(Qel_xml_node_t *node, const char *name, const char *value,
                                   size_t max_len, bool overwrite) noexcept
{
    const bool takes_attributes = node != nullptr && node->type == node_type::element;
    if (!takes_attributes || name == nullptr || value == nullptr) {
        return false;
    }
    std::string written_name = valid_name(name);
    std::string kept(limited(value, max_len));
    const auto present =
        std::find_if(node->attributes.begin(), node->attributes.end(),
                     [&](const attribute &attr) { return attr.name == written_name; });
    if (present == node->attributes.end()) {
        node->attributes.push_back({std::move(written_name), std::move(kept)});
        return true;
    }
    if (overwrite) {
        present->value = std::move(kept);
    }
    return overwrite;
}

size_t Qel_xml_node_num_children(const Qel_xml_node_t *node) noexcept
{
    return node != nullptr ? node->children.size() : 0;
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
    return formats::new_text(out.write(*node), len);
}

void Qel_xml_node_destroy(Qel_xml_node_t *node) noexcept
{
    if (node == nullptr) {
        return;
    }
    const node_ptr doomed = node->parent != nullptr ? formats::take_out(*node) : node_ptr(node);
}
