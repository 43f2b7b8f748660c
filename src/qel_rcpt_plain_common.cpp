// Plain-text layout: lines of a fixed width.
#include "qel_rcpt_chars.hpp"
#include "qel_rcpt_lines.hpp"

#include <algorithm>
#include <string>
#include <string_view>

using qel_rcpt::is_continuation;
using qel_rcpt::line_sink;
using qel_rcpt::trim;
using qel_rcpt::trim_front;
using qel_rcpt::width_of;

namespace
{

std::size_t line_len(const Qel_rcpt_plain_t &info)
{
    return std::clamp<std::size_t>(info.line_len, 1, qel_rcpt::most_columns);
}

// A trimmed text on its way into lines. Its width is counted once and kept as lines are cut off, so
// that wrapping costs the same a byte however long the text is.
class long_text
{
  public:
    explicit long_text(std::string_view text) : rest_(text), width_(width_of(text)) {}

    bool empty() const { return rest_.empty(); }
    std::string_view rest() const { return rest_; }

    // A piece of the text and its width.
    struct line {
        std::string_view text;
        std::size_t width;
    };

    // Cuts off at most one line's width, without white space in front.
    line split_long_line(std::size_t len)
    {
        cut_off(rest_.size() - trim_front(rest_).size());
        if (width_ <= len)
            return cut_off(rest_.size());
        const std::size_t space = rest_.rfind(' ', len - 1);
        if (space == std::string_view::npos)
            return cut_off(hard_cut(len));
        const line before = cut_off(space);
        cut_off(1);
        return before;
    }

  private:
    // As many whole characters as fit in len bytes, and at least one. The text has more than len,
    // so that another follows.
    std::size_t hard_cut(std::size_t len) const
    {
        std::size_t cut = len;
        while (cut > 0 && is_continuation(rest_[cut]))
            --cut;
        if (cut > 0)
            return cut;
        cut = 1;
        while (is_continuation(rest_[cut]))
            ++cut;
        return cut;
    }

    line cut_off(std::size_t len)
    {
        const std::string_view text = rest_.substr(0, len);
        const line off = {text, len == rest_.size() ? width_ : width_of(text)};
        width_ -= off.width;
        rest_.remove_prefix(len);
        return off;
    }

    std::string_view rest_;
    std::size_t width_; // of rest_, in characters
};

// Where the padding of a line goes: none of it, half of it or all of it in front.
enum class align { left, center, right };

std::size_t padding(align how, std::size_t len, std::size_t used)
{
    const std::size_t spare = len > used ? len - used : 0;
    switch (how) {
    case align::left:
        return 0;
    case align::center:
        return spare / 2;
    case align::right:
        return spare;
    }
    return 0;
}

void format_aligned(const Qel_rcpt_plain_t &info, std::string_view str, align how, line_sink &lines)
{
    const std::size_t len = line_len(info);
    for (long_text text(trim(str)); !text.empty();) {
        const auto [line, width] = text.split_long_line(len);
        lines.add_line(padding(how, len, width), line, 0, {});
    }
}

// A label and its text, which go together: without a text there is no label.
class labelled_text
{
  public:
    labelled_text(std::string_view label, std::string_view text) : view_(text)
    {
        if (label.empty() || text.empty())
            return;
        joined_.reserve(label.size() + 1 + text.size());
        view_ = joined_.append(label).append(1, ' ').append(text);
    }
    labelled_text(const labelled_text &) = delete;
    labelled_text &operator=(const labelled_text &) = delete;

    operator std::string_view() const { return view_; }

  private:
    std::string joined_;
    std::string_view view_; // of the text alone or of joined_
};

// The left side's first line flush left, the rest of it and the right side below, flush right.
void format_below(const Qel_rcpt_plain_t &info, std::string_view left, std::string_view right,
                  line_sink &lines)
{
    long_text text(left);
    format_aligned(info, text.split_long_line(line_len(info)).text, align::left, lines);
    std::string rest(text.rest());
    format_aligned(info, rest.append(1, ' ').append(right), align::right, lines);
}

void format_sides(const Qel_rcpt_plain_t &info, std::string_view left, std::string_view right,
                  line_sink &lines)
{
    if (left.empty() || right.empty()) {
        format_aligned(info, left, align::left, lines);
        format_aligned(info, right, align::right, lines);
        return;
    }
    const std::size_t len = line_len(info);
    const std::size_t used = width_of(left) + width_of(right);
    if (used + 1 <= len)
        lines.add_line(0, left, len - used, right);
    else
        format_below(info, left, right, lines);
}

// Lines as entries of a list.
class list_sink final : public line_sink
{
  public:
    explicit list_sink(Qel_list_str_t *list) : list_(list) {}

    void add_line(std::size_t indent, std::string_view left, std::size_t gap,
                  std::string_view right) override
    {
        line_.assign(indent, ' ').append(left).append(gap, ' ').append(right);
        Qel_list_str_insert(list_, line_.c_str());
    }

  private:
    Qel_list_str_t *list_;
    std::string line_; // reused for every line
};

} // namespace

void qel_rcpt::format_center(const Qel_rcpt_plain_t &info, std::string_view str, line_sink &lines)
{
    format_aligned(info, str, align::center, lines);
}

void qel_rcpt::format_left(const Qel_rcpt_plain_t &info, std::string_view str, line_sink &lines)
{
    format_aligned(info, str, align::left, lines);
}

void qel_rcpt::format_right(const Qel_rcpt_plain_t &info, std::string_view str, line_sink &lines)
{
    format_aligned(info, str, align::right, lines);
}

void qel_rcpt::format_left_right(const Qel_rcpt_plain_t &info, std::string_view left,
                                 std::string_view right, line_sink &lines)
{
    format_sides(info, trim(left), trim(right), lines);
}

void qel_rcpt::format_left_right(const Qel_rcpt_plain_t &info, const line_sides &sides,
                                 line_sink &lines)
{
    const std::string_view left_label = trim(sides.left_label);
    const std::string_view left = trim(sides.left);
    const std::string_view right_label = trim(sides.right_label);
    const std::string_view right = trim(sides.right);

    // The right pair counts bytes: with letters beyond ASCII it moves to a line of its own a little
    // earlier. The 3 are the spaces behind the labels and the gap between the sides.
    const bool two_pairs =
        !left_label.empty() && !left.empty() && !right_label.empty() && !right.empty();
    if (two_pairs && width_of(left_label) + width_of(left) + right_label.size() + right.size() + 3 >
                         line_len(info)) {
        format_sides(info, left_label, left, lines);
        format_sides(info, right_label, right, lines);
        return;
    }
    format_sides(info, labelled_text(left_label, left), labelled_text(right_label, right), lines);
}

void qel_rcpt::format_left_prefix(const Qel_rcpt_plain_t &info, std::string_view prefix,
                                  std::string_view str, line_sink &lines)
{
    std::string line;
    line.reserve(prefix.size() + 1 + str.size());
    format_aligned(info, line.append(prefix).append(1, ' ').append(str), align::left, lines);
}

void qel_rcpt::format_amount(const Qel_rcpt_plain_t &info, std::string_view label,
                             const char *amount, line_sink &lines, bool negative)
{
    const qel::text money(Qel_rcpt_format_money(amount, &info.attrs));
    if (!money)
        return;
    std::string shown(negative ? "- " : "");
    format_left_right(info, label, shown.append(qel::view(money)), lines);
}

void qel_rcpt::store_block(const Qel_rcpt_plain_t &info, const char *key, char *block)
{
    if (Qel_str_isspace(block))
        return;
    Qel_str_upper(block);
    Qel_hash_dict_insert(info.blocks, key, block);
}

// The exported operations, whose lines go into a list

void Qel_rcpt_plain_add_block(const Qel_rcpt_plain_t *info, const char *block_name,
                              const Qel_list_str_t *ret) noexcept
{
    if (info == nullptr)
        return;
    const qel::text block(Qel_list_str_join_str(ret, info->line_break));
    qel_rcpt::store_block(*info, block_name, block.get());
}

void Qel_rcpt_plain_format_center(const Qel_rcpt_plain_t *info, const char *str,
                                  Qel_list_str_t *ret) noexcept
{
    list_sink lines(ret);
    if (info != nullptr)
        qel_rcpt::format_center(*info, qel::view(str), lines);
}

void Qel_rcpt_plain_format_left(const Qel_rcpt_plain_t *info, const char *str,
                                Qel_list_str_t *ret) noexcept
{
    list_sink lines(ret);
    if (info != nullptr)
        qel_rcpt::format_left(*info, qel::view(str), lines);
}

void Qel_rcpt_plain_format_right(const Qel_rcpt_plain_t *info, const char *str,
                                 Qel_list_str_t *ret) noexcept
{
    list_sink lines(ret);
    if (info != nullptr)
        qel_rcpt::format_right(*info, qel::view(str), lines);
}

void Qel_rcpt_plain_format_left_right(const Qel_rcpt_plain_t *info, const char *prefixl,
                                      const char *strl, const char *prefixr, const char *strr,
                                      Qel_list_str_t *ret) noexcept
{
    list_sink lines(ret);
    if (info != nullptr)
        qel_rcpt::format_left_right(
            *info, {qel::view(prefixl), qel::view(strl), qel::view(prefixr), qel::view(strr)},
            lines);
}

void Qel_rcpt_plain_format_left_prefix(const Qel_rcpt_plain_t *info, const char *prefix,
                                       const char *str, Qel_list_str_t *ret) noexcept
{
    list_sink lines(ret);
    if (info != nullptr)
        qel_rcpt::format_left_prefix(*info, qel::view(prefix), qel::view(str), lines);
}

void Qel_rcpt_plain_add_money(const Qel_rcpt_plain_t *info, const char *key, const char *val,
                              Qel_list_str_t *ret, bool negative) noexcept
{
    list_sink lines(ret);
    if (info != nullptr)
        qel_rcpt::format_amount(*info, qel::view(key), val, lines, negative);
}
