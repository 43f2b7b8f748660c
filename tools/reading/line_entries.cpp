#include "messages.h"
#include "reading/entries.h"

#include <algorithm>

namespace tool
{

namespace
{

std::string_view trimmed(std::string_view text)
{
    const size_t first = text.find_first_not_of(blanks);
    if (first == std::string_view::npos)
        return {};
    return text.substr(first, text.find_last_not_of(blanks) - first + 1);
}

// The line without its line feed or carriage return and line feed.
std::string_view line_at(std::string_view text, size_t offset)
{
    std::string_view line = text.substr(offset, text.find('\n', offset) - offset);
    if (line.ends_with('\r'))
        line.remove_suffix(1);
    return line;
}

bool is_skipped(std::string_view line)
{
    const std::string_view content = trimmed(line);
    return content.empty() || content.starts_with('#');
}

entry line_entry(std::string_view line, size_t offset)
{
    const size_t equals = line.find('=');
    if (equals == std::string_view::npos)
        throw text_error(offset, "no '=' in " + in_quotes(line) + ", expected key=value");
    const std::string_view key = trimmed(line.substr(0, equals));
    if (key.empty())
        throw text_error(offset, "no key before '=', expected key=value");
    const std::string_view value = line.substr(equals + 1);
    return {section::top, std::string(key), std::string(value), entry_kind::text, offset};
}

} // namespace

std::vector<entry> line_entries(std::string_view text)
{
    std::vector<entry> entries;
    for (size_t offset = 0; offset < text.size();) {
        const std::string_view line = line_at(text, offset);
        if (!is_skipped(line))
            entries.push_back(line_entry(line, offset));
        offset = std::min(text.find('\n', offset), text.size() - 1) + 1;
    }
    return entries;
}

} // namespace tool
