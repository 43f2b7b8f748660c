#include "writing/html_email.h"

#include "writing/html_tree.h"

#include <qelstdlib.h>

#include <algorithm>
#include <cstddef>
#include <string_view>
#include <utility>
#include <vector>

namespace tool
{

namespace
{

constexpr std::string_view ink = "#16181d";
constexpr std::string_view soft = "#545963";
constexpr std::string_view saving = "#0a6638";
constexpr std::string_view failed = "#a3191f";

constexpr std::string_view sans = "Helvetica,Arial,sans-serif";
constexpr std::string_view mono = "Menlo,Consolas,'Courier New',monospace";

enum class outcome { any, not_approved };

// How a row looks.
struct look {
    std::string_view block;      // empty: any
    std::string_view class_name; // one of the row's; empty: any
    outcome when;
    int size; // in pixels
    std::string_view color;
    std::string_view label_color;
    std::string_view more{}; // of each cell
};

// The first that fits a row holds.
constexpr look looks[] = {
    {"merch_info", "name", outcome::any, 22, ink, ink, "font-weight:bold;padding-bottom:4px"},
    {"merch_info", "", outcome::any, 14, soft, soft},
    {"reference", "action", outcome::any, 16, ink, ink, "font-weight:bold;padding-bottom:6px"},
    {"reference", "cardtype", outcome::any, 14, ink, ink, "font-weight:bold"},
    {"items", "addon", outcome::any, 13, soft, soft, "padding-left:16px"},
    {"items", "item_discount_percent", outcome::any, 13, saving, saving, "padding-left:16px"},
    {"items", "item_discount_fixed", outcome::any, 13, saving, saving, "padding-left:16px"},
    {"items", "order_discount_percent", outcome::any, 14, saving, saving},
    {"items", "order_discount_fixed", outcome::any, 14, saving, saving},
    {"items", "notes", outcome::any, 13, soft, soft, "font-style:italic;padding-left:16px"},
    {"items", "", outcome::any, 14, ink, ink},
    {"", "money_heading", outcome::any, 12, ink, ink,
     "font-weight:bold;letter-spacing:1px;text-transform:uppercase"},
    {"", "discount", outcome::any, 14, saving, soft},
    {"", "total", outcome::not_approved, 14, ink, ink,
     "border-top:1px solid #16181d;padding-top:6px"},
    {"", "total", outcome::any, 20, ink, ink,
     "font-weight:bold;border-top:2px solid #16181d;padding-top:6px"},
    {"", "due", outcome::any, 14, ink, ink, "font-weight:bold"},
    {"disposition", "status", outcome::any, 14, soft, soft},
    {"disposition", "result", outcome::not_approved, 18, failed, failed,
     "font-weight:bold;border:2px solid #a3191f;padding:4px 8px"},
    {"disposition", "result", outcome::any, 18, ink, ink, "font-weight:bold"},
    {"disposition", "print", outcome::any, 12, ink, ink, "padding-top:8px"},
    {"signature", "line", outcome::any, 14, ink, ink,
     "border-bottom:1px solid #16181d;padding-top:36px"},
    {"signature", "agreement", outcome::any, 12, soft, soft, "padding-top:6px"},
    {"emv", "", outcome::any, 12, ink, soft},
    {"notice", "alt_price", outcome::any, 14, ink, soft, "font-weight:bold;padding-bottom:6px"},
    {"notice", "message", outcome::any, 13, soft, soft},
    {"notice", "status", outcome::any, 14, ink, ink, "font-weight:bold;padding-top:4px"},
    {"", "", outcome::any, 14, ink, soft},
};

const look &look_of(const html_element &block, const html_element &row, bool is_approved)
{
    return *std::ranges::find_if(looks, [&](const look &one) {
        return (one.block.empty() || block.is(one.block)) &&
               (one.class_name.empty() || row.is(one.class_name)) &&
               (one.when == outcome::any || !is_approved);
    });
}

size_t length(std::string_view text)
{
    return Qel_utf8_cnt(std::string(text).c_str());
}

// Words are split only where one is longer than a line may be.
std::string_view wrapping_of_words(std::string_view text)
{
    constexpr size_t room = 20;
    while (!text.empty()) {
        const std::string_view word = text.substr(0, text.find_first_of(" \n"));
        if (length(word) > room)
            return ";word-break:break-word";
        text.remove_prefix(std::min(word.size() + 1, text.size()));
    }
    return "";
}

// Whether a value is short enough to stand on its line, where its label wraps.
bool fits_beside_label(std::string_view value)
{
    constexpr size_t room = 24;
    return length(value) <= room;
}

std::string with_line_breaks(std::string_view text)
{
    std::string lines;
    for (const char chr : text) {
        if (chr == '\n')
            lines += "<br />";
        else
            lines += chr;
    }
    return lines;
}

std::string in_element(std::string_view name, std::string_view style, std::string_view inner)
{
    std::string element("<");
    element.append(name).append(" style=\"").append(style).append("\">").append(inner);
    return element.append("</").append(name).append(">");
}

constexpr std::string_view soft_color = "color:#545963";

std::string in_box(std::string_view text)
{
    return in_element("span", "border:1px solid #16181d;padding:0 6px", text);
}

constexpr std::string_view left = R"(align="left" valign="top")";
constexpr std::string_view right = R"(align="right" valign="top")";
constexpr std::string_view left_across = R"(colspan="2" align="left")";
constexpr std::string_view right_across = R"(colspan="2" align="right")";
constexpr std::string_view center_across = R"(colspan="2" align="center")";

// What a cell shows, and the text of it that wraps.
struct cell {
    std::string html;
    std::string_view text;

    explicit cell(std::string_view plain) : html(plain), text(plain) {}
    cell(std::string inner, std::string_view inner_text) : html(std::move(inner)), text(inner_text)
    {
    }
};

// Writes the rows of one block.
class block_writer
{
  public:
    block_writer(std::string &out, const html_element &block, const html_copy &copy)
        : out_(out), block_(block), copy_(copy)
    {
    }

    void write()
    {
        const std::vector<html_element> &rows = block_.children;
        for (size_t i = 0; i < rows.size(); ++i) {
            look_ = &look_of(block_, rows[i], copy_.is_approved);
            if (rows[i].is("cardtype") && i + 1 < rows.size() && rows[i + 1].is("entry")) {
                add_pair(cell(rows[i].text), entry_mode(rows[i + 1].text));
                ++i;
            } else {
                add_row(rows[i]);
            }
        }
    }

  private:
    void add_row(const html_element &row)
    {
        if (!row.children.empty() && block_.is("items"))
            add_item(row);
        else if (!row.children.empty())
            add_group(row.children.front(), row.children.back());
        else if (row.is("cardtype"))
            add_pair(cell(row.text), cell(""));
        else if (row.is("entry"))
            add_pair(cell(""), entry_mode(row.text));
        else
            add_across(alone(row));
    }

    void add_group(const html_element &label, const html_element &value)
    {
        if (value.id == "duplicate")
            add_across({in_box(value.text), value.text});
        else if (block_.is("disposition"))
            add_across({in_element("span", soft_color, label.text) + " " + std::string(value.text),
                        value.text});
        else if (label.text.empty())
            add_across({with_line_breaks(value.text), value.text});
        else
            add_pair(cell(label.text), cell(value.text));
    }

    void add_item(const html_element &row)
    {
        const std::vector<html_element> &what = row.children.front().children;
        cell name(with_line_breaks(what.front().text), what.front().text);
        if (row.is("addon"))
            name.html = std::string("+ ").append(name.html);
        if (what.size() > 1)
            name.html.append("&#160; ").append(in_element("span", soft_color, what.back().text));
        if (row.children.size() > 1)
            add_pair(name, cell(row.children.back().text));
        else
            add_across(name);
    }

    // A value without a label.
    cell alone(const html_element &row) const
    {
        if (row.id == "merch_name")
            return heading("h1", row.text);
        if (row.is("action") || row.is("money_heading"))
            return heading("h2", row.text);
        if (row.is("line")) // which is the border of the cell
            return cell(row.text.substr(0, row.text.find('_')));
        if (row.is("print"))
            return printed(row.text);
        return cell(row.text);
    }

    cell heading(std::string_view level, std::string_view text) const
    {
        std::string style("margin:0;font-weight:bold;font-size:");
        style.append(std::to_string(look_->size)).append("px");
        return {in_element(level, style, text), text};
    }

    // The line feed before the text is not part of it.
    cell printed(std::string_view text) const
    {
        std::string style("margin:0;white-space:pre-wrap;word-break:break-word;");
        return {in_element("pre", style.append(font(mono)), std::string("\n").append(text)), ""};
    }

    cell entry_mode(std::string_view letter) const
    {
        if (copy_.entry_mode.empty())
            return {in_box(letter), letter};
        std::string words("<abbr title=\"");
        words.append(copy_.entry_mode).append(R"(" style="text-decoration:none">)");
        return {in_box(words.append(letter).append("</abbr>")), letter};
    }

    void add_across(const cell &content)
    {
        const bool from_the_left = block_.is("items") || block_.is("signature") ||
                                   look_->class_name == "money_heading" ||
                                   look_->class_name == "print";
        out_ += "<tr>";
        add_cell(from_the_left ? left_across : center_across, style(look_->color, sans), content);
        out_ += "</tr>\n";
    }

    void add_pair(const cell &label, const cell &value)
    {
        const std::string label_style = style(look_->label_color, sans);
        const std::string value_style = style(look_->color, block_.is("emv") ? mono : sans);
        out_ += "<tr>";
        if (fits_beside_label(value.text)) {
            add_cell(left, label_style, label);
            add_cell(right, value_style + ";white-space:nowrap", value);
        } else {
            add_cell(left_across, label_style, label);
            out_ += "</tr>\n<tr>";
            add_cell(right_across, value_style, value);
        }
        out_ += "</tr>\n";
    }

    void add_cell(std::string_view attributes, std::string_view style, const cell &content)
    {
        out_.append("<td ").append(attributes).append(" style=\"").append(style);
        out_.append(wrapping_of_words(content.text)).append("\">");
        out_.append(content.html).append("</td>");
    }

    std::string font(std::string_view family) const
    {
        return std::string("font-family:").append(family).append(";font-size:") +
               std::to_string(look_->size) + "px;line-height:1.4";
    }

    std::string style(std::string_view color, std::string_view family) const
    {
        std::string style = font(family).append(";color:").append(color);
        if (!look_->more.empty())
            style.append(";").append(look_->more);
        return style;
    }

    std::string &out_;
    const html_element &block_;
    const html_copy &copy_;
    const look *look_ = nullptr;
};

constexpr std::string_view table = "<table role=\"presentation\" cellpadding=\"0\" "
                                   "cellspacing=\"0\" border=\"0\" width=\"";

} // namespace

std::string html_email(const html_copy &copy)
{
    std::string page("<!DOCTYPE html>\n<html lang=\"");
    page.append(copy.lang).append("\">\n<head>\n<meta charset=\"utf-8\" />\n");
    page += "<meta name=\"viewport\" content=\"width=device-width, initial-scale=1\" />\n"
            "<meta name=\"color-scheme\" content=\"light\" />\n"
            "<meta name=\"format-detection\" content=\"telephone=no\" />\n";
    page.append("<title>").append(copy.title).append("</title>\n</head>\n");
    page += "<body style=\"margin:0;padding:0;background-color:#ffffff\">\n";
    page.append(table).append("100%\"><tbody><tr>\n<td align=\"center\" style=\"padding:16px\">\n");
    page.append(table).append("380\" style=\"width:100%;max-width:380px\"><tbody>\n");
    for (const block &part : copy.shown.blocks) {
        const bool is_first = &part == &copy.shown.blocks.front();
        page.append("<tr><td style=\"padding:14px 0");
        page.append(is_first ? "" : ";border-top:1px dashed #b4b8c1").append("\">\n");
        page.append(table).append("100%\"><tbody>\n");
        const html_element block = read_html_block(part.text);
        block_writer(page, block, copy).write();
        page += "</tbody></table>\n</td></tr>\n";
    }
    page += "</tbody></table>\n</td>\n</tr></tbody></table>\n</body>\n</html>\n";
    return page;
}

} // namespace tool
