#include "writing/safe_text.h"

#include <qel_rcpt_chars.hpp>
#include <qelstdlib_json.hpp>
#include <utf8.h>

#include <algorithm>
#include <bit>
#include <cstdint>
#include <cstring>
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

bool is_line_break_or_tab(std::string_view text, size_t at)
{
    const bool ends_line = text[at] == '\r' && text.substr(at + 1, 1) == "\n";
    return text[at] == '\n' || text[at] == '\t' || ends_line;
}

// Where the bytes end, from there on, that stand for themselves in a JSON text: printable ASCII but
// quotes and backslashes. Eight bytes are looked at together.
size_t end_of_plain(std::string_view text, size_t at)
{
    constexpr uint64_t ones = 0x0101010101010101U;
    for (uint64_t word = 0; text.size() - at >= sizeof word; at += sizeof word) {
        std::memcpy(&word, text.data() + at, sizeof word);
        // Subtraction and addition carry into the high bit where a byte is too low or too high.
        // They may do so for nothing in the bytes above it, so only the lowest one counts.
        const uint64_t special = (word | (word - ones * ' ') | (word + ones) |
                                  ((word ^ ones * '"') - ones) | ((word ^ ones * '\\') - ones)) &
                                 ones * 0x80U;
        if (special == 0)
            continue;
        if (std::endian::native == std::endian::little)
            return at + static_cast<size_t>(std::countr_zero(special)) / 8;
        break;
    }
    const auto is_plain = [](char byte) {
        return static_cast<signed char>(byte) >= 0x20 && byte != del && byte != '"' && byte != '\\';
    };
    while (at < text.size() && is_plain(text[at]))
        ++at;
    return at;
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
    for (size_t at = 0, size = 0; at < text.size(); at += size) {
        size = qel::utf8_at(text.substr(at)).size;
        const char32_t code = utf8::unchecked::peek_next(text.data() + at);
        if (is_late_control(text, at) || qel_rcpt::turns_direction(code)) {
            shown += replacement;
        } else if (is_ascii_control(text[at]) && !is_line_break_or_tab(text, at)) {
            shown += '^';
            shown += static_cast<char>(text[at] ^ 0x40);
        } else {
            shown.append(text, at, size);
        }
    }
    return shown;
}

void append_json_text(std::string &json, std::string_view text)
{
    json += '"';
    for (size_t at = 0; at < text.size();) {
        const size_t plain = end_of_plain(text, at);
        json.append(text, at, plain - at);
        at = plain;
        if (at == text.size())
            break;
        if (text[at] == '\n') { // what a receipt has most of
            json += "\\n";
            ++at;
            continue;
        }
        const qel::utf8_sequence character = qel::utf8_at(text.substr(at));
        const size_t size = std::max(character.size, size_t{1});
        if (!character.is_whole)
            json += replacement;
        else if (size == 1 || is_late_control(text, at))
            append_escape(json, text[at + size - 1]); // a late one's second byte is its number
        else
            json.append(text, at, size);
        at += size;
    }
    json += '"';
}

} // namespace tool
