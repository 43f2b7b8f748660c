// Which lines of a copy stand out on paper: known by their block, their place in it and the words
// of the catalogue, so that what a record says elsewhere is not taken for one of them.
#include "qel_rcpt_chars.hpp"
#include "qel_rcpt_moneris_ecomm.hpp"
#include "qel_rcpt_print.hpp"

#include <algorithm>
#include <array>
#include <initializer_list>

using qel_rcpt::line_style;
using qel_rcpt::trim;
using qel_rcpt::trim_front;

namespace
{

using text_lines = std::span<const std::string_view>;
using line_styles = std::span<line_style>;

using language_rows = std::span<const qel_rcpt::language>;

// A message as it stands in a text receipt: in capitals.
class capitals
{
  public:
    capitals(Qel_rcpt_lang_t lang, Qel_rcpt_msg_t msg, std::string_view behind = {})
    {
        char *const end =
            std::ranges::copy(qel::view(Qel_rcpt_msg_to_string(lang, msg)).substr(0, longest),
                              text_.data())
                .out;
        std::ranges::copy(behind, end);
        Qel_str_upper(text_.data());
    }
    operator std::string_view() const { return qel::view(text_.data()); }

  private:
    static constexpr std::size_t longest = 96; // of those that are looked for
    std::array<char, longest + 8> text_{};
};

// How many of the first lines are together the text, which may be broken and padded; 0 when they
// are not.
std::size_t lines_that_read(text_lines lines, std::string_view text)
{
    text = trim(text);
    if (text.empty())
        return 0;
    for (std::size_t i = 0; i < lines.size(); ++i) {
        const std::string_view line = trim(lines[i]);
        if (line.empty() || !text.starts_with(line))
            return 0;
        text = trim_front(text.substr(line.size()));
        if (text.empty())
            return i + 1;
    }
    return 0;
}

bool reads(text_lines lines, std::string_view text)
{
    return !lines.empty() && lines_that_read(lines, text) == lines.size();
}

using messages = std::initializer_list<Qel_rcpt_msg_t>;

// Whether a predicate holds for one of the messages in one of the languages.
template <typename Holds>
bool any_message(language_rows langs, messages wanted, std::string_view behind, Holds holds)
{
    return std::ranges::any_of(wanted, [&](Qel_rcpt_msg_t msg) {
        return std::ranges::any_of(
            langs, [&](const auto &lang) { return holds(capitals(lang.id, msg, behind)); });
    });
}

bool reads_message(text_lines lines, language_rows langs, messages wanted)
{
    return any_message(langs, wanted, {},
                       [&](std::string_view text) { return reads(lines, text); });
}

// Whether the line begins with one of the messages as a label.
bool has_label(std::string_view line, language_rows langs, messages wanted)
{
    return any_message(langs, wanted, ":",
                       [&](std::string_view text) { return line.starts_with(text); });
}

// Lines between two blank ones, as places in the block.
struct paragraph {
    std::size_t begin = 0;
    std::size_t end = 0;

    [[nodiscard]] bool empty() const { return begin == end; }
    [[nodiscard]] text_lines of(text_lines lines) const
    {
        return lines.subspan(begin, end - begin);
    }
};

bool is_blank(std::string_view line)
{
    return trim_front(line).empty();
}

paragraph paragraph_from(text_lines lines, std::size_t at)
{
    while (at < lines.size() && is_blank(lines[at]))
        ++at;
    paragraph found{at, at};
    while (found.end < lines.size() && !is_blank(lines[found.end]))
        ++found.end;
    return found;
}

paragraph paragraph_before(text_lines lines, std::size_t at)
{
    while (at > 0 && is_blank(lines[at - 1]))
        --at;
    paragraph found{at, at};
    while (found.begin > 0 && !is_blank(lines[found.begin - 1]))
        --found.begin;
    return found;
}

void set(line_styles styles, const paragraph &lines, line_style style)
{
    std::ranges::fill(styles.subspan(lines.begin, lines.end - lines.begin), style);
}

// The mark of a duplicate is centred; a value that reads so at the margin is none.
bool is_duplicate_mark(text_lines lines, language_rows langs)
{
    return !lines.empty() && lines.front().starts_with(' ') &&
           reads_message(lines, langs, {QEL_RCPT_MSG_DUPLICATE});
}

// A line below a label with the label's amount, or with the rest of it: it has no letter.
bool is_amount_line(std::string_view line)
{
    const auto is_letter = [](char chr) { return chr >= 'A' && chr <= 'Z'; };
    return !is_blank(line) && std::ranges::none_of(line, is_letter);
}

// The copy's language, from the words that say whose it is; all of them where that is not told.
language_rows languages_of(std::string_view notice, bool is_custcopy)
{
    const Qel_rcpt_msg_t whose = is_custcopy ? QEL_RCPT_MSG_CUST_COPY : QEL_RCPT_MSG_MERCH_COPY;
    for (const qel_rcpt::language &lang : qel_rcpt::languages) {
        if (notice.find(capitals(lang.id, whose)) != std::string_view::npos)
            return {&lang, 1};
    }
    return qel_rcpt::languages;
}

// Whether one of the messages stands in the lines, between other words.
bool holds_message(text_lines lines, language_rows langs, messages wanted)
{
    std::string text;
    for (const std::string_view line : lines)
        text.append(trim(line)).append(1, ' ');
    return any_message(langs, wanted, {}, [&](std::string_view message) {
        return text.find(message) != std::string::npos;
    });
}

} // namespace

qel_rcpt::emphasis::emphasis(const Qel_hash_dict_t *blocks, const Qel_hash_dict_t *kvs,
                             bool is_custcopy)
    : kvs_(kvs),
      languages_(languages_of(qel::view(get(blocks, is_custcopy ? "cust_notice" : "merch_notice")),
                              is_custcopy))
{
    const char *merchant = get(blocks, is_custcopy ? "cust_merch_info" : "merch_merch_info");
    std::array<std::string_view, 3> first{};
    std::size_t count = 0;
    for_each_line(qel::view(merchant), [&](std::string_view line) {
        if (count < first.size())
            first[count++] = line;
    });
    const text_lines lines(first.data(), count);
    const paragraph heading = paragraph_from(lines, 0);
    if (heading.end >= lines.size()) // nothing below it
        return;
    if (reads_message(heading.of(lines), languages_, {QEL_RCPT_MSG_TRECORD}))
        form_ = form::moneris;
    else if (reads_message(heading.of(lines), languages_, {QEL_RCPT_MSG_ONLINERCPT}))
        form_ = form::moneris_ecomm;
}

void qel_rcpt::emphasis::mark(std::string_view block, text_lines lines, line_styles styles) const
{
    struct marker {
        std::string_view block;
        void (emphasis::*mark)(text_lines lines, line_styles styles) const;
    };
    static constexpr marker markers[] = {
        {"merch_info", &emphasis::mark_merchant},
        {"type", &emphasis::mark_type},
        {"reference", &emphasis::mark_reference},
        {"order_money", &emphasis::mark_money},
        {"money", &emphasis::mark_money},
        {"line_items", &emphasis::mark_table},
        {"disposition", &emphasis::mark_disposition},
        {"notice", &emphasis::mark_notice},
    };
    const auto *found = std::ranges::find(markers, block, &marker::block);
    if (found != std::end(markers))
        (this->*found->mark)(lines, styles);
}

// The Moneris layouts have a heading above the merchant, and in store the mark of a duplicate.
void qel_rcpt::emphasis::mark_merchant(text_lines lines, line_styles styles) const
{
    paragraph merchant = paragraph_from(lines, 0);
    if (form_ != form::plain)
        merchant = paragraph_from(lines, merchant.end);
    const paragraph below = paragraph_from(lines, merchant.end);
    if (form_ == form::moneris && !below.empty() &&
        is_duplicate_mark(merchant.of(lines), languages_)) {
        set(styles, merchant, line_style::inverted);
        merchant = below;
    }
    if (merchant.empty())
        return;
    std::size_t count = 1;
    if (kvs_ != nullptr) {
        std::string name(qel::view(get(kvs_, "merch_name")));
        Qel_str_upper(name.data());
        count = lines_that_read(merchant.of(lines), name);
    }
    set(styles, {merchant.begin, merchant.begin + count},
        count == 1 ? line_style::bold_tall : line_style::bold);
}

// One of a table, of which the others need the receipt.
// NOLINTNEXTLINE(readability-convert-member-functions-to-static)
void qel_rcpt::emphasis::mark_type(text_lines /*lines*/, line_styles styles) const
{
    std::ranges::fill(styles, line_style::bold);
}

// A title is followed by a blank line; without one the block begins with the lane.
void qel_rcpt::emphasis::mark_reference(text_lines lines, line_styles styles) const
{
    const paragraph title = paragraph_from(lines, 0);
    switch (form_) {
    case form::plain:
        if (title.begin == 0 && title.end < lines.size() &&
            !has_label(lines.front(), languages_, {QEL_RCPT_MSG_LANE}))
            set(styles, title, line_style::bold);
        break;
    case form::moneris:
        break; // has a block of its own for it
    case form::moneris_ecomm:
        if (has_label(lines.front(), languages_, {QEL_RCPT_MSG_TRANTYPE}))
            styles.front() = line_style::bold;
        break;
    }
}

// The total stands below whatever the record words, so it is looked for from the end.
void qel_rcpt::emphasis::mark_money(text_lines lines, line_styles styles) const
{
    std::size_t total = 0; // place + 1
    any_message(languages_, {QEL_RCPT_MSG_TOTAL, QEL_RCPT_MSG_PAID}, ":",
                [&](std::string_view label) {
                    for (std::size_t i = lines.size(); i > total; --i) {
                        if (lines[i - 1].starts_with(label))
                            total = i;
                    }
                    return false;
                });
    if (total == 0)
        return;
    paragraph found{total - 1, total};
    while (found.end < lines.size() && is_amount_line(lines[found.end]))
        ++found.end;
    set(styles, found, line_style::bold);
}

// The e-commerce table ends with the total and a rule.
void qel_rcpt::emphasis::mark_table(text_lines lines, line_styles styles) const
{
    constexpr std::string_view to_label = qel_rcpt::moneris_ecomm::to_amount_column;
    constexpr std::size_t label_width = qel_rcpt::moneris_ecomm::label_width;
    if (form_ != form::moneris_ecomm || lines.size() < 2)
        return;
    const std::size_t last = lines.size() - 2;
    if (!lines[last].starts_with(to_label))
        return;
    const std::string_view label = trim(lines[last].substr(to_label.size(), label_width));
    const auto is_label = [&](std::string_view text) {
        return label == trim(text.substr(0, label_width));
    };
    if (any_message(languages_, {QEL_RCPT_MSG_TOTAL, QEL_RCPT_MSG_AUTH_AMOUNT}, {}, is_label))
        styles[last] = line_style::bold;
}

// Of a general receipt: behind what the card and its holder did, if anything; free text may come
// later. In store: the last paragraph but for the form factor, between two codes.
void qel_rcpt::emphasis::mark_disposition(text_lines lines, line_styles styles) const
{
    static constexpr messages outcomes = {
        QEL_RCPT_MSG_APPROVED,     QEL_RCPT_MSG_APPROVED_TY,  QEL_RCPT_MSG_PARTIAL_APPROVAL,
        QEL_RCPT_MSG_DECLINED,     QEL_RCPT_MSG_DECLINE_CALL, QEL_RCPT_MSG_NOT_APPROVED,
        QEL_RCPT_MSG_NOT_COMPLETE, QEL_RCPT_MSG_CANCELED,     QEL_RCPT_MSG_VOIDED};
    if (form_ == form::moneris) {
        paragraph outcome = paragraph_before(lines, lines.size());
        if (!outcome.empty() && lines[outcome.begin].starts_with("FF/DT"))
            outcome = paragraph_before(lines, outcome.begin);
        if (holds_message(outcome.of(lines), languages_, outcomes))
            set(styles, outcome, line_style::bold);
        return;
    }
    const paragraph first = paragraph_from(lines, 0);
    for (const paragraph &outcome : {first, paragraph_from(lines, first.end)}) {
        if (reads_message(outcome.of(lines), languages_, outcomes)) {
            set(styles, outcome, line_style::bold);
            return;
        }
    }
}

void qel_rcpt::emphasis::mark_notice(text_lines lines, line_styles styles) const
{
    for (paragraph one = paragraph_from(lines, 0); !one.empty();
         one = paragraph_from(lines, one.end)) {
        if (is_duplicate_mark(one.of(lines), languages_))
            set(styles, one, line_style::inverted);
    }
}
