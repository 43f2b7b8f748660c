// Reading JSON (RFC 8259) in one pass over the bytes, event by event. Header only, C++17, without
// exceptions of its own.
//
// Beyond the RFC, comments of both kinds and a leading byte-order mark are accepted. Names may
// repeat, and numbers of any size are handed on as they are written. What may be wrong with a text,
// and the rules for reading it, stand in qelstdlib_json_tokens.hpp.
#ifndef QELSTDLIB_JSON_HPP
#define QELSTDLIB_JSON_HPP

#include "qelstdlib_json_tokens.hpp"

#include <bitset>
#include <cstddef>
#include <string_view>

namespace qel
{

// Reads a text and tells the handler, which has these operations:
//     begin_object(offset)  end_object(offset)  begin_array(offset)  end_array(offset)
//     name(text, offset)  string(text, offset)  scalar(json_scalar, spelling, offset)
// An offset is that of the byte where the event begins. Texts and spellings are views of the text
// that is read, or, where escapes and repairs make a difference, last until the next event.
template <typename Handler>
class json_reader : json_scanner
{
  public:
    json_reader(std::string_view source, Handler &handler, json_rules rules = {})
        : json_scanner(source, rules), handler_(handler)
    {
    }

    // Reads to the end of the text or to the first fault; once only.
    json_fault read()
    {
        constexpr std::string_view byte_order_mark = "\xEF\xBB\xBF";
        if (view(at_, end_).substr(0, byte_order_mark.size()) == byte_order_mark)
            at_ += byte_order_mark.size();
        while (read_value() && go_to_next_value()) {
        }
        return fault_;
    }

  private:
    // Goes behind what is between two values; false at the end of the text and for a fault.
    bool go_to_next_value()
    {
        while (level_ > 0) {
            if (!skip_blanks())
                return false;
            if (next() == (in_object_ ? '}' : ']')) {
                close();
                continue;
            }
            if (!is_empty_ && !take(','))
                return unexpected(wanted_after_value());
            return !in_object_ || read_name();
        }
        if (skip_blanks() && at_ != end_)
            unexpected(json_wanted::end_of_text);
        return false;
    }

    bool read_name()
    {
        if (!skip_blanks())
            return false;
        if (next() != '"')
            return unexpected(json_wanted::name);
        const std::size_t offset = offset_of(at_);
        std::string_view name;
        if (!take_string(name))
            return false;
        handler_.name(name, offset);
        return skip_blanks() && (take(':') || unexpected(json_wanted::colon));
    }

    bool read_value()
    {
        if (!skip_blanks())
            return false;
        is_empty_ = false;
        switch (next()) {
        case '"':
            return read_string();
        case '{':
        case '[':
            return open();
        case 't':
        case 'f':
        case 'n':
            return read_word();
        default:
            return next_is_number() ? read_number() : unexpected(json_wanted::value);
        }
    }

    bool read_string()
    {
        const std::size_t offset = offset_of(at_);
        std::string_view str;
        if (!take_string(str))
            return false;
        handler_.string(str, offset);
        return true;
    }

    bool read_word()
    {
        const char *const begin = at_;
        fault_.wanted = json_wanted::value;
        if (!take_word())
            return false;
        handler_.scalar(*begin == 'n' ? json_scalar::null : json_scalar::boolean, view(begin, at_),
                        offset_of(begin));
        return true;
    }

    bool read_number()
    {
        const char *const begin = at_;
        json_scalar kind{};
        if (!take_number(kind))
            return false;
        handler_.scalar(kind, view(begin, at_), offset_of(begin));
        if (!number_goes_on())
            return true;
        fault_.wanted = wanted_after_value();
        return fail(json_problem::overlong_number, begin, at_);
    }

    bool open()
    {
        if (level_ == rules_.max_levels)
            return fail(json_problem::too_deep, at_, at_);
        const std::size_t offset = offset_of(at_);
        is_empty_ = true;
        in_object_ = *at_++ == '{';
        objects_[level_++] = in_object_;
        if (in_object_)
            handler_.begin_object(offset);
        else
            handler_.begin_array(offset);
        return true;
    }

    void close()
    {
        const std::size_t offset = offset_of(at_++);
        if (in_object_)
            handler_.end_object(offset);
        else
            handler_.end_array(offset);
        is_empty_ = false;
        --level_;
        in_object_ = level_ > 0 && objects_[level_ - 1];
    }

    // Whatever stands in place of a value, brackets that would be too many levels count as that.
    bool unexpected(json_wanted wanted)
    {
        const bool is_bracket = next() == '{' || next() == '[';
        return is_bracket && level_ == rules_.max_levels ? fail(json_problem::too_deep, at_, at_)
                                                         : json_scanner::unexpected(wanted);
    }

    [[nodiscard]] json_wanted wanted_after_value() const
    {
        if (level_ == 0)
            return json_wanted::end_of_text;
        return in_object_ ? json_wanted::comma_or_brace : json_wanted::comma_or_bracket;
    }

    Handler &handler_;
    std::size_t level_ = 0;
    std::bitset<json_most_levels> objects_; // by level, whether an object is open, or an array
    bool in_object_ = false;
    bool is_empty_ = false; // the open object or array, so far
};

} // namespace qel

#endif
