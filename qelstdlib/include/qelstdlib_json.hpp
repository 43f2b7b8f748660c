// Reading JSON (RFC 8259) in one pass over the bytes, event by event. Header only, C++17, without
// exceptions of its own.
//
// Beyond the RFC, comments of both kinds and a leading byte-order mark are accepted. Names may
// repeat, and numbers of any size are handed on as they are written.
#ifndef QELSTDLIB_JSON_HPP
#define QELSTDLIB_JSON_HPP

#include <algorithm>
#include <charconv>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>
#include <string_view>

namespace qel
{

// Numbered as Qel_json_type_t is.
enum class json_kind { object = 1, array, string, integer, decimal, boolean, null };

enum class json_problem {
    none,
    unexpected,        // a token, or the end of the text, where another should stand
    overlong_number,   // one that goes on where it should have ended, as 01 and 1-2
    incomplete_number, // no digit where one should stand
    unclosed_string,
    control_character, // in a string
    unknown_escape,
    incomplete_escape, // \u without four hexadecimal digits
    lone_surrogate,    // an escape for half of a pair
    broken_utf8,
    unclosed_comment,
    lone_slash,
    too_deep
};

enum class json_wanted : unsigned char {
    value,
    name,
    colon,
    comma_or_brace,
    comma_or_bracket,
    end_of_text
};

// What is wrong with a text and where, in bytes from its beginning. A fault within a token counts
// more than that another should stand there.
struct json_fault {
    json_problem problem = json_problem::none;
    json_wanted wanted = json_wanted::value; // there, or behind an overlong number
    std::size_t begin = 0;                   // of the token, number, escape or character
    std::size_t at = 0; // the byte that shows it; the last one of an unexpected string or word
};

struct json_rules {
    std::size_t max_levels = 512; // of open objects and arrays, at most json_most_levels
    bool repair = false;          // broken UTF-8 and lone surrogates become U+FFFD
    bool check_comments = false;  // for broken UTF-8, too
};

inline constexpr std::size_t json_most_levels = 1024;

// Is told what is read; one that does not want all of it derives from this. An offset is that of
// the byte where it begins. Texts (of a name or a string without its quotes and escapes, of other
// values as they are written) are views of the text that is read, or, where escapes and repairs
// make a difference, last until the next call.
struct json_handler {
    void begin(json_kind /*object or array*/, std::size_t /*offset*/) {}
    void end(json_kind /*object or array*/, std::size_t /*offset*/) {}
    void name(std::string_view /*str*/, std::size_t /*offset*/) {}
    void value(json_kind /*any other*/, std::string_view /*str*/, std::size_t /*offset*/) {}
};

// The bytes that a text begins with and that belong to one character of UTF-8. Of a broken one they
// are as many as fit, which may be none.
struct utf8_sequence {
    std::size_t size;
    bool is_whole;
};

inline utf8_sequence utf8_at(std::string_view str) noexcept
{
    const auto byte = [&](std::size_t at) { return static_cast<unsigned char>(str[at]); };
    const unsigned lead = byte(0);
    if (lead < 0x80)
        return {1, true};
    if (lead < 0xC2 || lead > 0xF4)
        return {0, false};
    const std::size_t full = lead < 0xE0 ? 2 : lead < 0xF0 ? 3 : 4;
    // The second byte keeps overlong forms, surrogates and what is beyond U+10FFFF out.
    unsigned least = lead == 0xE0 ? 0xA0 : lead == 0xF0 ? 0x90 : 0x80;
    unsigned most = lead == 0xED ? 0x9F : lead == 0xF4 ? 0x8F : 0xBF;
    std::size_t size = 1;
    while (size < std::min(full, str.size()) && byte(size) >= least && byte(size) <= most) {
        ++size;
        least = 0x80;
        most = 0xBF;
    }
    return {size, size == full};
}

// The tokens, which no handler sees. A function gets the place where something begins and gives the
// place behind it, or none for a fault.
class json_scanner
{
  protected:
    json_scanner(std::string_view source, json_rules rules)
        : rules_(rules), begin_(source.data()), end_(begin_ + source.size())
    {
    }

    [[nodiscard]] char byte(const char *at) const { return at != end_ ? *at : '\0'; }
    static bool is_digit(char chr) { return chr >= '0' && chr <= '9'; }

    [[nodiscard]] std::size_t offset_of(const char *place) const
    {
        return static_cast<std::size_t>(place - begin_);
    }
    static std::string_view view(const char *begin, const char *end)
    {
        return {begin, static_cast<std::size_t>(end - begin)};
    }

    // An indented line begins with many spaces.
    const char *take_line_feed(const char *at) const
    {
        constexpr std::string_view many = "        ";
        for (++at; view(at, end_).substr(0, many.size()) == many;)
            at += many.size();
        return at;
    }

    [[gnu::noinline]] const char *take_comment(const char *begin)
    {
        const std::string_view str = view(begin, end_);
        const bool is_line = str.substr(1, 1) == "/";
        if (!is_line && str.substr(1, 1) != "*")
            return fail(json_problem::lone_slash, begin, begin + 1);
        const std::size_t size = is_line ? str.find_first_of("\r\n", 2) : str.find("*/", 2);
        const char *const end = begin + std::min(size, str.size());
        for (const char *at = begin + 2; at != end;) {
            const utf8_sequence character = utf8_at(view(at, end));
            if (*at == '\0')
                return fail(json_problem::unexpected, at, at);
            if (rules_.check_comments && !character.is_whole)
                return fail(json_problem::broken_utf8, at, at + character.size);
            at += std::max<std::size_t>(character.size, 1);
        }
        if (is_line)
            return end;
        return end != end_ ? end + 2 : fail(json_problem::unclosed_comment, begin, end);
    }

    // The word that begins with the byte, one of t, f and n.
    const char *take_word(const char *begin, json_kind &kind)
    {
        const std::string_view word = *begin == 't' ? "true" : *begin == 'f' ? "false" : "null";
        const auto [rest, at] = std::mismatch(word.begin(), word.end(), begin, end_);
        kind = *begin == 'n' ? json_kind::null : json_kind::boolean;
        return rest == word.end() ? at : fail(json_problem::unexpected, begin, at);
    }

    const char *take_number(const char *begin, json_kind &kind)
    {
        const char *digits = begin + (*begin == '-' ? 1 : 0);
        const char *at = byte(digits) == '0' ? digits + 1 : skip_digits(digits);
        kind = json_kind::integer;
        if (at != digits && byte(at) == '.') {
            kind = json_kind::decimal;
            digits = at + 1;
            at = skip_digits(digits);
        }
        if (at != digits && (byte(at) == 'e' || byte(at) == 'E')) {
            kind = json_kind::decimal;
            digits = at + (byte(at + 1) == '+' || byte(at + 1) == '-' ? 2 : 1);
            at = skip_digits(digits);
        }
        return at != digits ? at : fail(json_problem::incomplete_number, begin, at);
    }

    [[nodiscard]] const char *skip_digits(const char *at) const
    {
        while (is_digit(byte(at)))
            ++at;
        return at;
    }

    // Goes to the first byte that does not stand for itself in a string: a quote, a backslash, a
    // control character, or one outside ASCII. Eight bytes are looked at together, the first of
    // them as the lowest.
    [[nodiscard]] const char *skip_plain(const char *at) const
    {
        constexpr std::uint64_t ones = 0x0101010101010101U;
        std::uint64_t word = 0;
        for (; end_ - at >= static_cast<std::ptrdiff_t>(sizeof word); at += sizeof word) {
            std::memcpy(&word, at, sizeof word);
#if __BYTE_ORDER__ == __ORDER_BIG_ENDIAN__
            word = __builtin_bswap64(word);
#endif
            // A byte below what is taken off borrows, which sets its high bit. The bytes above it
            // may then have theirs for no reason, so only the lowest one counts.
            const std::uint64_t special =
                (word | (word - ones * ' ') | ((word ^ ones * '"') - ones) |
                 ((word ^ ones * '\\') - ones)) &
                ones * 0x80U;
            if (special != 0)
                return at + __builtin_ctzll(special) / 8;
        }
        while (at != end_ && *at >= ' ' && *at != '"' && *at != '\\' && (*at & 0x80) == 0)
            ++at;
        return at;
    }

    // The rest of a string that is not plain up to its end, which made_ gets if it is not as it is
    // written. Gives the quote.
    [[gnu::noinline]] const char *take_other_string(const char *begin, const char *at)
    {
        const char *kept = begin + 1;
        made_.clear();
        for (; byte(at) != '"'; at = skip_plain(at)) {
            if (at == end_)
                return fail(json_problem::unclosed_string, begin, at);
            const utf8_sequence character = utf8_at(view(at, end_));
            if (static_cast<unsigned char>(*at) < ' ')
                return fail(json_problem::control_character, at, at);
            if (character.is_whole && *at != '\\') {
                at += character.size;
                continue;
            }
            made_.append(kept, at);
            at = character.is_whole ? take_escape(at) : take_broken_utf8(at, character.size);
            if (at == nullptr)
                return nullptr;
            kept = at;
        }
        other_ = kept == begin + 1 ? view(kept, at) : made_.append(kept, at);
        return at;
    }

    // A run of bytes none of which begins a character is repaired as one.
    const char *take_broken_utf8(const char *at, std::size_t fitting)
    {
        if (!rules_.repair)
            return fail(json_problem::broken_utf8, at, at + fitting);
        do {
            ++at;
        } while (at != end_ && !utf8_at(view(at, end_)).is_whole);
        make_char(replacement);
        return at;
    }

    const char *take_escape(const char *begin)
    {
        constexpr std::string_view letters = "\"\\/bfnrt";
        constexpr std::string_view meanings = "\"\\/\b\f\n\r\t";
        if (byte(begin + 1) == 'u')
            return take_unicode_escape(begin);
        const std::size_t found = letters.find(byte(begin + 1));
        if (found == std::string_view::npos)
            return fail(json_problem::unknown_escape, begin, begin + 1);
        made_ += meanings[found];
        return begin + 2;
    }

    const char *take_unicode_escape(const char *begin)
    {
        std::uint32_t chr = 0;
        std::uint32_t trail = 0;
        const char *const at = take_unit(begin, chr);
        if (at - begin != unit_size)
            return fail(json_problem::incomplete_escape, begin, at);
        const char *shows_it = at - 1;
        if (is_surrogate(chr, first_lead)) {
            const char *const end = take_unit(at, trail);
            const bool is_escape = end - at == unit_size;
            if (is_escape && is_surrogate(trail, first_trail)) {
                make_char(0x10000 + ((chr - first_lead) << 10U) + (trail - first_trail));
                return end;
            }
            shows_it = is_escape ? end - 1 : end;
        }
        const bool is_lone = is_surrogate(chr, first_lead) || is_surrogate(chr, first_trail);
        if (is_lone && !rules_.repair)
            return fail(json_problem::lone_surrogate, begin, shows_it);
        make_char(is_lone ? replacement : chr);
        return at;
    }

    // Gives the end of the escape \uXXXX, or the first byte that does not fit into one.
    const char *take_unit(const char *at, std::uint32_t &unit) const
    {
        for (const char chr : {'\\', 'u'}) {
            if (byte(at) != chr)
                return at;
            ++at;
        }
        return std::from_chars(at, at + std::min<std::ptrdiff_t>(end_ - at, 4), unit, 16).ptr;
    }

    static bool is_surrogate(std::uint32_t unit, std::uint32_t first)
    {
        return unit >= first && unit < first + 0x400;
    }

    void make_char(std::uint32_t chr)
    {
        constexpr std::uint32_t leads[] = {0, 0xC0, 0xE0, 0xF0};
        unsigned more = chr < 0x80 ? 0 : chr < 0x800 ? 1 : chr < 0x10000 ? 2 : 3;
        made_ += static_cast<char>(leads[more] | chr >> 6 * more);
        while (more-- > 0)
            made_ += static_cast<char>(0x80U | (chr >> 6 * more & 0x3FU));
    }

    const char *fail(json_problem problem, const char *begin, const char *at)
    {
        fault_ = {problem, wanted_, offset_of(begin), offset_of(at)};
        end_ = nullptr; // so that nothing more is read
        return nullptr;
    }

    static constexpr std::ptrdiff_t unit_size = 6;
    static constexpr std::uint32_t first_lead = 0xD800; // surrogates, 1,024 of each kind
    static constexpr std::uint32_t first_trail = 0xDC00;
    static constexpr std::uint32_t replacement = 0xFFFD;

    json_rules rules_;
    const char *begin_;
    const char *end_;
    json_wanted wanted_ = json_wanted::value;
    json_fault fault_;
    std::string made_;
    std::string_view other_;
};

// Reads a text and tells the handler, which has the operations of json_handler:
//     const json_fault fault = json_reader(text, handler, rules).read();
// What is wanted next is all that it keeps in mind, with the open objects and arrays.
template <typename Handler>
class json_reader : json_scanner
{
  public:
    json_reader(std::string_view source, Handler &handler, json_rules rules = {})
        : json_scanner(source, rules), handler_(handler)
    {
        rules_.max_levels = std::min(rules.max_levels, json_most_levels);
        after_[0] = json_wanted::end_of_text;
    }

    // Reads to the end of the text or to the first fault; once only.
    json_fault read()
    {
        constexpr std::string_view byte_order_mark = "\xEF\xBB\xBF";
        const char *at = begin_;
        if (view(at, end_).substr(0, byte_order_mark.size()) == byte_order_mark)
            at += byte_order_mark.size();
        while (at != end_) // most are spaces and strings
            at = *at == ' ' ? at + 1 : *at == '"' ? take_string(at) : take_other_token(at);
        if (fault_.problem == json_problem::none && wanted_ != json_wanted::end_of_text)
            unexpected(at);
        return fault_;
    }

  private:
    const char *take_other_token(const char *at)
    {
        switch (*at) {
        case '\t':
        case '\r':
            return at + 1;
        case '\n':
            return take_line_feed(at);
        case '/':
            return take_comment(at);
        case ':':
            if (wanted_ != json_wanted::colon)
                return unexpected(at);
            wanted_ = json_wanted::value;
            return at + 1;
        case ',':
            if (wanted_ != after_[level_] || level_ == 0)
                return unexpected(at);
            wanted_ =
                wanted_ == json_wanted::comma_or_brace ? json_wanted::name : json_wanted::value;
            is_empty_ = false;
            return at + 1;
        case '{':
            return open(at, json_kind::object, json_wanted::name, json_wanted::comma_or_brace);
        case '[':
            return open(at, json_kind::array, json_wanted::value, json_wanted::comma_or_bracket);
        case '}':
            return close(at, json_kind::object, json_wanted::comma_or_brace);
        case ']':
            return close(at, json_kind::array, json_wanted::comma_or_bracket);
        case 't':
        case 'f':
        case 'n':
            return take_scalar(at, true);
        default:
            return *at == '-' || is_digit(*at) ? take_scalar(at, false) : unexpected(at);
        }
    }

    const char *take_string(const char *begin)
    {
        const char *quote = skip_plain(begin + 1);
        std::string_view str = view(begin + 1, quote);
        if (byte(quote) != '"') {
            quote = take_other_string(begin, quote);
            if (quote == nullptr)
                return nullptr;
            str = other_;
        }
        if (wanted_ != json_wanted::name)
            return take_value(json_kind::string, str, begin, quote + 1, quote);
        handler_.name(str, offset_of(begin));
        is_empty_ = false;
        const bool has_colon = byte(quote + 1) == ':'; // as nearly always
        wanted_ = has_colon ? json_wanted::value : json_wanted::colon;
        return quote + (has_colon ? 2 : 1);
    }

    [[gnu::noinline]] const char *take_scalar(const char *begin, bool is_word)
    {
        json_kind kind{};
        const char *end = is_word ? take_word(begin, kind) : take_number(begin, kind);
        if (end != nullptr)
            end = take_value(kind, view(begin, end), begin, end, is_word ? end - 1 : begin);
        // A byte that may stand in a number may not follow one.
        const bool goes_on =
            end != nullptr && end != end_ && !is_word &&
            std::string_view("0123456789.eE+-").find(*end) != std::string_view::npos;
        return goes_on ? fail(json_problem::overlong_number, begin, end) : end;
    }

    const char *take_value(json_kind kind, std::string_view str, const char *begin, const char *end,
                           const char *last)
    {
        if (wanted_ != json_wanted::value)
            return fail(json_problem::unexpected, begin, last);
        handler_.value(kind, str, offset_of(begin));
        wanted_ = after_[level_];
        return end;
    }

    const char *open(const char *at, json_kind kind, json_wanted first, json_wanted after_value)
    {
        if (level_ == rules_.max_levels)
            return fail(json_problem::too_deep, at, at);
        if (wanted_ != json_wanted::value)
            return unexpected(at);
        wanted_ = first;
        is_empty_ = true;
        after_[++level_] = after_value;
        handler_.begin(kind, offset_of(at));
        return at + 1;
    }

    const char *close(const char *at, json_kind kind, json_wanted after_value)
    {
        if (after_[level_] != after_value || !(is_empty_ || wanted_ == after_value))
            return unexpected(at);
        wanted_ = after_[--level_];
        handler_.end(kind, offset_of(at));
        return at + 1;
    }

    const char *unexpected(const char *at) { return fail(json_problem::unexpected, at, at); }

    Handler &handler_;
    bool is_empty_ = false; // the open object or array, so far
    std::size_t level_ = 0;
    json_wanted after_[json_most_levels + 1]; // what follows a value, by level
};

} // namespace qel

#endif
