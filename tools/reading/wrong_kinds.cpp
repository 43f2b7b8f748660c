#include "reading/wrong_kinds.h"

#include "reading/entries.h"

#include <utf8.h>

#include <algorithm>
#include <string>

namespace tool
{

namespace
{

// The encoding of text in UTF-16, told by its mark or by the zeros after its first letters.
std::string_view utf16_name(std::string_view text)
{
    if (text.starts_with("\xFF\xFE") || text.starts_with("\xFE\xFF"))
        return "UTF-16";
    const bool is_unmarked = text.size() >= 4 && text[0] != '\0' && text[1] == '\0' &&
                             text[2] != '\0' && text[3] == '\0';
    return is_unmarked ? "UTF-16LE" : "";
}

size_t first_invalid(std::string_view text)
{
    return static_cast<size_t>(utf8::find_invalid(text.begin(), text.end()) - text.begin());
}

std::string hexadecimal(char byte)
{
    constexpr std::string_view digits = "0123456789ABCDEF";
    const auto code = static_cast<unsigned char>(byte);
    return {'0', 'x', digits[code >> 4U], digits[code & 0xFU]};
}

// A first line that has separators and nothing of an object or of key=value.
bool is_table(std::string_view text)
{
    text.remove_prefix(std::min(text.find_first_not_of(blanks), text.size()));
    const std::string_view line = text.substr(0, text.find('\n'));
    return line.find_first_of(",;\t") != std::string_view::npos &&
           line.find_first_of("={}[]:#") == std::string_view::npos;
}

// Whether an object ends in front of the offset and another begins there.
bool is_second_object(std::string_view text, size_t offset)
{
    if (offset >= text.size() || text[offset] != '{')
        return false;
    try {
        return !json_entries(text.substr(0, offset)).empty();
    } catch (const text_error &) {
        return false;
    }
}

// Nothing but an opening brace, as in the first line of an object with a line for each member.
bool is_opening_line(std::string_view line)
{
    line.remove_prefix(std::min(line.find_first_not_of(blanks), line.size()));
    return line.starts_with('{') && line.find_first_not_of(blanks, 1) == std::string_view::npos;
}

} // namespace

void check_kind(std::string_view text)
{
    if (text.starts_with("\x1F\x8B"))
        throw text_error(0, "gzip data, expected text: gunzip -c FILE | qelrcpt");
    if (const std::string_view name = utf16_name(text); !name.empty())
        throw text_error(0, "UTF-16 text, expected UTF-8: iconv -f " + std::string(name) +
                                " -t UTF-8 FILE | qelrcpt");
    if (const size_t nul = text.find('\0'); nul != std::string_view::npos)
        throw text_error(nul, "NUL byte, expected text");
}

void check_utf8(std::string_view text)
{
    const size_t at = first_invalid(text);
    if (at < text.size())
        throw text_error(at, "byte " + hexadecimal(text[at]) +
                                 " is not UTF-8; of text in Windows-1252: iconv -f WINDOWS-1252 "
                                 "-t UTF-8 FILE | qelrcpt");
}

text_error explained(const text_error &fault, std::string_view text, reading what)
{
    try {
        check_kind(text);
    } catch (const text_error &kind) {
        return kind;
    }
    try {
        check_utf8(text);
    } catch (const text_error &encoding) {
        if (encoding.offset <= fault.offset) // the fault may come of it
            return encoding;
    }
    const std::string said = fault.what();
    const size_t first = std::min(text.find_first_not_of(blanks), text.size());
    if (text.substr(first).starts_with('['))
        return {first, "unexpected '[', expected a JSON object; of an array of records: jq -c "
                       "'.[]' FILE | qelrcpt --batch"};
    if (what == reading::line)
        return is_opening_line(text)
                   ? text_error(fault.offset, said + "; of records of several lines: jq -c . FILE "
                                                     "| qelrcpt --batch")
                   : fault;
    if (is_table(text))
        return {first, "comma-separated values, expected a JSON object or lines of key=value; "
                       "make a JSON object of each row, a line each, for --batch"};
    if (is_second_object(text, fault.offset))
        return {fault.offset, said + "; of several records: jq -c . FILE | qelrcpt --batch"};
    return fault;
}

} // namespace tool
