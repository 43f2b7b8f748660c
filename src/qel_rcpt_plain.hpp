// What the plain-text generators share beyond the exported layout operations.
#ifndef QEL_RCPT_PLAIN_HPP
#define QEL_RCPT_PLAIN_HPP

#include "qel_rcpt_int.hpp"
#include "qel_rcpt_plain.h"

namespace qel_rcpt
{

// The lines of a block in the making. A block builder fills it from top to bottom and stores it.
class plain_block
{
  public:
    explicit plain_block(const Qel_rcpt_plain_t &info)
        : info_(info), lines_(Qel_list_str_create(QEL_LIST_STR_NONE))
    {
    }

    bool empty() const { return Qel_list_str_len(lines_.get()) == 0; }
    Qel_list_str_t *lines() { return lines_.get(); }

    // The message in the copy's language, without and with a colon.
    const char *message(Qel_rcpt_msg_t msg) const
    {
        return Qel_rcpt_msg_to_string(info_.attrs.lang, msg);
    }
    qel::text label(Qel_rcpt_msg_t msg) const
    {
        return qel::text(Qel_rcpt_msg_to_string_colon(info_.attrs.lang, msg));
    }

    // A line as it is, without trimming and wrapping.
    void raw(const char *line) { Qel_list_str_insert(lines_.get(), line); }
    void blank() { raw(""); }

    void center(const char *str) { Qel_rcpt_plain_format_center(&info_, str, lines_.get()); }
    void center(Qel_rcpt_msg_t msg) { center(message(msg)); }
    void left(const char *str) { Qel_rcpt_plain_format_left(&info_, str, lines_.get()); }
    void left(Qel_rcpt_msg_t msg) { left(message(msg)); }

    void left_prefix(const char *prefix, const char *str)
    {
        Qel_rcpt_plain_format_left_prefix(&info_, prefix, str, lines_.get());
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
        Qel_rcpt_plain_format_left_right(&info_, left_prefix_str, left_str, right_prefix_str,
                                         right_str, lines_.get());
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
            Qel_rcpt_plain_add_money(&info_, label(msg).get(), amount, lines_.get(), negative);
    }
    void positive_money(Qel_rcpt_msg_t msg, const char *amount, bool negative = false)
    {
        if (is_positive(amount))
            money(msg, amount, negative);
    }

    // Stores the block for the copy, unless it is blank.
    void store(std::string_view name, bool is_custcopy) const
    {
        Qel_rcpt_plain_add_block(&info_, block_key(name, is_custcopy).c_str(), lines_.get());
    }

  private:
    const Qel_rcpt_plain_t &info_;
    qel::list_str lines_;
};

} // namespace qel_rcpt

#endif
