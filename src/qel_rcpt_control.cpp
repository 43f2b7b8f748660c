// Control characters in a record, which a printer or a terminal would obey.
#include "qel_rcpt_chars.hpp"
#include "qel_rcpt_keys.hpp"

#include <qel_rcpt.h>
#include <qelstdlib.hpp>

#include <algorithm>
#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace
{

unsigned char code_of(char byte)
{
    return static_cast<unsigned char>(byte);
}

// A piece of a text, and the control character that it is, or the blank that it may be.
struct piece {
    std::size_t size;
    std::optional<unsigned> control;
};

bool is_control(unsigned code)
{
    return code < 0x20 || (code >= 0x7F && code < 0xA0);
}

// A character as UTF-8 writes it, or a byte that is part of none.
piece character_at(std::string_view text)
{
    const unsigned char first = code_of(text.front());
    if (first < 0x80)
        return {1, is_control(first) ? std::optional<unsigned>(first) : std::nullopt};
    const std::size_t size = first < 0xC2 ? 0 : first < 0xE0 ? 2 : first < 0xF0 ? 3 : 4;
    const bool is_whole = size != 0 && text.size() >= size &&
                          std::ranges::all_of(text.substr(1, size - 1), qel_rcpt::is_continuation);
    if (!is_whole) // an eight-bit control character, where text is not UTF-8
        return {1, is_control(first) ? std::optional<unsigned>(first) : std::nullopt};
    if (first == 0xC2 && is_control(code_of(text[1])))
        return {size, code_of(text[1])};
    return {size, std::nullopt};
}

std::optional<unsigned> hex_number(std::string_view digits)
{
    unsigned number = 0;
    for (const char digit : digits) {
        const std::size_t value = std::string_view("0123456789abcdef").find(digit);
        const std::size_t capital = std::string_view("0123456789ABCDEF").find(digit);
        const std::size_t least = std::min(value, capital);
        if (least == std::string_view::npos)
            return std::nullopt;
        number = number * 16 + static_cast<unsigned>(least);
    }
    return number;
}

// An escape in a string of a JSON text, such as \n or \u001b; a backslash that begins none by
// itself.
piece escape_at(std::string_view text)
{
    constexpr std::string_view names = "bfnrt";
    constexpr std::string_view codes = "\b\f\n\r\t";
    constexpr std::size_t unicode_size = 6;
    const char name = text.size() > 1 ? text[1] : '\0';
    if (const std::size_t at = names.find(name); at != std::string_view::npos)
        return {2, code_of(codes[at])};
    if (name == '"' || name == '\\')
        return {2, std::nullopt};
    if (name != 'u' || text.size() < unicode_size)
        return {1, std::nullopt};
    const auto code = hex_number(text.substr(2, unicode_size - 2));
    if (!code || !is_control(*code))
        return {1, std::nullopt};
    return {unicode_size, code};
}

// The pieces of a text from its beginning on.
class text_walk
{
  public:
    explicit text_walk(bool is_json) : is_json_(is_json) {}

    piece next(std::string_view rest)
    {
        if (!is_json_)
            return character_at(rest);
        is_in_string_ = is_in_string_ != (rest.front() == '"');
        if (is_in_string_)
            return rest.front() == '\\' ? escape_at(rest) : character_at(rest);
        if (rest.starts_with("//"))
            return comment(std::min(rest.find_first_of("\r\n"), rest.size() - 1) + 1);
        if (comments_end_ && rest.starts_with("/*")) {
            const std::size_t end = rest.find("*/", 2);
            comments_end_ = end != std::string_view::npos;
            if (comments_end_)
                return comment(end + 2);
        }
        return character_at(rest);
    }

  private:
    // A blank stands for it all: without the line break at its end it would go on.
    static piece comment(std::size_t size) { return {size, ' '}; }

    bool is_json_;
    bool is_in_string_ = false;
    bool comments_end_ = true; // those of several lines
};

// White space stays a gap.
char replacement(unsigned control)
{
    constexpr unsigned next_line = 0x85;
    const bool is_space =
        (control >= '\t' && control <= '\r') || control == next_line || control == ' ';
    return is_space ? ' ' : '?';
}

// Whether the key's text is read as JSON, where escapes stand for characters.
bool is_document(const char *key)
{
    return std::ranges::any_of(qel_rcpt::record_keys, [key](const qel_rcpt::record_key &known) {
        return known.kind == qel_rcpt::key_kind::json && Qel_str_caseeq(key, known.name.data());
    });
}

// The value without control characters; absent when there are none.
std::optional<std::string> stripped(const char *key, std::string_view text)
{
    const bool has_escapes = text.find('\\') != std::string_view::npos;
    if (!has_escapes && qel_rcpt::is_visible_ascii(text))
        return std::nullopt;
    text_walk walk(is_document(key));
    std::optional<std::string> clean;
    std::size_t size = 0;
    for (std::size_t at = 0; at < text.size(); at += size) {
        const std::string_view rest = text.substr(at);
        const piece next = walk.next(rest);
        size = next.size;
        if (next.control && !clean)
            clean.emplace(text.substr(0, at));
        if (next.control)
            *clean += replacement(*next.control);
        else if (clean)
            *clean += rest.substr(0, size);
    }
    return clean;
}

} // namespace

void Qel_rcpt_strip_control(Qel_hash_dict_t *kvs) noexcept
{
    std::vector<std::pair<std::string, std::string>> changes; // the walk ends before them
    for (const auto &[key, value] : qel::pairs(kvs)) {
        if (auto clean = stripped(key, qel::view(value)))
            changes.emplace_back(key, std::move(*clean));
    }
    for (const auto &[key, value] : changes)
        Qel_hash_dict_insert(kvs, key.c_str(), value.c_str());
}
