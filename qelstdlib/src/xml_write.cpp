// Writing XML trees.
#include "xml_node.h"

namespace
{

using formats::attribute;
using formats::kept_text;

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
