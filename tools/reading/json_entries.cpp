#include "messages.h"
#include "reading/entries.h"

#include <nlohmann/json.hpp>

#include <optional>

namespace tool
{

namespace
{

// What the library can read; deeper texts would be dropped without a word.
constexpr size_t max_nesting = 512;

// What is wrong inside of a token, by a word of the parser's own message.
struct token_fault {
    std::string_view word;
    const char *message;
    bool at_last_byte; // the fault is the last byte read, not the token as a whole
};

constexpr token_fault token_faults[] = {
    {"missing closing quote", "text without a closing quote", false},
    {"control character", "control character in a text, expected an escape such as \\n", true},
    {"UTF-8", "text that is not UTF-8", true},
    {"hex digits", "incomplete escape, expected four hexadecimal digits after \\u", true},
    {"surrogate", "half of a surrogate pair, expected two \\u escapes", true},
    {"backslash", R"(unknown escape, expected \" \\ \/ \b \f \n \r \t or \u)", true},
    {"invalid number", "incomplete number, expected a digit", true},
    {"number overflow", "number out of range", false},
    {"closing '*/'", "comment without an end, expected */", false},
    {"after '/'", "unexpected '/', expected a comment to begin with // or /*", true},
};

// What should have come, by what the parser says that it was reading; the first match counts.
struct expectation {
    std::string_view context;
    const char *expected;
};

constexpr expectation expectations[] = {
    {" expected end of input", "nothing after the object"},
    {"parsing object key", "a key in double quotes"},
    {"parsing object separator", "':' after the key"},
    {"parsing object", "',' or '}'"},
    {"parsing array", "',' or ']'"},
    {"parsing value", "a value"},
};

constexpr std::string_view white_space = " \t\r\n";

bool has(std::string_view text, std::string_view part)
{
    return text.find(part) != std::string_view::npos;
}

// The offset after a comment that begins there; the offset itself when none does or it has no end.
size_t after_comment(std::string_view text, size_t at)
{
    const std::string_view begin = text.substr(at, 2);
    size_t end = std::string_view::npos;
    if (begin == "//")
        end = text.find_first_of("\r\n", at);
    else if (begin == "/*")
        end = text.find('/', std::min(text.find("*/", at + 2), text.size()));
    return end == std::string_view::npos ? at : end + 1;
}

// The offset of the next byte that is neither white space nor comment.
size_t after_blanks(std::string_view text, size_t at)
{
    for (;;) {
        at = std::min(text.find_first_not_of(white_space, at), text.size());
        const size_t next = after_comment(text, at);
        if (next == at)
            return at;
        at = next;
    }
}

// The offset after the token that begins there.
size_t after_token(std::string_view text, size_t at)
{
    if (at >= text.size())
        return at;
    if (text[at] != '"') {
        const bool is_mark = has("{}[],:", text.substr(at, 1));
        const size_t end = text.find_first_of("{}[],:\"/ \t\r\n", at);
        return is_mark ? at + 1 : std::min(end, text.size());
    }
    for (++at; at < text.size() && text[at] != '"'; ++at) {
        if (text[at] == '\\')
            ++at;
    }
    return std::min(at + 1, text.size());
}

// "'x'" for what stands there.
std::string found_at(std::string_view text, size_t at)
{
    if (at >= text.size())
        return "end of the text";
    size_t end = at + 1;
    while (end < text.size() && continues_character(text[end]))
        ++end;
    return in_quotes(text.substr(at, end - at));
}

// The parser's message in plain words, for the token that it stopped at.
text_error explained(std::string_view message, std::string_view text, size_t token,
                     size_t last_byte)
{
    const std::string_view said = message.substr(0, message.find("; last read"));
    for (const auto &[word, explanation, at_last_byte] : token_faults) {
        if (has(said, word))
            return {at_last_byte ? last_byte : token, explanation};
    }
    const std::string_view wanted = message.substr(message.rfind(';') + 1);
    for (const auto &[context, expected] : expectations) {
        if (has(said, context) || has(wanted, context))
            return {token, "unexpected " + found_at(text, token) + ", expected " + expected};
    }
    return {token, "this is not JSON"};
}

// Takes the parser's events in. The members of the top object and of an envelope's two sections
// become entries; what is nested deeper is written as JSON text again, number by number as it came.
class entry_reader final : public nlohmann::json_sax<nlohmann::json>
{
  public:
    explicit entry_reader(std::string_view text) : text_(text) {}

    std::vector<entry> take_entries() { return std::move(entries_); }
    const std::optional<text_error> &error() const { return error_; }

    bool null() override
    {
        next_token(',');
        if (!in_object_)
            return no_object();
        if (nested_ > 0)
            write("null");
        return true;
    }

    bool boolean(bool /*value*/) override { return add_token(); }
    bool number_integer(number_integer_t /*value*/) override { return add_token(); }
    bool number_unsigned(number_unsigned_t /*value*/) override { return add_token(); }
    bool number_float(number_float_t /*value*/, const string_t & /*text*/) override
    {
        return add_token();
    }

    bool string(string_t &value) override
    {
        next_token(',');
        return add_text(std::move(value));
    }

    bool binary(binary_t & /*value*/) override { return false; } // JSON has none

    bool key(string_t &name) override
    {
        next_token(':');
        if (nested_ > 0) {
            write(nlohmann::json(name).dump() + ":");
            return true;
        }
        key_ = std::move(name);
        key_offset_ = token_;
        return true;
    }

    bool start_object(size_t /*size*/) override
    {
        next_token('\0');
        if (!in_object_) {
            in_object_ = true;
            return true;
        }
        return opens_section() || open_nested("{");
    }

    bool end_object() override
    {
        if (nested_ > 0)
            return close_nested("}");
        next_token(',');
        section_ = section::top; // nothing comes after the top object itself
        return true;
    }

    bool start_array(size_t /*size*/) override
    {
        next_token('\0');
        return in_object_ ? open_nested("[") : no_object();
    }

    bool end_array() override { return close_nested("]"); }

    bool parse_error(size_t bytes_read, const std::string & /*token*/,
                     const nlohmann::detail::exception &fault) override
    {
        const size_t last_byte = bytes_read - 1;
        const size_t token = std::min(next_token_start(), last_byte);
        error_ = explained(fault.what(), text_, token, last_byte);
        return false;
    }

  private:
    // Where the next token begins: behind white space, comments and the separator that may stand
    // between the last token and it.
    size_t next_token_start() const
    {
        const size_t at = after_blanks(text_, end_);
        const bool is_separated =
            at < text_.size() && separator_ != '\0' && text_[at] == separator_;
        return is_separated ? after_blanks(text_, at + 1) : at;
    }

    // Goes to the next token, after which the given separator may follow, and gives its text.
    std::string_view next_token(char separator)
    {
        token_ = next_token_start();
        end_ = after_token(text_, token_);
        separator_ = separator;
        return text_.substr(token_, end_ - token_);
    }

    bool fail(size_t offset, const std::string &message)
    {
        error_.emplace(offset, message);
        return false;
    }

    bool no_object()
    {
        return fail(token_, "unexpected " + found_at(text_, token_) + ", expected a JSON object");
    }

    void add_entry(std::string value, entry_kind kind)
    {
        entries_.push_back({section_, key_, std::move(value), kind, key_offset_});
    }

    bool add_token() { return add_text(std::string(next_token(','))); }

    bool add_text(std::string value)
    {
        if (!in_object_)
            return no_object();
        if (nested_ > 0)
            write(nlohmann::json(value).dump());
        else
            add_entry(std::move(value), entry_kind::text);
        return true;
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

    bool open_nested(std::string_view bracket)
    {
        if (nested_ == 0)
            add_entry({}, entry_kind::nested);
        if (++nested_ > max_nesting)
            return fail(token_, "nested too deeply, expected at most " +
                                    std::to_string(max_nesting) + " levels");
        write(bracket);
        return true;
    }

    bool close_nested(std::string_view bracket)
    {
        next_token(',');
        entries_.back().value += bracket;
        --nested_;
        return true;
    }

    // Appends to the nested value, with a comma where its last byte asks for one.
    void write(std::string_view json)
    {
        std::string &value = entries_.back().value;
        if (!value.empty() && !has("[{:", value.substr(value.size() - 1)))
            value += ',';
        value += json;
    }

    std::string_view text_;
    std::vector<entry> entries_;
    std::optional<text_error> error_;
    section section_ = section::top;
    std::string key_; // of the member being read, outside of nested values
    size_t key_offset_ = 0;
    bool in_object_ = false; // the top object has begun
    size_t nested_ = 0;      // open brackets of the nested value being read
    size_t token_ = 0;       // where the last token begins,
    size_t end_ = 0;         // where it ends,
    char separator_ = '\0';  // and what may separate it from the next; 0: nothing
};

} // namespace

std::vector<entry> json_entries(std::string_view text)
{
    entry_reader reader(text);
    nlohmann::json::sax_parse(text.begin(), text.end(), &reader,
                              nlohmann::json::input_format_t::json, true, true);
    if (reader.error())
        throw text_error(*reader.error());
    return reader.take_entries();
}

} // namespace tool
