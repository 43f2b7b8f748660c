#include "documents/manual.h"

#include <vector>

namespace documents
{

namespace
{

struct replacement {
    std::string_view from;
    std::string_view to;
};

constexpr replacement escapes[] = {
    {"\\", "\\e"}, {"-", "\\-"}, {"…", "..."}, {"&gt;", ">"}, {"&lt;", "<"}, {"&amp;", "&"},
};

std::string escaped(std::string_view text)
{
    std::string out;
    while (!text.empty()) {
        std::string_view from = text.substr(0, 1);
        std::string_view to = from;
        for (const replacement &escape : escapes) {
            if (text.starts_with(escape.from))
                from = escape.from, to = escape.to;
        }
        out += to;
        text.remove_prefix(from.size());
    }
    return out;
}

struct emphasis {
    std::string_view mark;
    std::string_view begin;
};

// The longer mark first.
constexpr emphasis emphases[] = {{"`", "\\fB"}, {"**", "\\fB"}, {"*", "\\fI"}};

// The text of a paragraph: emphasis as fonts, behind a link the other document that it
// leads to.
std::string inline_text(std::string_view text)
{
    std::string out;
    while (!text.empty()) {
        const emphasis *found = nullptr;
        for (const emphasis &known : emphases) {
            if (found == nullptr && text.starts_with(known.mark))
                found = &known;
        }
        if (found != nullptr) {
            text.remove_prefix(found->mark.size());
            const size_t end = text.find(found->mark);
            out.append(found->begin).append(escaped(text.substr(0, end))).append("\\fR");
            text.remove_prefix(std::min(end, text.size() - found->mark.size()) +
                               found->mark.size());
            continue;
        }
        const size_t middle = text.starts_with('[') ? text.find("](") : std::string_view::npos;
        if (middle != std::string_view::npos) {
            const size_t end = text.find(')', middle);
            const std::string_view document = text.substr(middle + 2, end - middle - 2);
            out += inline_text(text.substr(1, middle - 1));
            if (!document.starts_with('#'))
                out.append(" (docs/").append(escaped(document)).append(")");
            text.remove_prefix(end + 1);
            continue;
        }
        const size_t next = std::min(text.find_first_of("`*[", 1), text.size());
        out += escaped(text.substr(0, next));
        text.remove_prefix(next);
    }
    const bool is_request = out.starts_with('.') || out.starts_with('\'');
    return is_request ? "\\&" + out : out;
}

std::vector<std::string_view> cells_of(std::string_view row)
{
    std::vector<std::string_view> cells;
    row.remove_prefix(2);
    while (!row.empty()) {
        const size_t end = std::min(row.find(" |"), row.size());
        cells.push_back(row.substr(0, end));
        row.remove_prefix(std::min(end + 3, row.size()));
    }
    return cells;
}

// A row as a tagged paragraph: its first cell is the tag; a cell is named by its column where that
// is not plain from what it says.
std::string tagged_row(const std::vector<std::string_view> &columns, std::string_view row)
{
    const std::vector<std::string_view> cells = cells_of(row);
    std::string out = ".TP\n" + inline_text(cells.front()) + "\n";
    for (size_t i = 1; i < cells.size(); ++i) {
        if (cells[i].empty())
            continue;
        if (columns.size() == 2 || columns[i] == "meaning")
            out += inline_text(cells[i]) + "\n";
        else
            out.append(".br\n").append(columns[i]).append(": ") += inline_text(cells[i]) + "\n";
    }
    return out;
}

// Goes through the lines; what a line means depends on the ones before it.
class page
{
  public:
    void add(std::string_view line)
    {
        if (line.starts_with("```"))
            return fence();
        if (is_code_)
            return add_code(line);
        if (line.starts_with("    ") && after_blank_)
            return add_indented(line.substr(4));
        end_indented();
        if (line.empty() || line.starts_with("# "))
            return add_blank();
        if (line.starts_with("## ")) {
            out_ += ".SH " + escaped(line.substr(3)) + "\n";
            needs_break_ = false;
        } else if (line.starts_with("| ")) {
            add_row(line);
        } else if (line.starts_with("|--")) {
            return;
        } else if (line.starts_with("- ")) {
            out_ += ".IP \\(bu 2\n" + inline_text(line.substr(2)) + "\n";
        } else {
            add_paragraph(line);
        }
        after_blank_ = false;
    }

    std::string take()
    {
        end_indented();
        return std::move(out_);
    }

  private:
    void fence()
    {
        out_ += is_code_ ? ".EE\n" : ".PP\n.EX\n";
        is_code_ = !is_code_;
    }

    void add_code(std::string_view line)
    {
        const bool is_request = line.starts_with('.') || line.starts_with('\'');
        out_.append(is_request ? "\\&" : "").append(escaped(line)).append("\n");
    }

    void add_indented(std::string_view line)
    {
        if (!is_indented_)
            out_ += ".PP\n.EX\n";
        is_indented_ = true;
        add_code(line);
    }

    void end_indented()
    {
        if (is_indented_)
            out_ += ".EE\n";
        is_indented_ = false;
    }

    void add_blank()
    {
        columns_.clear();
        after_blank_ = true;
        needs_break_ = !out_.empty();
    }

    void add_row(std::string_view line)
    {
        if (columns_.empty())
            columns_ = cells_of(line);
        else
            out_ += tagged_row(columns_, line);
    }

    void add_paragraph(std::string_view line)
    {
        if (after_blank_ && needs_break_)
            out_ += ".PP\n";
        const size_t first = line.find_first_not_of(" >");
        out_ += inline_text(line.substr(std::min(first, line.size()))) + "\n";
        needs_break_ = true;
    }

    std::string out_;
    std::vector<std::string_view> columns_;
    bool is_code_ = false;
    bool is_indented_ = false;
    bool after_blank_ = true;
    bool needs_break_ = false;
};

} // namespace

std::string manual_body(std::string_view markdown)
{
    page page;
    while (!markdown.empty()) {
        const size_t end = std::min(markdown.find('\n'), markdown.size());
        page.add(markdown.substr(0, end));
        markdown.remove_prefix(std::min(end + 1, markdown.size()));
    }
    return page.take();
}

} // namespace documents
