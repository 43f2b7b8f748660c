#include "messages.h"

#include "writing/output.h"
#include "writing/safe_text.h"

#include <qel_rcpt_chars.hpp>

#include <unistd.h>

#include <algorithm>

namespace tool
{

using qel_rcpt::is_continuation;
using qel_rcpt::is_digit;

namespace
{

constexpr ptrdiff_t fewest_digits = 8; // what has fewer is no card's

ptrdiff_t count_digits(std::string_view text)
{
    return std::ranges::count_if(text, is_digit);
}

bool is_control(char byte)
{
    return static_cast<unsigned char>(byte) < 0x20 || byte == 0x7F;
}

bool is_letter(char byte)
{
    const char small = static_cast<char>(byte | 0x20);
    return small >= 'a' && small <= 'z';
}

// How long the track is that begins there, up to the end of the text when it has no end of its own;
// 0 when none does.
size_t track_at(std::string_view text)
{
    constexpr size_t longest = 128;
    const bool begins = text.size() > 1 && ((text[0] == '%' && is_letter(text[1])) ||
                                            (text[0] == ';' && is_digit(text[1])));
    if (!begins)
        return 0;
    const std::string_view track = text.substr(0, longest);
    const size_t last = track.find('?');
    if (count_digits(track.substr(0, last)) < fewest_digits)
        return 0;
    return last == std::string_view::npos ? text.size() : last + 1;
}

bool ends_with_check_digit(std::string_view digits)
{
    return qel_rcpt::has_check_digit(
        digits.size(), [&](size_t i) { return static_cast<unsigned>(digits[i] - '0'); });
}

// How long the card number is that begins there, with single blanks or hyphens between its digits;
// 0 when none does.
size_t card_number_at(std::string_view text)
{
    constexpr size_t least_digits = 13;
    constexpr size_t most_digits = 19;
    std::string digits;
    size_t size = 0;
    for (size_t at = 0; at < text.size() && digits.size() < most_digits; ++at) {
        const bool is_gap =
            (text[at] == ' ' || text[at] == '-') && at > 0 && is_digit(text[at - 1]);
        if (is_digit(text[at]))
            digits += text[at];
        else if (!is_gap)
            break;
        const bool is_end = at + 1 == text.size() || !is_digit(text[at + 1]);
        if (!is_gap && is_end && digits.size() >= least_digits && ends_with_check_digit(digits))
            size = at + 1;
    }
    return size;
}

void mask_number(std::string_view number, std::string &shown)
{
    constexpr ptrdiff_t first_shown = 6;
    constexpr ptrdiff_t last_shown = 4;
    const ptrdiff_t count = count_digits(number);
    ptrdiff_t digit = 0;
    for (const char byte : number) {
        const bool is_hidden = is_digit(byte) && digit >= first_shown && digit < count - last_shown;
        shown += is_hidden ? '*' : byte;
        digit += is_digit(byte) ? 1 : 0;
    }
}

} // namespace

std::string masked(std::string_view text)
{
    constexpr size_t least_hidden = 12;
    if (count_digits(text) < fewest_digits) // as in nearly all that is said
        return std::string(text);
    std::string shown;
    for (size_t size = 1; !text.empty(); text.remove_prefix(size)) {
        size = 1;
        if (const size_t track = track_at(text)) {
            size = track;
            shown.append(1, text.front()).append("***");
            shown.append(text[size - 1] == '?' ? "?" : "");
        } else if (is_digit(text.front())) {
            const size_t run = std::min(text.find_first_not_of("0123456789"), text.size());
            const size_t card = card_number_at(text);
            size = std::max(run, card);
            if (card > 0 || run >= least_hidden)
                mask_number(text.substr(0, size), shown);
            else
                shown += text.substr(0, size);
        } else {
            shown += text.front();
        }
    }
    return shown;
}

void complain(const std::string &message)
{
    std::string line("qelrcpt: ");
    write_all(STDERR_FILENO, line.append(for_terminal(masked(message))).append("\n"));
}

std::string in_quotes(std::string_view text)
{
    constexpr size_t longest = 60;
    constexpr size_t longest_seen = 512; // enough to see what is to be masked
    std::string shown = masked(text.substr(0, longest_seen));
    const bool is_cut = shown.size() > longest || text.size() > longest_seen;
    size_t end = std::min(shown.size(), longest);
    while (end > 0 && end < shown.size() && is_continuation(shown[end]))
        --end;
    shown = repaired(shown.substr(0, end));
    std::ranges::replace_if(shown, is_control, '?');
    return "'" + shown + (is_cut ? "..." : "") + "'";
}

std::string counted(std::uint64_t number, std::string_view noun)
{
    return std::to_string(number).append(" ").append(noun).append(number == 1 ? "" : "s");
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
    const auto [line, column] = place_at(offset);
    return name_ + ":" + std::to_string(line) + ":" + std::to_string(column);
}

text_place places::place_at(size_t offset)
{
    if (offset < offset_)
        *this = places(std::move(name_), text_);
    advance_to(std::min(offset, text_.size()));
    return {line_, column_};
}

void places::advance_to(size_t offset)
{
    for (; offset_ < offset; ++offset_) {
        if (text_[offset_] == '\n') {
            ++line_;
            column_ = 1;
        } else if (!is_continuation(text_[offset_])) {
            ++column_;
        }
    }
}

} // namespace tool
