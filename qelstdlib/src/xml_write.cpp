// Writing XML trees.
#include "xml_node.h"

namespace
{

using formats::attribute;

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
    if (!chr || *chr == 0xFFFE || *chr == 0xFFFF)
        out.append(formats::replacement_utf8);
    else
        out.append(before.substr(0, before.size() - text.size()));
}

void append_encoded(qel::text_builder &out, std::string_view text, place where)
{
    const plain_bytes &plain = where == place::content ? plain_in_content : plain_in_attribute;
    const auto is_plain = [&](char chr) { return plain[static_cast<unsigned char>(chr)]; };
    for (;;) {
        formats::append_plain(out, text, is_plain);
        if (text.empty())
            return;
        if (is_ascii(text.front())) {
            out.append(ascii_entity(text.front(), where));
            text.remove_prefix(1);
        } else {
            append_non_ascii(out, text);
        }
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
        if (!node.is_element())
            return;
        append_tag("<", node.tag);
        for (const attribute *attr = node.first_attribute; attr != nullptr; attr = attr->next) {
            out_.append(' ').append(attr->name).append("=\"");
            append_encoded(out_, attr->value, place::attribute);
            out_.append('"');
        }
        if (node.num_children == 0) {
            out_.append("/>");
            return;
        }
        out_.append('>');
        ++depth_;
        if (node.text)
            begin_text(node);
    }

    // All of it but the closing bracket.
    void append_tag(std::string_view bracket, std::string_view tag)
    {
        if (on_lines_ && !out_.empty())
            formats::begin_line(out_, depth_);
        out_.append(bracket).append(tag);
    }

    void begin_text(const Qel_xml_node &element)
    {
        append_encoded(out_, *element.text, place::content);
        // White space beside a text would become part of it.
        if (on_lines_) {
            on_lines_ = false;
            on_one_line_ = &element;
        }
    }

    void end_node(const Qel_xml_node &node)
    {
        if (!node.is_element() || node.num_children == 0)
            return;
        --depth_;
        append_tag("</", node.name());
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
        if (len != nullptr)
            *len = 0;
        return nullptr;
    }
    writer out((flags & QEL_XML_WRITER_PRETTYPRINT_SPACE) != 0);
    return formats::finish(out.write(*node), len);
}
