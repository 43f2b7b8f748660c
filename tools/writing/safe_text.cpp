#include "writing/safe_text.h"

#include <utf8.h>

#include <iterator>

namespace tool
{

namespace
{

constexpr std::string_view replacement = "\uFFFD";
constexpr char del = 0x7F;

bool is_valid(std::string_view text)
{
    return utf8::is_valid(text.begin(), text.end());
}

bool is_ascii_control(char byte)
{
    return static_cast<unsigned char>(byte) < 0x20 || byte == del;
}

// One of U+0080 to U+009F, in two bytes.
bool is_late_control(std::string_view text, size_t at)
{
    return text[at] == '\xC2' && at + 1 < text.size() &&
           static_cast<unsigned char>(text[at + 1]) < 0xA0;
}

// One of those that change the direction of the letters that follow, in three bytes.
bool is_directional(std::string_view text, size_t at)
{
    if (!text.substr(at).starts_with("\xE2\x80") && !text.substr(at).starts_with("\xE2\x81"))
        return false;
    const auto last = static_cast<unsigned char>(text[at + 2]); // the text is valid
    return text[at + 1] == '\x80' ? last >= 0xAA && last <= 0xAE : last >= 0xA6 && last <= 0xA9;
}

bool is_line_break_or_tab(std::string_view text, size_t at)
{
    const bool ends_line = text[at] == '\r' && text.substr(at + 1, 1) == "\n";
    return text[at] == '\n' || text[at] == '\t' || ends_line;
}

// Whether the byte needs a look before it is written in a JSON text.
bool is_special(char byte)
{
    return is_ascii_control(byte) || byte == '"' || byte == '\\' || byte == '\xC2';
}

void append_escape(std::string &json, char byte)
{
    constexpr std::string_view digits = "0123456789abcdef";
    constexpr std::string_view named = "\"\\\b\f\n\r\t";
    constexpr std::string_view names = "\"\\bfnrt";
    json += '\\';
    if (const size_t at = named.find(byte); at != std::string_view::npos) {
        json += names[at];
        return;
    }
    const auto code = static_cast<unsigned char>(byte);
    json.append("u00").append(1, digits[code >> 4U]).append(1, digits[code & 0xFU]);
}

void append_valid_json_text(std::string &json, std::string_view text)
{
    json += '"';
    size_t written = 0;
    for (size_t at = 0; at < text.size(); ++at) {
        if (!is_special(text[at]))
            continue;
        const bool is_late = is_late_control(text, at);
        if (text[at] == '\xC2' && !is_late)
            continue;
        json += text.substr(written, at - written);
        at += is_late ? 1 : 0; // its second byte is its number
        append_escape(json, text[at]);
        written = at + 1;
    }
    json += text.substr(written);
    json += '"';
}

} // namespace

std::string repaired(std::string_view text)
{
    std::string valid;
    utf8::replace_invalid(text.begin(), text.end(), std::back_inserter(valid));
    return valid;
}

std::string for_terminal(std::string_view text)
{
    if (!is_valid(text))
        return for_terminal(repaired(text));
    std::string shown;
    shown.reserve(text.size());
    for (size_t at = 0; at < text.size(); ++at) {
        if (is_late_control(text, at)) {
            shown += replacement;
            ++at;
        } else if (is_directional(text, at)) {
            shown += replacement;
            at += 2;
        } else if (is_ascii_control(text[at]) && !is_line_break_or_tab(text, at)) {
            shown += '^';
            shown += static_cast<char>(text[at] ^ 0x40);
        } else {
            shown += text[at];
        }
    }
    return shown;
}

void append_json_text(std::string &json, std::string_view text)
{
    if (is_valid(text))
        append_valid_json_text(json, text);
    else
        append_valid_json_text(json, repaired(text));
}

} // namespace tool
