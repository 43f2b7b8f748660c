// The layout operations at any width.
#include "fuzz.hpp"

#include <qel_rcpt_plain.h>

#include <array>

namespace
{

using fuzz::require;
using fuzz::visible;
using lines = std::vector<std::string>;

constexpr const char *white_space = " \t\n\v\f\r";

std::size_t width_of(std::string_view text)
{
    return text.size() -
           static_cast<std::size_t>(std::ranges::count_if(text, fuzz::is_continuation));
}

std::string trimmed(const std::string &text)
{
    const std::size_t first = text.find_first_not_of(white_space);
    if (first == std::string::npos)
        return "";
    return text.substr(first, text.find_last_not_of(white_space) + 1 - first);
}

// The lines of a text one by one, each from a copy of what is left.
lines wrapped(std::string text, std::size_t width)
{
    lines all;
    for (text = trimmed(text); !text.empty(); text = trimmed(text)) {
        std::size_t end = text.size();
        std::size_t rest = text.size();
        if (width_of(text) > width) {
            end = text.rfind(' ', width - 1);
            rest = end + 1;
            if (end == std::string::npos) {
                end = width;
                while (end > 0 && fuzz::is_continuation(text[end]))
                    --end;
                if (end == 0) {
                    do
                        ++end;
                    while (end < text.size() && fuzz::is_continuation(text[end]));
                }
                rest = end;
            }
        }
        all.push_back(text.substr(0, end));
        text.erase(0, rest);
    }
    return all;
}

class sheet
{
  public:
    explicit sheet(std::size_t width)
    {
        info.line_len = width;
        Qel_rcpt_setup_rcpt_attrs(&info.attrs, nullptr, true);
    }

    Qel_list_str_t *list() { return list_.get(); }

    // After checking what holds for all lines: none is too wide, and none begins inside a
    // character.
    lines checked(bool is_valid) const
    {
        lines all;
        for (std::size_t i = 0; i < Qel_list_str_len(list_.get()); ++i) {
            all.emplace_back(Qel_list_str_at(list_.get(), i));
            require(width_of(all.back()) <= std::max<std::size_t>(info.line_len, 1),
                    "no line is too wide");
            require(!is_valid || fuzz::is_valid_utf8(all.back()), "no character is cut");
        }
        return all;
    }

    Qel_rcpt_plain_t info{};

  private:
    qel::list_str list_{Qel_list_str_create(QEL_LIST_STR_NONE)};
};

enum class align { left, center, right };

void check_aligned(const std::string &text, std::size_t width, align how)
{
    sheet page(width);
    constexpr decltype(&Qel_rcpt_plain_format_left) formats[] = {
        Qel_rcpt_plain_format_left, Qel_rcpt_plain_format_center, Qel_rcpt_plain_format_right};
    formats[static_cast<std::size_t>(how)](&page.info, text.c_str(), page.list());

    lines expected = wrapped(text, width);
    for (std::string &line : expected) {
        const std::size_t spare = width - width_of(line);
        const std::size_t pads[] = {0, spare / 2, spare};
        line.insert(0, pads[static_cast<std::size_t>(how)], ' ');
    }
    require(page.checked(fuzz::is_valid_utf8(text)) == expected, "lines are wrapped and aligned");
}

std::string all_visible(const lines &all)
{
    std::string kept;
    for (const std::string &line : all)
        kept += visible(line);
    return kept;
}

// Left prefix, left text, right prefix, right text.
using four_texts = std::array<std::string, 4>;

std::string joined(const std::string &prefix, const std::string &text)
{
    const std::string label = trimmed(prefix);
    const std::string value = trimmed(text);
    return value.empty() || label.empty() ? value : label + ' ' + value;
}

void check_sides(const four_texts &texts, std::size_t width)
{
    sheet page(width);
    Qel_rcpt_plain_format_left_right(&page.info, texts[0].c_str(), texts[1].c_str(),
                                     texts[2].c_str(), texts[3].c_str(), page.list());
    const lines all = page.checked(std::ranges::all_of(texts, fuzz::is_valid_utf8));

    const std::string left = joined(texts[0], texts[1]);
    const std::string right = joined(texts[2], texts[3]);
    require(all_visible(all) == visible(left + right), "nothing is lost");
    if (right.empty())
        require(all == wrapped(left, width), "a left side is laid out alone");
    if (!all.empty() && !right.empty())
        require(width_of(all.back()) == width, "the right side ends in the last column");
    const bool are_short = !left.empty() && !right.empty() &&
                           width_of(left) + right.size() + 1 <= width; // even if counted in bytes
    if (are_short)
        require(
            all == lines{left + std::string(width - width_of(left) - width_of(right), ' ') + right},
            "what fits is one line");
}

void check_money(const std::string &label, const std::string &amount, std::size_t width,
                 bool negative)
{
    sheet page(width);
    Qel_rcpt_plain_add_money(&page.info, label.c_str(), amount.c_str(), page.list(), negative);
    const lines all = page.checked(fuzz::is_valid_utf8(label));
    const qel::text money(Qel_rcpt_format_money(amount.c_str(), &page.info.attrs));
    require(all.empty() == (money == nullptr), "an amount has a line");
    if (money)
        require(all_visible(all) == visible(label) + (negative ? "-" : "") + money.get(),
                "the label and the amount are shown");
}

void check_block(const four_texts &texts, std::size_t width)
{
    const qel::dict blocks(Qel_hash_dict_create(1, 75, QEL_HASH_DICT_KEYS_ORDERED));
    sheet page(width);
    page.info.blocks = blocks.get();
    page.info.line_break = texts[0].c_str();
    std::string expected;
    for (std::size_t i = 1; i < texts.size(); ++i) {
        Qel_list_str_insert(page.list(), texts[i].c_str());
        expected += (i > 1 ? texts[0] : "") + texts[i];
    }
    Qel_rcpt_plain_add_block(&page.info, "block", page.list());
    const char *stored = Qel_hash_dict_get_direct(blocks.get(), "block");
    require((stored == nullptr) == visible(expected).empty(), "a block is stored unless blank");
    Qel_str_upper(expected.data());
    require(stored == nullptr || stored == expected, "a block is its lines in upper case");
    require(expected.size() == std::string_view(expected.c_str()).size(), "of the same length");
}

} // namespace

// Two bytes of width and four texts.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    fuzz::input from(data, size);
    const std::size_t low = from.byte();
    const std::size_t width = std::max<std::size_t>(1, low + (from.number() % 4) * 256);
    four_texts texts;
    for (std::string &text : texts)
        text = from.text();
    for (const align how : {align::left, align::center, align::right})
        check_aligned(texts[0], width, how);
    check_sides(texts, width);
    check_sides({"", texts[1], "", texts[3]}, width);
    check_money(texts[0], texts[1], width, width % 2 == 0);
    check_block(texts, width);
    return 0;
}
