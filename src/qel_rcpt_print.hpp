// What the parts of printing share: code pages, and the emphasis of lines.
#ifndef QEL_RCPT_PRINT_HPP
#define QEL_RCPT_PRINT_HPP

#include "qel_rcpt_rules.hpp"
#include "qel_rcpt_tables.hpp"

#include <qel_rcpt_print.h>

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>

namespace qel_rcpt
{

// Code pages

class code_page;

// The page, or absent where there is none of that number.
const code_page *find_code_page(Qel_rcpt_code_page_t id);

// The page's number in the command that selects it.
std::optional<std::uint8_t> code_page_number(const code_page &page, Qel_rcpt_printer_lang_t lang);

// Appends a line in the page's bytes, none of which is a control character; returns how many
// characters were replaced or left out.
std::size_t append_encoded(std::string &out, std::string_view line, const code_page &page);

// Emphasis

enum class line_style : std::uint8_t { plain, bold, bold_tall, inverted };

// Knows which lines of a copy stand out.
class emphasis
{
  public:
    // kvs may be absent.
    emphasis(const Qel_hash_dict_t *blocks, const Qel_hash_dict_t *kvs, bool is_custcopy);

    // Sets the styles of those lines of the block that do; block is its name without the copy's.
    void mark(std::string_view block, std::span<const std::string_view> lines,
              std::span<line_style> styles) const;

  private:
    enum class form { plain, moneris, moneris_ecomm };

    using text_lines = std::span<const std::string_view>;
    using line_styles = std::span<line_style>;

    void mark_merchant(text_lines lines, line_styles styles) const;
    void mark_type(text_lines lines, line_styles styles) const;
    void mark_reference(text_lines lines, line_styles styles) const;
    void mark_money(text_lines lines, line_styles styles) const;
    void mark_table(text_lines lines, line_styles styles) const;
    void mark_disposition(text_lines lines, line_styles styles) const;
    void mark_notice(text_lines lines, line_styles styles) const;

    const Qel_hash_dict_t *kvs_;
    std::span<const language> languages_; // of whose words a line may be
    form form_ = form::plain;
};

// Calls take(line) for each line of a block.
template <typename Take>
void for_each_line(std::string_view block, Take take)
{
    while (true) {
        const std::size_t feed = block.find('\n');
        std::string_view line = block.substr(0, feed);
        if (feed != std::string_view::npos && line.ends_with('\r'))
            line.remove_suffix(1);
        for (std::size_t end = line.find('\r'); end != std::string_view::npos;
             end = line.find('\r')) {
            take(line.substr(0, end));
            line.remove_prefix(end + 1);
        }
        take(line);
        if (feed == std::string_view::npos)
            return;
        block.remove_prefix(feed + 1);
    }
}

} // namespace qel_rcpt

#endif
