#include "messages.h"
#include "reading/decimal.h"
#include "reading/entries.h"

#include <qel_rcpt_chars.hpp>
#include <qelstdlib_json.hpp>

#include <cmath>
#include <cstdlib>
#include <utility>

namespace tool
{

namespace
{

using qel::json_fault;
using qel::json_kind;
using qel::json_problem;

// What the library can read; deeper texts would be dropped without a word.
constexpr size_t max_nesting = 512;
constexpr std::string_view too_deep = "nested too deeply, expected at most 512 levels";

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

struct explanation {
    std::string_view message; // none: what stands there is unexpected
    size_t json_fault::*place = &json_fault::at;
};

// By json_problem.
constexpr explanation explanations[] = {
    {},
    {"", &json_fault::begin},
    {},
    {"incomplete number, expected a digit"},
    {"text without a closing quote", &json_fault::begin},
    {"control character in a text, expected an escape such as \\n"},
    {R"(unknown escape, expected \" \\ \/ \b \f \n \r \t or \u)"},
    {"incomplete escape, expected four hexadecimal digits after \\u"},
    {"half of a surrogate pair, expected two \\u escapes"},
    {"text that is not UTF-8"},
    {"comment without an end, expected */", &json_fault::begin},
    {"unexpected '/', expected a comment to begin with // or /*"},
    {too_deep},
};

text_error explained(const json_fault &fault, std::string_view text)
{
    const auto &[message, place] = explanations[static_cast<size_t>(fault.problem)];
    const std::string_view wanted = wanted_words[static_cast<size_t>(fault.wanted)];
    return message.empty() ? unexpected_at(text, fault.*place, wanted)
                           : text_error(fault.*place, std::string(message));
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

    void begin(json_kind kind, size_t offset)
    {
        const bool is_object = kind == json_kind::object;
        if (is_object && !in_object_) {
            in_object_ = true;
            return;
        }
        require_object(offset);
        if (!is_object || !opens_section())
            open_nested(offset);
    }

    void end(json_kind /*kind*/, size_t offset)
    {
        if (nested_ == 0)
            section_ = section::top; // nothing comes after the top object itself
        else if (--nested_ == 0)
            copy_nested(offset + 1);
    }

    void name(std::string_view name, size_t offset)
    {
        if (nested_ > 0)
            return;
        key_ = name;
        key_offset_ = offset;
    }

    void value(json_kind kind, std::string_view text, size_t offset)
    {
        const bool is_number = kind == json_kind::integer || kind == json_kind::decimal;
        if (is_number && is_out_of_range(text))
            throw text_error(offset, "number out of range");
        require_object(offset);
        if (kind == json_kind::null || (nested_ > 0 && kind == json_kind::string))
            return;
        const std::string decimal = is_number ? decimal_text(text) : std::string();
        const std::string_view meant = is_number ? decimal : text;
        if (nested_ == 0) {
            add_entry(entry_kind::text).value = meant;
            return;
        }
        copy_nested(offset);
        entries_.back().value.append(1, '"').append(meant).append(1, '"');
        copied_ = offset + text.size();
    }

  private:
    void require_object(size_t offset) const
    {
        if (!in_object_)
            throw unexpected_at(text_, offset, "a JSON object");
    }

    entry &add_entry(entry_kind kind)
    {
        entry &added = entries_.emplace_back();
        added.where = section_;
        added.key = key_;
        added.kind = kind;
        added.offset = key_offset_;
        return added;
    }

    // An object under "record" or "config" at the top is a section of an envelope.
    bool opens_section()
    {
        const bool is_section = key_ == "record" || key_ == "config";
        if (nested_ > 0 || section_ != section::top || !is_section)
            return false;
        add_entry(entry_kind::opening);
        section_ = key_ == "record" ? section::record : section::config;
        return true;
    }

    void open_nested(size_t offset)
    {
        if (++nested_ > max_nesting)
            throw text_error(offset, std::string(too_deep));
        if (nested_ > 1)
            return;
        add_entry(entry_kind::nested);
        copied_ = offset;
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
struct text_reader : qel::json_handler {
    void begin(json_kind kind, size_t /*offset*/)
    {
        is_flat = ++opened == 1 && kind == json_kind::array;
    }
    void value(json_kind kind, std::string_view text, size_t /*offset*/)
    {
        is_flat = is_flat && kind == json_kind::string;
        texts.emplace_back(text);
    }

    std::vector<std::string> texts;
    int opened = 0;
    bool is_flat = false;
};

} // namespace

std::vector<entry> json_entries(std::string_view text)
{
    entry_reader entries(text);
    qel::json_rules rules;
    rules.max_levels = max_nesting + 2; // in a section of the top object
    const json_fault fault = qel::json_reader(text, entries, rules).read();
    if (fault.problem != json_problem::none)
        throw explained(fault, text);
    return entries.take_entries();
}

std::optional<std::vector<std::string>> json_texts(std::string_view json)
{
    text_reader reader;
    const json_fault fault = qel::json_reader(json, reader).read();
    if (fault.problem != json_problem::none || !reader.is_flat)
        return std::nullopt;
    return std::move(reader.texts);
}

} // namespace tool
