#include "messages.h"
#include "reading/decimal.h"
#include "reading/entries.h"

#include <qel_rcpt_chars.hpp>
#include <qelstdlib_json.hpp>

#include <cmath>
#include <cstdlib>

namespace tool
{

namespace
{

using qel::json_problem;

// What the library can read; deeper texts would be dropped without a word.
constexpr size_t max_nesting = 512;

std::string too_deep_message()
{
    return "nested too deeply, expected at most " + std::to_string(max_nesting) + " levels";
}

// What should stand there, by json_wanted.
constexpr std::string_view wanted_words[] = {"a value",           "a key in double quotes",
                                             "':' after the key", "',' or '}'",
                                             "',' or ']'",        "nothing after the object"};

// "'x'" for what stands there.
std::string found_at(std::string_view text, size_t at)
{
    if (at >= text.size())
        return "end of the text";
    size_t end = at + 1;
    while (end < text.size() && qel_rcpt::is_continuation(text[end]))
        ++end;
    return in_quotes(text.substr(at, end - at));
}

text_error unexpected_at(std::string_view text, size_t at, std::string_view wanted)
{
    return {at, "unexpected " + found_at(text, at) + ", expected " + std::string(wanted)};
}

text_error explained(const qel::json_fault &fault, std::string_view text)
{
    const std::string_view wanted = wanted_words[static_cast<size_t>(fault.wanted)];
    switch (fault.problem) {
    case json_problem::unclosed_string:
        return {fault.begin, "text without a closing quote"};
    case json_problem::control_character:
        return {fault.at, "control character in a text, expected an escape such as \\n"};
    case json_problem::unknown_escape:
        return {fault.at, R"(unknown escape, expected \" \\ \/ \b \f \n \r \t or \u)"};
    case json_problem::incomplete_escape:
        return {fault.at, "incomplete escape, expected four hexadecimal digits after \\u"};
    case json_problem::lone_surrogate:
        return {fault.at, "half of a surrogate pair, expected two \\u escapes"};
    case json_problem::broken_utf8:
        return {fault.at, "text that is not UTF-8"};
    case json_problem::incomplete_number:
        return {fault.at, "incomplete number, expected a digit"};
    case json_problem::unclosed_comment:
        return {fault.begin, "comment without an end, expected */"};
    case json_problem::lone_slash:
        return {fault.at, "unexpected '/', expected a comment to begin with // or /*"};
    case json_problem::too_deep:
        return {fault.at, too_deep_message()};
    case json_problem::overlong_number:
        return unexpected_at(text, fault.at, wanted);
    case json_problem::unexpected:
    case json_problem::none:
        break;
    }
    return unexpected_at(text, fault.begin, wanted);
}

bool is_out_of_range(std::string_view number)
{
    constexpr size_t shortest_without_exponent = 300;
    const bool may_be = number.size() > shortest_without_exponent ||
                        number.find_first_of("eE") != std::string_view::npos;
    return may_be && !std::isfinite(std::strtod(std::string(number).c_str(), nullptr));
}

// The members of the top object and of an envelope's two sections become entries. What is nested
// deeper is taken as it is written, with numbers and booleans made texts.
class entry_reader
{
  public:
    explicit entry_reader(std::string_view text) : text_(text)
    {
        constexpr size_t usual_number = 64;
        entries_.reserve(usual_number);
    }

    std::vector<entry> take_entries() { return std::move(entries_); }

    void begin_object(size_t offset)
    {
        if (!in_object_)
            in_object_ = true;
        else if (!opens_section())
            open_nested(offset);
    }

    void end_object(size_t offset)
    {
        if (nested_ > 0)
            close_nested(offset);
        else
            section_ = section::top; // nothing comes after the top object itself
    }

    void begin_array(size_t offset)
    {
        require_object(offset);
        open_nested(offset);
    }

    void end_array(size_t offset) { close_nested(offset); }

    void name(std::string_view name, size_t offset)
    {
        if (nested_ > 0)
            return;
        key_ = name;
        key_offset_ = offset;
    }

    void string(std::string_view value, size_t offset)
    {
        require_object(offset);
        if (nested_ == 0)
            add_entry(value, entry_kind::text);
    }

    void scalar(qel::json_scalar kind, std::string_view spelling, size_t offset)
    {
        const bool is_number =
            kind == qel::json_scalar::integer || kind == qel::json_scalar::decimal;
        if (is_number && is_out_of_range(spelling))
            throw text_error(offset, "number out of range");
        require_object(offset);
        if (kind == qel::json_scalar::null)
            return;
        if (nested_ == 0)
            add_entry(is_number ? decimal_text(spelling) : std::string(spelling), entry_kind::text);
        else
            add_nested_text(spelling, is_number, offset);
    }

  private:
    void require_object(size_t offset) const
    {
        if (!in_object_)
            throw unexpected_at(text_, offset, "a JSON object");
    }

    void add_entry(std::string_view value, entry_kind kind)
    {
        entry &added = entries_.emplace_back();
        added.where = section_;
        added.key = key_;
        added.value = value;
        added.kind = kind;
        added.offset = key_offset_;
    }

    // An object under "record" or "config" at the top is a section of an envelope.
    bool opens_section()
    {
        const bool is_section = key_ == "record" || key_ == "config";
        if (nested_ > 0 || section_ != section::top || !is_section)
            return false;
        add_entry({}, entry_kind::opening);
        section_ = key_ == "record" ? section::record : section::config;
        return true;
    }

    void open_nested(size_t offset)
    {
        if (++nested_ > max_nesting)
            throw text_error(offset, too_deep_message());
        if (nested_ > 1)
            return;
        add_entry({}, entry_kind::nested);
        copied_ = offset;
    }

    void close_nested(size_t offset)
    {
        if (--nested_ == 0)
            copy_nested(offset + 1);
    }

    void add_nested_text(std::string_view spelling, bool is_number, size_t offset)
    {
        copy_nested(offset);
        std::string &value = entries_.back().value;
        value += '"';
        value += is_number ? decimal_text(spelling) : std::string(spelling);
        value += '"';
        copied_ = offset + spelling.size();
    }

    // Copies what is written up to there.
    void copy_nested(size_t end)
    {
        entries_.back().value += text_.substr(copied_, end - copied_);
        copied_ = end;
    }

    std::string_view text_;
    std::vector<entry> entries_;
    section section_ = section::top;
    std::string key_; // of the member being read, outside of nested values
    size_t key_offset_ = 0;
    bool in_object_ = false; // the top object has begun
    size_t nested_ = 0;      // open brackets of the nested value being read
    size_t copied_ = 0;      // where what was not copied of it yet begins
};

// Takes the texts of an array.
struct text_reader {
    void begin_object(size_t /*offset*/) { is_flat = false; }
    void end_object(size_t /*offset*/) {}
    void begin_array(size_t /*offset*/) { is_flat = is_flat && ++arrays == 1; }
    void end_array(size_t /*offset*/) {}
    void name(std::string_view /*name*/, size_t /*offset*/) {}
    void string(std::string_view text, size_t /*offset*/) { texts.emplace_back(text); }
    void scalar(qel::json_scalar, std::string_view, size_t /*offset*/) { is_flat = false; }

    std::vector<std::string> texts;
    int arrays = 0;
    bool is_flat = true;
};

} // namespace

std::vector<entry> json_entries(std::string_view text)
{
    entry_reader entries(text);
    qel::json_rules rules;
    rules.max_levels = max_nesting + 2; // in a section of the top object
    const qel::json_fault fault = qel::json_reader(text, entries, rules).read();
    if (fault.problem != json_problem::none)
        throw explained(fault, text);
    return entries.take_entries();
}

std::optional<std::vector<std::string>> json_texts(std::string_view json)
{
    text_reader reader;
    const qel::json_fault fault = qel::json_reader(json, reader).read();
    if (fault.problem != json_problem::none || !reader.is_flat || reader.arrays == 0)
        return std::nullopt;
    return std::move(reader.texts);
}

} // namespace tool
