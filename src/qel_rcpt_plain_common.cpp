// Plain-text layout: lines of a fixed width.
#include "qel_rcpt_plain.h"

#include <qelstdlib.hpp>

#include <algorithm>
#include <string>
#include <string_view>

namespace
{

constexpr std::string_view white_space = " \t\n\v\f\r";

bool is_continuation(char chr)
{
    return (static_cast<unsigned char>(chr) & 0xC0U) == 0x80;
}

// As Qel_utf8_cnt counts.
std::size_t width(std::string_view text)
{
    return text.size() - static_cast<std::size_t>(std::ranges::count_if(text, is_continuation));
}

std::string_view trim_front(std::string_view text)
{
    return text.substr(std::min(text.find_first_not_of(white_space), text.size()));
}

std::string_view trim(std::string_view text)
{
    const std::string_view trimmed = trim_front(text);
    return trimmed.substr(0, trimmed.find_last_not_of(white_space) + 1); // npos + 1 is 0
}

std::string_view trim(const char *text)
{
    return trim(qel::view(text));
}

std::size_t line_len(const Qel_rcpt_plain_t *info)
{
    return std::max<std::size_t>(info->line_len, 1);
}

// A text on its way into lines. Its width is counted once and kept as lines are cut off, so that
// wrapping costs the same a byte however long the text is.
class long_text
{
  public:
    explicit long_text(std::string_view text) : rest_(trim(text)), width_(width(rest_)) {}

    bool empty() const { return rest_.empty(); }
    std::string_view rest() const { return rest_; }

    // Cuts off at most one line's width, without white space in front.
    std::string_view split_long_line(std::size_t len)
    {
        drop(rest_.size() - trim_front(rest_).size());
        if (width_ <= len)
            return take(rest_.size(), 0);
        const std::size_t space = rest_.rfind(' ', len - 1);
        if (space != std::string_view::npos)
            return take(space, 1);
        return take(hard_cut(len), 0);
    }

  private:
    // As many whole characters as fit in len bytes, and at least one.
    std::size_t hard_cut(std::size_t len) const
    {
        std::size_t cut = len;
        while (cut > 0 && is_continuation(rest_[cut]))
            --cut;
        if (cut > 0)
            return cut;
        cut = 1;
        while (cut < rest_.size() && is_continuation(rest_[cut]))
            ++cut;
        return cut;
    }

    // Cuts off len bytes, and drops as many after them as said.
    std::string_view take(std::size_t len, std::size_t dropped)
    {
        const std::string_view line = rest_.substr(0, len);
        drop(len + dropped);
        return line;
    }

    void drop(std::size_t len)
    {
        width_ -= width(rest_.substr(0, len));
        rest_.remove_prefix(len);
    }

    std::string_view rest_;
    std::size_t width_; // of rest_, in characters
};

// Where the padding of a line goes: none of it, half of it or all of it in front.
enum class align { left, center, right };

std::size_t padding(align how, std::size_t len, std::string_view line)
{
    const std::size_t used = width(line);
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

void format_aligned(const Qel_rcpt_plain_t *info, std::string_view str, align how,
                    Qel_list_str_t *ret)
{
    const std::size_t len = line_len(info);
    std::string line; // reused for every line
    for (long_text text(str); !text.empty();) {
        const std::string_view piece = text.split_long_line(len);
        line.assign(padding(how, len, piece), ' ').append(piece);
        Qel_list_str_insert(ret, line.c_str());
    }
}

// A label and its text, which go together: without a text there is no label.
std::string join_prefix(std::string_view prefix, std::string_view str)
{
    std::string joined;
    if (!prefix.empty() && !str.empty())
        joined.append(prefix).append(1, ' ');
    return joined.append(str);
}

void format_one_line(std::size_t len, std::string_view left, std::string_view right,
                     Qel_list_str_t *ret)
{
    std::string line(left);
    line.append(len - width(left) - width(right), ' ').append(right);
    Qel_list_str_insert(ret, line.c_str());
}

// The left side's first line flush left, the rest of it and the right side below, flush right.
void format_below(const Qel_rcpt_plain_t *info, std::string_view left, std::string_view right,
                  Qel_list_str_t *ret)
{
    long_text text(left);
    format_aligned(info, text.split_long_line(line_len(info)), align::left, ret);
    std::string rest(text.rest());
    format_aligned(info, rest.append(1, ' ').append(right), align::right, ret);
}

void format_sides(const Qel_rcpt_plain_t *info, std::string_view left, std::string_view right,
                  Qel_list_str_t *ret)
{
    if (left.empty() || right.empty()) {
        format_aligned(info, left, align::left, ret);
        format_aligned(info, right, align::right, ret);
        return;
    }
    if (width(left) + width(right) + 1 <= line_len(info))
        format_one_line(line_len(info), left, right, ret);
    else
        format_below(info, left, right, ret);
}

} // namespace

void Qel_rcpt_plain_add_block(const Qel_rcpt_plain_t *info, const char *block_name,
                              const Qel_list_str_t *ret) noexcept
{
    if (info == nullptr || Qel_list_str_len(ret) == 0)
        return;
    const qel::text block(Qel_list_str_join_str(ret, info->line_break));
    if (Qel_str_isspace(block.get()))
        return;
    Qel_str_upper(block.get());
    Qel_hash_dict_insert(info->blocks, block_name, block.get());
}

void Qel_rcpt_plain_format_center(const Qel_rcpt_plain_t *info, const char *str,
                                  Qel_list_str_t *ret) noexcept
{
    if (info != nullptr)
        format_aligned(info, qel::view(str), align::center, ret);
}

void Qel_rcpt_plain_format_left(const Qel_rcpt_plain_t *info, const char *str,
                                Qel_list_str_t *ret) noexcept
{
    if (info != nullptr)
        format_aligned(info, qel::view(str), align::left, ret);
}

void Qel_rcpt_plain_format_right(const Qel_rcpt_plain_t *info, const char *str,
                                 Qel_list_str_t *ret) noexcept
{
    if (info != nullptr)
        format_aligned(info, qel::view(str), align::right, ret);
}

void Qel_rcpt_plain_format_left_right(const Qel_rcpt_plain_t *info, const char *prefixl,
                                      const char *strl, const char *prefixr, const char *strr,
                                      Qel_list_str_t *ret) noexcept
{
    if (info == nullptr)
        return;
    const std::string_view left_label = trim(prefixl);
    const std::string_view left = trim(strl);
    const std::string_view right_label = trim(prefixr);
    const std::string_view right = trim(strr);

    // The right pair counts bytes: with letters beyond ASCII it moves to a line of its own a little
    // earlier. The 3 are the spaces behind the labels and the gap between the sides.
    const bool two_pairs =
        !left_label.empty() && !left.empty() && !right_label.empty() && !right.empty();
    if (two_pairs &&
        width(left_label) + width(left) + right_label.size() + right.size() + 3 > line_len(info)) {
        format_sides(info, left_label, left, ret);
        format_sides(info, right_label, right, ret);
        return;
    }
    format_sides(info, join_prefix(left_label, left), join_prefix(right_label, right), ret);
}

void Qel_rcpt_plain_format_left_prefix(const Qel_rcpt_plain_t *info, const char *prefix,
                                       const char *str, Qel_list_str_t *ret) noexcept
{
    if (info == nullptr)
        return;
    std::string line(qel::view(prefix));
    line.append(1, ' ').append(qel::view(str));
    format_aligned(info, line, align::left, ret);
}

void Qel_rcpt_plain_add_money(const Qel_rcpt_plain_t *info, const char *key, const char *val,
                              Qel_list_str_t *ret, bool negative) noexcept
{
    if (info == nullptr)
        return;
    const qel::text money(Qel_rcpt_format_money(val, &info->attrs));
    if (!money)
        return;
    std::string amount(negative ? "- " : "");
    amount.append(qel::view(money));
    Qel_rcpt_plain_format_left_right(info, nullptr, key, nullptr, amount.c_str(), ret);
}
