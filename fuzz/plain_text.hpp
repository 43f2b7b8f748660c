// What holds for the blocks of every plain-text form.
#ifndef QELRCPT_FUZZ_PLAIN_TEXT_HPP
#define QELRCPT_FUZZ_PLAIN_TEXT_HPP

#include "receipt.hpp"

namespace fuzz
{

inline std::string upper_case(std::string text)
{
    Qel_str_upper(text.data());
    return text;
}

// The lines of a block. A value that holds the line break only makes shorter ones of them.
inline std::vector<std::string> lines_of(std::string_view text, std::string_view line_break)
{
    std::vector<std::string> lines;
    for (std::size_t end = 0; end != std::string_view::npos;) {
        end = text.find(line_break);
        lines.emplace_back(text.substr(0, end));
        text.remove_prefix(std::min(end + line_break.size(), text.size()));
    }
    return lines;
}

inline void check_plain_block(const receipt_input &from, const block &block, std::size_t width,
                              std::string_view line_break, std::span<const shown_value> values)
{
    require(upper_case(block.text) == block.text, "plain text is in upper case");

    std::vector<std::string> lines = lines_of(block.text, line_break);
    const bool has_price_line = block.name == "notice" && lines.size() > 1 && lines[1].empty();
    if (has_price_line)
        lines.erase(lines.begin()); // put in directly, whatever its width
    for (const std::string &line : lines)
        require(Qel_utf8_cnt(line.c_str()) <= width, "no line is too wide");

    const std::string shown = visible(block.text);
    for (const auto &[name, key] : values) {
        const std::string value = visible(upper_case(Qel_str_safe(from.value(key))));
        require(name != block.name || shown.find(value) != std::string::npos,
                "the value is shown whole");
    }
}

} // namespace fuzz

#endif
