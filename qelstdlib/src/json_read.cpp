// Reading JSON.
#include "formats_int.h"
#include "json_node.h"

#include <nlohmann/json.hpp>

#include <charconv>
#include <cstdint>

namespace
{

constexpr std::size_t max_levels = 512;

struct fault {
    Qel_json_error_t error;
    std::size_t offset;
};

bool is_digit(char chr)
{
    return chr >= '0' && chr <= '9';
}

bool skip_digits(std::string_view &text)
{
    const auto count = std::min(text.find_first_not_of("0123456789"), text.size());
    text.remove_prefix(count);
    return count > 0;
}

bool skip_one_of(std::string_view &text, std::string_view bytes)
{
    const bool found = !text.empty() && bytes.find(text.front()) != std::string_view::npos;
    text.remove_prefix(found ? 1 : 0);
    return found;
}

bool is_number(std::string_view text)
{
    skip_one_of(text, "-");
    if (!skip_one_of(text, "0") && !skip_digits(text)) {
        return false;
    }
    if (skip_one_of(text, ".") && !skip_digits(text)) {
        return false;
    }
    if (skip_one_of(text, "eE")) {
        skip_one_of(text, "+-");
        if (!skip_digits(text)) {
            return false;
        }
    }
    return text.empty();
}

bool is_lead_surrogate(char32_t unit)
{
    return unit >= 0xD800 && unit <= 0xDBFF;
}
bool is_trail_surrogate(char32_t unit)
{
    return unit >= 0xDC00 && unit <= 0xDFFF;
}

// Prepares a text for the parser, which rejects numbers that a double cannot hold and unpaired
// surrogates, drops the texts of numbers and has no limit of depth. It gets a copy of the same
// length in which every number is a 0 and repaired escapes are U+FFFD, and which ends where the
// text is first known to be unreadable. The texts of the numbers are kept in their order.
class scanner
{
  public:
    scanner(std::string_view source, bool repair) : source_(source), repair_(repair)
    {
        // A NUL would be the end of the text to the parser.
        cut(source_.find('\0'), QEL_JSON_ERROR_SYNTAX);
        cut(formats::valid_prefix(source_), QEL_JSON_ERROR_ENCODING);
        masked_ = source_;
        while (pos_ < source_.size()) {
            skip_token();
        }
        masked_.resize(source_.size());
    }

    [[nodiscard]] const std::string &masked() const { return masked_; }
    [[nodiscard]] const std::vector<std::string_view> &numbers() const { return numbers_; }
    [[nodiscard]] const std::optional<fault> &found() const { return fault_; }

  private:
    // What follows the cut is not looked at, so a later cut is always at an earlier place.
    void cut(std::size_t offset, Qel_json_error_t error)
    {
        if (offset < source_.size()) {
            fault_ = fault{error, offset};
            source_ = source_.substr(0, offset);
        }
    }

    void skip_token()
    {
        switch (const char chr = source_[pos_]) {
        case '"':
            skip_string();
            return;
        case '/':
            skip_comment();
            return;
        case '{':
        case '[':
            if (++level_ > max_levels) {
                cut(pos_, QEL_JSON_ERROR_DEPTH);
            }
            break;
        case '}':
        case ']':
            level_ -= level_ > 0 ? 1 : 0;
            break;
        default:
            if (chr == '-' || is_digit(chr)) {
                mask_number();
                return;
            }
        }
        ++pos_;
    }

    void skip_to(std::size_t offset) { pos_ = std::min(offset, source_.size()); }

    void skip_comment()
    {
        const std::string_view opening = source_.substr(pos_, 2);
        if (opening == "//") {
            skip_to(source_.find_first_of("\r\n", pos_));
        } else if (opening == "/*") {
            const std::size_t end = source_.find("*/", pos_ + 2);
            skip_to(end == std::string_view::npos ? end : end + 2);
        } else {
            ++pos_;
        }
    }

    void mask_number()
    {
        const std::size_t end =
            std::min(source_.find_first_not_of("0123456789.eE+-", pos_), source_.size());
        const std::string_view token = source_.substr(pos_, end - pos_);
        if (!is_number(token)) {
            cut(pos_, QEL_JSON_ERROR_SYNTAX); // never readable, but may hold numbers, as 1-2 does
            return;
        }
        numbers_.push_back(token);
        masked_.replace(pos_, token.size(), token.size(), ' ');
        masked_[pos_] = '0';
        pos_ = end;
    }

    void skip_string()
    {
        ++pos_;
        while (pos_ < source_.size() && source_[pos_] != '"') {
            if (source_[pos_] == '\\') {
                skip_escape();
            } else {
                ++pos_;
            }
        }
        skip_to(pos_ + 1);
    }

    void skip_escape()
    {
        constexpr std::size_t escape_len = 6;
        const char32_t unit = escaped_unit(pos_);
        if (!is_lead_surrogate(unit) && !is_trail_surrogate(unit)) {
            skip_to(pos_ + 2); // hexadecimal digits are like any other character of the string
            return;
        }
        if (is_lead_surrogate(unit) && is_trail_surrogate(escaped_unit(pos_ + escape_len))) {
            pos_ += 2 * escape_len;
            return;
        }
        if (!repair_) {
            cut(pos_, QEL_JSON_ERROR_ENCODING);
            return;
        }
        masked_.replace(pos_, escape_len, "\\ufffd");
        pos_ += escape_len;
    }

    // The unit of the \uXXXX escape that begins at the offset, 0 when none does.
    [[nodiscard]] char32_t escaped_unit(std::size_t offset) const
    {
        const std::string_view escape = source_.substr(offset, 6);
        if (escape.size() < 6 || !escape.starts_with("\\u")) {
            return 0;
        }
        std::uint32_t unit = 0;
        const char *const end = escape.data() + escape.size();
        return std::from_chars(escape.data() + 2, end, unit, 16).ptr == end ? unit : 0;
    }

    std::string_view source_;
    bool repair_;
    std::string masked_;
    std::vector<std::string_view> numbers_;
    std::optional<fault> fault_;
    std::size_t pos_ = 0;
    std::size_t level_ = 0;
};

// The text as C sees it: up to its first NUL.
std::string c_text(const std::string &text)
{
    return text.substr(0, text.find('\0'));
}

// Builds the tree from the parser's events.
class builder
{
  public:
    using json = nlohmann::json;

    explicit builder(const std::vector<std::string_view> &numbers) : numbers_(numbers) {}

    std::unique_ptr<Qel_json_node> take_root() { return std::move(root_); }
    [[nodiscard]] std::size_t fault_offset() const { return fault_offset_; }

    bool null() { return add(QEL_JSON_TYPE_NULL, "null"); }
    bool boolean(bool value) { return add(QEL_JSON_TYPE_BOOL, value ? "true" : "false"); }
    bool number_integer(json::number_integer_t) { return number(); }
    bool number_unsigned(json::number_unsigned_t) { return number(); }
    bool number_float(json::number_float_t, const std::string &) { return number(); }
    bool string(std::string &value) { return add(QEL_JSON_TYPE_STRING, c_text(value)); }
    static bool binary(json::binary_t &) { return false; }
    bool start_object(std::size_t) { return add(QEL_JSON_TYPE_OBJECT, {}); }
    bool start_array(std::size_t) { return add(QEL_JSON_TYPE_ARRAY, {}); }
    bool end_object() { return end_container(); }
    bool end_array() { return end_container(); }

    bool key(std::string &name)
    {
        name_ = c_text(name);
        return true;
    }

    // The parser counts the bytes that it has taken, the offending one included.
    bool parse_error(std::size_t taken, const std::string &, const json::exception &)
    {
        fault_offset_ = taken - 1;
        return false;
    }

  private:
    bool number()
    {
        const std::string_view text = numbers_[next_number_++];
        const bool is_integer = text.find_first_of(".eE") == std::string_view::npos;
        return add(is_integer ? QEL_JSON_TYPE_INTEGER : QEL_JSON_TYPE_DECIMAL, std::string(text));
    }

    bool add(Qel_json_type_t type, std::string text)
    {
        Qel_json_node *const added = place(std::make_unique<Qel_json_node>(type, std::move(text)));
        if (added->is_container()) {
            open_ = added;
        }
        return true;
    }

    Qel_json_node *place(std::unique_ptr<Qel_json_node> node)
    {
        if (open_ == nullptr) {
            root_ = std::move(node);
            return root_.get();
        }
        return open_->type == QEL_JSON_TYPE_OBJECT ? open_->set_member(name_, std::move(node))
                                                   : open_->append(std::move(node));
    }

    bool end_container()
    {
        open_ = open_->parent;
        return true;
    }

    const std::vector<std::string_view> &numbers_;
    std::size_t next_number_ = 0;
    std::unique_ptr<Qel_json_node> root_;
    Qel_json_node *open_ = nullptr;
    std::string name_;
    std::size_t fault_offset_ = 0;
};

// The text with U+FFFD for each run of broken bytes.
std::string repaired(std::string_view text)
{
    std::string out;
    out.reserve(text.size());
    while (true) {
        const std::size_t valid = formats::valid_prefix(text);
        out.append(text.substr(0, valid));
        text.remove_prefix(valid);
        if (text.empty()) {
            return out;
        }
        formats::take_char(text);
        out.append(formats::replacement_utf8);
    }
}

// The offset in the text that an offset in its repaired copy stands for.
std::size_t original_offset(std::string_view text, std::size_t offset)
{
    std::string_view rest = text;
    while (true) {
        const std::size_t valid = std::min(formats::valid_prefix(rest), offset);
        rest.remove_prefix(valid);
        offset -= valid;
        if (offset < formats::replacement_utf8.size() || rest.empty()) {
            return text.size() - rest.size();
        }
        formats::take_char(rest);
        offset -= formats::replacement_utf8.size();
    }
}

struct outcome {
    std::unique_ptr<Qel_json_node> root;
    fault stop; // success, at the end of the text, when there is a root
};

outcome parse(std::string_view source, bool repair)
{
    const scanner scan(source, repair);
    const std::string &masked = scan.masked();
    builder build(scan.numbers());
    const bool parsed =
        nlohmann::json::sax_parse(masked.data(), masked.data() + masked.size(), &build,
                                  nlohmann::json::input_format_t::json, /*strict=*/true,
                                  /*ignore_comments=*/true);
    const std::size_t parser_stop = std::min(build.fault_offset(), masked.size());
    if (!parsed && (parser_stop < masked.size() || !scan.found())) {
        return {nullptr, {QEL_JSON_ERROR_SYNTAX, parser_stop}};
    }
    if (scan.found()) {
        return {nullptr, *scan.found()};
    }
    return {build.take_root(), {QEL_JSON_ERROR_SUCCESS, source.size()}};
}

outcome read(std::string_view text, bool repair)
{
    if (text.empty()) {
        return {nullptr, {QEL_JSON_ERROR_EMPTY, 0}};
    }
    if (!repair || formats::valid_prefix(text) == text.size()) {
        return parse(text, repair);
    }
    outcome result = parse(repaired(text), repair);
    result.stop.offset = original_offset(text, result.stop.offset);
    return result;
}

template <typename T>
void store(T *out, T value)
{
    if (out != nullptr) {
        *out = value;
    }
}

void store_position(std::string_view before, std::size_t *line, std::size_t *pos)
{
    const auto line_feeds = std::count(before.begin(), before.end(), '\n');
    store(line, static_cast<std::size_t>(line_feeds) + 1);
    store(pos, before.size() - (before.rfind('\n') + 1) + 1); // npos + 1 is 0
}

} // namespace

Qel_json_node_t *Qel_json_read(const char *text, size_t len, uint32_t flags, size_t *processed,
                               Qel_json_error_t *error, size_t *error_line,
                               size_t *error_pos) noexcept
{
    const std::string_view view(text, text != nullptr ? len : 0);
    outcome result = read(view, (flags & QEL_JSON_READER_REPLACE_BAD_CHARS) != 0);
    store(processed, result.stop.offset);
    store(error, result.stop.error);
    if (result.root) {
        store<std::size_t>(error_line, 0);
        store<std::size_t>(error_pos, 0);
    } else {
        store_position(view.substr(0, result.stop.offset), error_line, error_pos);
    }
    return result.root.release();
}
