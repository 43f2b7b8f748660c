// Writing JSON trees.
#include "formats_int.h"
#include "json_node.h"

#include <array>
#include <cstdint>
#include <cstring>

namespace
{

void append_unit(qel::text_builder &out, char32_t unit)
{
    constexpr std::string_view digits = "0123456789abcdef";
    out.append("\\u");
    for (int shift = 12; shift >= 0; shift -= 4)
        out.append(digits[(unit >> shift) & 0xF]);
}

// The letter that follows the backslash in the short escape of a character, 0 when it has none.
char short_escape(char32_t chr)
{
    switch (chr) {
    case '"':
    case '\\':
        return static_cast<char>(chr);
    case '\b':
        return 'b';
    case '\f':
        return 'f';
    case '\n':
        return 'n';
    case '\r':
        return 'r';
    case '\t':
        return 't';
    default:
        return 0;
    }
}

void append_escape(qel::text_builder &out, char32_t chr)
{
    if (const char letter = short_escape(chr); letter != 0) {
        out.append('\\');
        out.append(letter);
        return;
    }
    if (chr <= 0xFFFF) {
        append_unit(out, chr);
        return;
    }
    const char32_t offset = chr - 0x10000;
    append_unit(out, 0xD800 + (offset >> 10));
    append_unit(out, 0xDC00 + (offset & 0x3FF));
}

// By byte, whether it stands for itself.
constexpr std::array<bool, 256> plain_bytes = [] {
    std::array<bool, 256> plain{};
    std::fill(plain.begin() + ' ', plain.begin() + 0x80, true);
    plain['"'] = false;
    plain['\\'] = false;
    return plain;
}();

bool is_plain(char chr)
{
    return plain_bytes[static_cast<unsigned char>(chr)];
}

[[gnu::noinline]] void append_escaped(qel::text_builder &out, std::string_view text)
{
    formats::append_plain(out, text, is_plain);
    while (!text.empty()) {
        append_escape(out, formats::take_char(text).value_or(formats::replacement_char));
        formats::append_plain(out, text, is_plain);
    }
}

// Texts are looked at in stretches that the processor compares all at once. A comparison gives, for
// each byte, all bits or none.
constexpr std::size_t stretch_len = 16;
using stretch [[gnu::vector_size(stretch_len)]] = signed char;

bool has_special(stretch bytes)
{
    const stretch below_space = bytes < ' '; // control characters, and what is outside ASCII
    const stretch special = below_space | (bytes == '"') | (bytes == '\\');
    std::array<std::uint64_t, 2> halves;
    static_assert(sizeof halves == sizeof special);
    std::memcpy(halves.data(), &special, sizeof special);
    return (halves[0] | halves[1]) != 0;
}

// The bytes after the text, as far as its last stretch goes, are looked at too.
bool is_plain_text(const char *text, std::size_t len)
{
    for (std::size_t at = 0; at < len; at += stretch_len) {
        stretch bytes;
        std::memcpy(&bytes, text + at, sizeof bytes);
        if (has_special(bytes))
            return false;
    }
    return true;
}

// Most texts are plain throughout: the text is put between its quotes first, and looked at there.
[[gnu::always_inline]] inline void append_quoted(qel::text_builder &out, std::string_view text)
{
    char *const copy = out.reserve(text.size() + 2 + stretch_len) + 1;
    text.copy(copy, text.size());
    std::memset(copy + text.size(), ' ', stretch_len);
    if (is_plain_text(copy, text.size())) {
        copy[-1] = '"';
        copy[text.size()] = '"';
        out.extend_to(copy + text.size() + 1);
        return;
    }
    out.append('"');
    append_escaped(out, text);
    out.append('"');
}

// Walks the tree along its links: one that was built may be deeper than the program's stack allows.
class writer
{
  public:
    explicit writer(bool on_lines) : on_lines_(on_lines) {}

    qel::text_builder &write(const Qel_json_node &root)
    {
        const Qel_json_node *node = &root;
        for (;;) {
            if (begin_value(*node)) {
                ++depth_;
                node = node->children->first;
            } else {
                for (; node != &root && node->next == nullptr; node = node->parent)
                    end_container(*node->parent);
                if (node == &root)
                    return out_;
                node = node->next;
                out_.append(',');
            }
            begin_item(*node);
        }
    }

  private:
    // Writes a scalar or what is empty whole, and opens the rest, which is true.
    bool begin_value(const Qel_json_node &node)
    {
        const bool is_object = node.type == QEL_JSON_TYPE_OBJECT;
        if (node.is_container() && node.children->count > 0) {
            out_.append(is_object ? '{' : '[');
            return true;
        }
        if (node.is_container())
            out_.append(is_object ? "{}" : "[]");
        else if (node.type == QEL_JSON_TYPE_STRING)
            append_quoted(out_, node.text);
        else
            out_.append(node.text);
        return false;
    }

    void begin_item(const Qel_json_node &node)
    {
        begin_line();
        if (node.parent->type != QEL_JSON_TYPE_OBJECT)
            return;
        append_quoted(out_, node.name);
        out_.append(on_lines_ ? ": " : ":");
    }

    void end_container(const Qel_json_node &node)
    {
        --depth_;
        begin_line();
        out_.append(node.type == QEL_JSON_TYPE_OBJECT ? '}' : ']');
    }

    void begin_line()
    {
        if (on_lines_)
            formats::begin_line(out_, depth_);
    }

    qel::text_builder out_{1023};
    std::size_t depth_ = 0; // of open containers
    bool on_lines_;
};

} // namespace

char *Qel_json_write(const Qel_json_node_t *node, uint32_t flags, size_t *len) noexcept
{
    if (node == nullptr) {
        if (len != nullptr)
            *len = 0;
        return nullptr;
    }
    writer out((flags & QEL_JSON_WRITER_PRETTYPRINT_SPACE) != 0);
    return formats::finish(out.write(*node), len);
}
