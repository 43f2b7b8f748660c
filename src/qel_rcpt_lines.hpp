// Text laid out in lines, for the plain-text generators. The operations are those of
// qel_rcpt_plain.h, which are thin calls of these: here the lines go straight into the block's
// text, there each becomes an entry of the caller's list first.
#ifndef QEL_RCPT_LINES_HPP
#define QEL_RCPT_LINES_HPP

#include "qel_rcpt_frame.hpp"
#include "qel_rcpt_plain.h"
#include "qel_rcpt_rules.hpp"

#include <string>
#include <string_view>

namespace qel_rcpt
{

// Takes the lines that the layout makes.
class line_sink
{
  public:
    // A line of two sides, either of which may be empty, with blanks in front of each.
    virtual void add_line(std::size_t indent, std::string_view left, std::size_t gap,
                          std::string_view right) = 0;

  protected:
    ~line_sink() = default;
};

// Two labelled texts that share a line where they fit; see qel_rcpt_plain.h.
struct line_sides {
    std::string_view left_label;
    std::string_view left;
    std::string_view right_label;
    std::string_view right;
};

void format_center(const Qel_rcpt_plain_t &info, std::string_view str, line_sink &lines);
void format_left(const Qel_rcpt_plain_t &info, std::string_view str, line_sink &lines);
void format_right(const Qel_rcpt_plain_t &info, std::string_view str, line_sink &lines);
void format_left_right(const Qel_rcpt_plain_t &info, std::string_view left, std::string_view right,
                       line_sink &lines);
void format_left_right(const Qel_rcpt_plain_t &info, const line_sides &sides, line_sink &lines);
void format_left_prefix(const Qel_rcpt_plain_t &info, std::string_view prefix, std::string_view str,
                        line_sink &lines);
void format_amount(const Qel_rcpt_plain_t &info, std::string_view label, const char *amount,
                   line_sink &lines, bool negative);

// Upper-cases the block and stores it; nothing but white space is not stored.
void store_block(const Qel_rcpt_plain_t &info, const char *key, char *block);

// The state of a generator, with room for the text of one block after the other.
struct plain_receipt : Qel_rcpt_plain_t {
    std::string text;
};

// A block in the making: its lines, joined. A block builder fills it from top to bottom and stores
// it; then the next one may be begun.
class plain_block final : private line_sink
{
  public:
    explicit plain_block(plain_receipt &info)
        : info_(info), line_break_(qel::view(info.line_break)), text_(info.text)
    {
        constexpr std::size_t usual_len = 1000;
        text_.clear();
        text_.reserve(usual_len);
    }

    bool empty() const { return !has_lines_; }

    // The message in the copy's language, without and with a colon.
    std::string_view message(Qel_rcpt_msg_t msg) const
    {
        return qel::view(Qel_rcpt_msg_to_string(info_.attrs.lang, msg));
    }
    std::string label(Qel_rcpt_msg_t msg) const
    {
        const std::string_view text = message(msg);
        std::string label;
        label.reserve(text.size() + 1);
        return label.append(text).append(1, ':');
    }

    // A line as it is, without trimming and wrapping.
    void raw(std::string_view line) { add_line(0, line, 0, {}); }
    void blank() { raw(""); }

    void center(const char *str) { format_center(info_, qel::view(str), *this); }
    void center(Qel_rcpt_msg_t msg) { format_center(info_, message(msg), *this); }
    void left(const char *str) { format_left(info_, qel::view(str), *this); }
    void left(Qel_rcpt_msg_t msg) { format_left(info_, message(msg), *this); }

    void left_prefix(std::string_view prefix, const char *str)
    {
        format_left_prefix(info_, prefix, qel::view(str), *this);
    }

    // The message and the value flush left; nothing without a value.
    void message_prefix(Qel_rcpt_msg_t msg, const char *value)
    {
        if (!Qel_str_isempty(value))
            left_prefix(message(msg), value);
    }

    // As message_prefix, with a colon behind the message.
    void label_prefix(Qel_rcpt_msg_t msg, const char *value)
    {
        if (!Qel_str_isempty(value))
            left_prefix(label(msg), value);
    }

    void left_right(const line_sides &sides) { format_left_right(info_, sides, *this); }
    void left_right(std::string_view left, const char *right)
    {
        format_left_right(info_, left, qel::view(right), *this);
    }

    // The label with a colon on the left and the value on the right; nothing without a value.
    void labelled(Qel_rcpt_msg_t msg, const char *value)
    {
        if (!Qel_str_isempty(value))
            left_right(label(msg), value);
    }

    // As labelled, for an amount of the record.
    void money(Qel_rcpt_msg_t msg, const char *amount)
    {
        if (!Qel_str_isempty(amount))
            format_amount(info_, label(msg), amount, *this, false);
    }
    void positive_money(Qel_rcpt_msg_t msg, const char *amount)
    {
        if (is_positive(amount))
            money(msg, amount);
    }

    // Stores the block in its slot, unless it is blank.
    void store(const block_slot &slot) { store_block(info_, slot.key, text_.data()); }

  private:
    void add_line(std::size_t indent, std::string_view left, std::size_t gap,
                  std::string_view right) override
    {
        const std::string_view before = has_lines_ ? line_break_ : std::string_view();
        const std::size_t begin = text_.size();
        text_.append(before.size() + indent + left.size() + gap + right.size(), ' ');
        char *place = text_.data() + begin;
        place += before.copy(place, before.size()) + indent;
        place += left.copy(place, left.size()) + gap;
        right.copy(place, right.size());
        has_lines_ = true;
    }

    const Qel_rcpt_plain_t &info_;
    std::string_view line_break_;
    std::string &text_;
    bool has_lines_ = false;
};

} // namespace qel_rcpt

#endif
