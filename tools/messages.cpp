#include "messages.h"

#include "writing/output.h"
#include "writing/safe_text.h"

#include <unistd.h>

#include <qelstdlib_json.hpp>

#include <algorithm>

namespace tool
{

namespace
{

constexpr std::string_view replacement = "\uFFFD";

bool is_control(char byte)
{
    return static_cast<unsigned char>(byte) < 0x20 || byte == 0x7F;
}

} // namespace

bool continues_character(char byte)
{
    return (static_cast<unsigned char>(byte) & 0xC0U) == 0x80U;
}

void complain(const std::string &message)
{
    std::string line("qelrcpt: ");
    write_all(STDERR_FILENO, line.append(for_terminal(message)).append("\n"));
}

std::string in_quotes(std::string_view text)
{
    constexpr size_t longest = 60;
    size_t end = std::min(text.size(), longest);
    while (end > 0 && end < text.size() && continues_character(text[end]))
        --end;
    std::string shown;
    for (std::string_view rest = text.substr(0, end); !rest.empty();) {
        const qel::utf8_sequence character = qel::utf8_at(rest);
        const size_t size = std::max<size_t>(character.size, 1);
        shown += character.is_whole ? rest.substr(0, size) : replacement;
        rest.remove_prefix(size);
    }
    std::ranges::replace_if(shown, is_control, '?');
    return "'" + shown + (end < text.size() ? "..." : "") + "'";
}

std::string listed(std::span<const std::string_view> words)
{
    std::string list;
    for (size_t i = 0; i < words.size(); ++i) {
        if (i > 0)
            list += i + 1 < words.size() ? ", " : " or ";
        list += words[i];
    }
    return list;
}

std::string places::at(size_t offset)
{
    if (offset < offset_)
        *this = places(std::move(name_), text_);
    advance_to(std::min(offset, text_.size()));
    return name_ + ":" + std::to_string(line_) + ":" + std::to_string(column_);
}

void places::advance_to(size_t offset)
{
    for (; offset_ < offset; ++offset_) {
        if (text_[offset_] == '\n') {
            ++line_;
            column_ = 1;
        } else if (!continues_character(text_[offset_])) {
            ++column_;
        }
    }
}

} // namespace tool
