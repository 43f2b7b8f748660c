#include "archives/line_renderer.h"

#include "checking/findings_json.h"
#include "messages.h"
#include "reading/entries.h"
#include "writing/document.h"
#include "writing/render.h"
#include "writing/safe_text.h"

#include <qel_rcpt_chars.hpp>

#include <algorithm>
#include <functional>
#include <new>
#include <numeric>

namespace tool
{

namespace
{

// Members of a record that tell, repeated with its blocks, which one it was.
constexpr const char *repeated_members[] = {"ttid", "ordernum"};

// Of the byte, counted in characters from 1.
size_t column_of(std::string_view line, size_t offset)
{
    return 1 + qel_rcpt::width_of(line.substr(0, offset));
}

// The columns of the findings' places, found in one pass; 0 without a place.
std::vector<size_t> columns_of(std::string_view line, const std::vector<finding> &findings)
{
    std::vector<size_t> order(findings.size());
    std::iota(order.begin(), order.end(), size_t{0});
    const auto place = [&](size_t i) { return findings[i].place.value_or(0); };
    std::ranges::sort(order, {}, place);
    std::vector<size_t> columns(findings.size());
    size_t column = 1;
    for (size_t at = 0; const size_t i : order) {
        column += qel_rcpt::width_of(line.substr(at, place(i) - at));
        at = place(i);
        columns[i] = findings[i].place ? column : 0;
    }
    return columns;
}

std::string_view without_line_break(std::string_view line)
{
    for (const char end : {'\n', '\r'}) {
        if (line.ends_with(end))
            line.remove_suffix(1);
    }
    return line;
}

bool is_blank(std::string_view line)
{
    return line.find_first_not_of(blanks) == std::string_view::npos;
}

// A line that is taken back unless it is kept.
class line_in_work
{
  public:
    explicit line_in_work(std::string &lines) : lines_(lines), begin_(lines.size()) {}
    ~line_in_work() { lines_.resize(begin_); }
    line_in_work(const line_in_work &) = delete;
    line_in_work &operator=(const line_in_work &) = delete;

    void keep() { begin_ = lines_.size(); }

  private:
    std::string &lines_;
    size_t begin_;
};

void append_member(std::string &json, std::string_view name, std::string_view value)
{
    append_json_text(json, name);
    json += ": ";
    append_json_text(json, value);
}

} // namespace

struct line_renderer::position {
    const line_piece &piece;
    uint64_t number;
};

void line_renderer::render(const line_piece &piece, rendered &result) const
{
    uint64_t number = piece.first_line;
    if (piece.is_too_long)
        add_error(result, {piece, number}, "longer than 16 MiB, expected one record");
    for (std::string_view text = piece.text; !text.empty(); ++number) {
        const size_t size = std::min(text.find('\n'), text.size() - 1) + 1;
        const std::string_view line = without_line_break(text.substr(0, size));
        text.remove_prefix(size);
        if (!is_blank(line))
            add_line(result, {piece, number}, line);
    }
}

void line_renderer::add_line(rendered &result, const position &where, std::string_view line) const
{
    try {
        record_file file = parse_json_record(line);
        const Qel_rcpt_config_t config = complete(file, options_.merchant, options_.added);
        const bool is_checked = options_.check || options_.strict || !options_.quiet;
        const std::vector<finding> findings =
            is_checked ? findings_of(file, config, options_) : std::vector<finding>();
        if (options_.check)
            return add_findings(result, where, line, findings);
        warn_of(result, where, line, findings);
        if (!add_strict_error(result, where, findings))
            add_record(result, where, file, config);
    } catch (const text_error &fault) {
        std::string message("column ");
        message.append(std::to_string(column_of(line, fault.offset))).append(": ");
        message += fault.what();
        if (where.piece.is_unfinished)
            message += "; the input ends within this line";
        add_error(result, where, message);
    } catch (const std::bad_alloc &) {
        throw;
    } catch (const std::exception &fault) {
        add_error(result, where, fault.what());
    }
}

// The findings of a record that has any, and their number by rule.
void line_renderer::add_findings(rendered &result, const position &where, std::string_view line,
                                 const std::vector<finding> &findings) const
{
    ++result.records;
    if (findings.empty())
        return;
    const std::vector<size_t> columns = columns_of(line, findings);
    std::vector<size_t> sorted(findings.size());
    std::iota(sorted.begin(), sorted.end(), size_t{0});
    std::ranges::stable_sort(sorted, std::greater(),
                             [&](size_t i) { return findings[i].severity; });
    line_in_work written(result.lines);
    begin_line(result.lines, where);
    result.lines += "\"findings\": [";
    for (const size_t i : sorted) {
        const finding &each = findings[i];
        if (i != sorted.front())
            result.lines += ", ";
        text_place place;
        if (each.place)
            place = {where.number, columns[i]};
        append_finding(result.lines, each, {"", place});
        ++result.warnings[each.rule];
        result.has_bad_records = result.has_bad_records || is_error(each);
    }
    result.lines += "]}\n";
    written.keep();
}

// With --strict, in place of the receipt.
bool line_renderer::add_strict_error(rendered &result, const position &where,
                                     const std::vector<finding> &findings) const
{
    std::string message;
    for (const finding &each : findings) {
        if (options_.strict && is_error(each))
            message.append(message.empty() ? "" : "; ").append(text_of(each));
    }
    if (!message.empty())
        add_error(result, where, message);
    return !message.empty();
}

void line_renderer::warn_of(rendered &result, const position &where, std::string_view line,
                            const std::vector<finding> &findings) const
{
    for (const finding &each : findings) {
        const bool is_told = options_.strict && is_error(each); // in place of the receipt
        if (options_.quiet || is_told || !is_worth_a_warning(each))
            continue;
        if (++result.warnings[each.rule] <= most_shown_warnings)
            result.first_warnings.push_back({each.rule, where.number,
                                             each.place ? column_of(line, *each.place) : 0,
                                             text_of(each)});
    }
}

void line_renderer::add_record(rendered &result, const position &where, const record_file &file,
                               const Qel_rcpt_config_t &config) const
{
    line_in_work line(result.lines);
    begin_line(result.lines, where);
    for (const char *name : repeated_members) {
        const char *value = nullptr;
        if (!Qel_hash_dict_get(file.record.get(), name, &value))
            continue;
        append_member(result.lines, name, value);
        result.lines += ", ";
    }
    const receipt shown = tool::render(file.record.get(), config, options_.layout);
    result.lines += "\"blocks\": {";
    for (const block &part : shown.blocks) {
        if (&part != &shown.blocks.front())
            result.lines += ", ";
        append_json_text(result.lines, part.key);
        result.lines += ": ";
        append_json_block(result.lines, shown, part);
    }
    result.lines += "}}\n";
    line.keep();
    ++result.records;
}

void line_renderer::add_error(rendered &result, const position &where,
                              std::string_view message) const
{
    line_in_work line(result.lines);
    begin_line(result.lines, where);
    append_member(result.lines, "error", masked(message));
    result.lines += "}\n";
    line.keep();
    ++result.errors;
}

void line_renderer::begin_line(std::string &lines, const position &where) const
{
    lines += '{';
    if (options_.files.size() > 1) {
        append_member(lines, "file", options_.files[where.piece.file]);
        lines += ", ";
    }
    lines.append("\"line\": ").append(std::to_string(where.number)).append(", ");
}

} // namespace tool
