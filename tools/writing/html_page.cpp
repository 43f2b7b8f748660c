#include "writing/html_page.h"

#include "page_styles.h"

#include <string_view>

namespace tool
{

namespace
{

// Puts more behind the beginning of a tag, where the block has it: texts hold no "<".
void add_to_tag(std::string &block, std::string_view tag, std::string_view more)
{
    if (const size_t at = block.find(tag); at != std::string::npos)
        block.insert(at + tag.size(), more);
}

// Puts the text behind a tag into an element of its own, where the block has it.
void wrap_text(std::string &block, std::string_view tag, const std::string &name,
               const std::string &attributes)
{
    const size_t at = block.find(tag);
    if (at == std::string::npos)
        return;
    const size_t begin = at + tag.size();
    block.insert(block.find('<', begin), "</" + name + ">");
    block.insert(begin, "<" + name + " " + attributes + ">");
}

// The block with what people need who hear a page: headings, the line to sign on by its name, and
// the letter beside the card in words.
std::string for_all_people(std::string block, const html_copy &copy)
{
    constexpr std::string_view second_level = R"( role="heading" aria-level="2")";
    wrap_text(block, R"(<div id="line" class="rcpt_val line">)", "span", R"(aria-hidden="true")");
    if (!copy.entry_mode.empty())
        wrap_text(block, R"(<div id="entry_mode" class="rcpt_val entry mode">)", "abbr",
                  "title=\"" + copy.entry_mode + '"');
    add_to_tag(block, R"(<div id="merch_name")", R"( role="heading" aria-level="1")");
    add_to_tag(block, R"(<div id="action")", second_level);
    add_to_tag(block, R"(<div id="rcpt_order_money_heading")", second_level);
    add_to_tag(block, R"(<div id="rcpt_money_heading")", second_level);
    add_to_tag(block, R"(<div id="line")", R"( role="img" aria-label=")" + copy.signature + '"');
    return block;
}

} // namespace

std::string html_page(const html_copy &copy)
{
    std::string page("<!DOCTYPE html>\n<html lang=\"");
    page.append(copy.lang).append("\">\n<head>\n<meta charset=\"utf-8\">\n");
    page += "<meta name=\"viewport\" content=\"width=device-width, initial-scale=1\">\n"
            "<meta name=\"color-scheme\" content=\"light\">\n"
            "<meta name=\"format-detection\" content=\"telephone=no\">\n"
            "<meta http-equiv=\"Content-Security-Policy\" "
            "content=\"default-src 'none'; style-src 'unsafe-inline'\">\n";
    page.append("<title>").append(copy.title).append("</title>\n");
    page.append("<style>\n").append(receipt_style).append(page_style).append("</style>\n");
    page += "</head>\n<body>\n<main class=\"receipt";
    page += copy.is_approved ? "\">\n" : " rcpt_not_approved\">\n";
    for (const block &part : copy.shown.blocks)
        page.append(for_all_people(std::string(part.text), copy)).append("\n");
    page += "</main>\n</body>\n</html>\n";
    return page;
}

} // namespace tool
