#include "messages.h"

#include "writing/output.h"
#include "writing/safe_text.h"

#include <unistd.h>

#include <nlohmann/json.hpp>

#include <algorithm>

namespace tool
{

namespace
{

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
    const std::string valid = nlohmann::json(text.substr(0, end))
                                  .dump(-1, ' ', false, nlohmann::json::error_handler_t::replace);
    auto shown = nlohmann::json::parse(valid).get<std::string>();
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
