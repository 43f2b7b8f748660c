// What the plain-text generators share beyond the exported layout operations.
#ifndef QEL_RCPT_PLAIN_HPP
#define QEL_RCPT_PLAIN_HPP

#include "qel_rcpt_int.hpp"
#include "qel_rcpt_plain.h"

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

// The layout operations of qel_rcpt_plain.h, for lines that go into any sink.
void format_center(const Qel_rcpt_plain_t &info, const char *str, line_sink &lines);
void format_left(const Qel_rcpt_plain_t &info, const char *str, line_sink &lines);
void format_right(const Qel_rcpt_plain_t &info, const char *str, line_sink &lines);
void format_left_right(const Qel_rcpt_plain_t &info, const char *prefixl, const char *strl,
                       const char *prefixr, const char *strr, line_sink &lines);
void format_left_prefix(const Qel_rcpt_plain_t &info, const char *prefix, const char *str,
                        line_sink &lines);
void add_money(const Qel_rcpt_plain_t &info, const char *key, const char *val, line_sink &lines,
               bool negative);

// Upper-cases the block and stores it; nothing but white space is not stored.
void store_block(const Qel_rcpt_plain_t &info, const char *key, char *block);

// A message with a colon behind it.
class label
{
  public:
    explicit label(const char *message)
    {
        text_[qel::view(message).copy(text_.data(), text_.size() - 2)] = ':';
    }
    [[nodiscard]] const char *get() const { return text_.data(); }

  private:
    std::array<char, 128> text_{}; // several times as much as the longest message of this kind
};

// A block in the making: its lines, joined. A block builder fills it from top to bottom and stores
// it.
class plain_block final : private line_sink
{
  public:
    explicit plain_block(const Qel_rcpt_plain_t &info)
        : info_(info), line_break_(qel::view(info.line_break))
    {
        constexpr std::size_t usual_len = 1000;
        text_.reserve(usual_len);
    }

    bool empty() const { return !has_lines_; }

    // The message in the copy's language, without and with a colon.
    const char *message(Qel_rcpt_msg_t msg) const
    {
        return Qel_rcpt_msg_to_string(info_.attrs.lang, msg);
    }
    qel_rcpt::label label(Qel_rcpt_msg_t msg) const { return qel_rcpt::label(message(msg)); }

    // A line as it is, without trimming and wrapping.
    void raw(const char *line) { add_line(0, qel::view(line), 0, {}); }
    void blank() { raw(""); }

    void center(const char *str) { format_center(info_, str, *this); }
    void center(Qel_rcpt_msg_t msg) { center(message(msg)); }
    void left(const char *str) { format_left(info_, str, *this); }
    void left(Qel_rcpt_msg_t msg) { left(message(msg)); }

    void left_prefix(const char *prefix, const char *str)
    {
        format_left_prefix(info_, prefix, str, *this);
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
            left_prefix(label(msg).get(), value);
    }

    void left_right(const char *left_str, const char *right_str)
    {
        left_right(nullptr, left_str, nullptr, right_str);
    }
    void left_right(const char *left_prefix_str, const char *left_str, const char *right_prefix_str,
                    const char *right_str)
    {
        format_left_right(info_, left_prefix_str, left_str, right_prefix_str, right_str, *this);
    }

    // The label with a colon on the left and the value on the right; nothing without a value.
    void labelled(Qel_rcpt_msg_t msg, const char *value)
    {
        if (!Qel_str_isempty(value))
            left_right(label(msg).get(), value);
    }

    // As labelled, for an amount of the record.
    void money(Qel_rcpt_msg_t msg, const char *amount, bool negative = false)
    {
        if (!Qel_str_isempty(amount))
            add_money(info_, label(msg).get(), amount, *this, negative);
    }
    void positive_money(Qel_rcpt_msg_t msg, const char *amount, bool negative = false)
    {
        if (is_positive(amount))
            money(msg, amount, negative);
    }

    // Stores the block in its place, unless it is blank.
    void store(const block_place &place) { store_block(info_, place.key, text_.data()); }

  private:
    void add_line(std::size_t indent, std::string_view left, std::size_t gap,
                  std::string_view right) override
    {
        if (has_lines_)
            text_.append(line_break_);
        text_.append(indent, ' ').append(left).append(gap, ' ').append(right);
        has_lines_ = true;
    }

    const Qel_rcpt_plain_t &info_;
    std::string_view line_break_;
    std::string text_;
    bool has_lines_ = false;
};

} // namespace qel_rcpt

#endif
