// The tokens of JSON, for qelstdlib_json.hpp: how they are taken off a text, and what may be wrong
// with them. Header only, C++17, without exceptions of its own.
#ifndef QELSTDLIB_JSON_TOKENS_HPP
#define QELSTDLIB_JSON_TOKENS_HPP

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>
#include <string_view>

namespace qel
{

enum class json_scalar { integer, decimal, boolean, null };

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

enum class json_wanted { value, name, colon, comma_or_brace, comma_or_bracket, end_of_text };

// What is wrong with a text and where, in bytes from its beginning.
struct json_fault {
    json_problem problem = json_problem::none;
    json_wanted wanted = json_wanted::value; // instead of what is unexpected or overlong
    std::size_t begin = 0;                   // of the token, number, escape or character
    std::size_t at = 0; // the byte that shows it; the last one of an unexpected string or word
};

struct json_rules {
    std::size_t max_levels = 512; // of open objects and arrays, at most json_most_levels
    bool repair = false;          // broken UTF-8 and lone surrogates become U+FFFD
    bool check_comments = false;  // for broken UTF-8, too
};

inline constexpr std::size_t json_most_levels = 1024;

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

// Takes the tokens off a text, one after the other.
class json_scanner
{
  protected:
    json_scanner(std::string_view source, json_rules rules)
        : rules_(rules), begin_(source.data()), at_(begin_), end_(begin_ + source.size())
    {
    }

    [[nodiscard]] char next() const { return at_ != end_ ? *at_ : '\0'; }

    [[nodiscard]] bool next_is_number() const { return next() == '-' || is_digit(next()); }

    bool take(char chr)
    {
        const bool is_next = at_ != end_ && *at_ == chr;
        at_ += is_next ? 1 : 0;
        return is_next;
    }

    // Blanks and comments; false for a fault in a comment.
    bool skip_blanks()
    {
        if (at_ != end_ && *at_ == ' ') // mostly there is one or none
            ++at_;
        return (at_ != end_ && *at_ > ' ' && *at_ != '/') || skip_more_blanks();
    }

    // The text between the quote that comes next and the one that closes it.
    bool take_string(std::string_view &str)
    {
        const char *const begin = ++at_;
        skip_plain();
        if (next() != '"')
            return take_other_string(begin, str);
        str = view(begin, at_++);
        return true;
    }

    bool take_number(json_scalar &kind)
    {
        const char *const begin = at_;
        kind = json_scalar::integer;
        take('-');
        bool is_whole = take('0') || take_digits();
        if (is_whole && take('.')) {
            kind = json_scalar::decimal;
            is_whole = take_digits();
        }
        if (is_whole && (take('e') || take('E'))) {
            kind = json_scalar::decimal;
            if (!take('+'))
                take('-');
            is_whole = take_digits();
        }
        return is_whole || fail(json_problem::incomplete_number, begin, at_);
    }

    // A byte that no number may be followed by, although it may stand in one.
    [[nodiscard]] bool number_goes_on() const
    {
        return is_digit(next()) || next() == '.' || next() == 'e' || next() == 'E' ||
               next() == '+' || next() == '-';
    }

    // The word that begins with the byte that comes next, one of t, f and n.
    bool take_word()
    {
        const std::string_view word = next() == 't' ? "true" : next() == 'f' ? "false" : "null";
        const char *const begin = at_;
        const bool is_whole =
            std::all_of(word.begin(), word.end(), [&](char chr) { return take(chr); });
        return is_whole || fail(json_problem::unexpected, begin, at_);
    }

    // The whole token is read first: what is wrong within it counts more than where it stands.
    [[gnu::noinline]] bool unexpected(json_wanted wanted)
    {
        const char *const begin = at_;
        std::string_view str;
        json_scalar kind{};
        fault_.wanted = wanted;
        if (next_is_number())
            return take_number(kind) && fail(json_problem::unexpected, begin, begin);
        const bool is_word = next() == 't' || next() == 'f' || next() == 'n';
        if (is_word || next() == '"')
            return (is_word ? take_word() : take_string(str)) &&
                   fail(json_problem::unexpected, begin, at_ - 1);
        return fail(json_problem::unexpected, begin, begin);
    }

    bool fail(json_problem problem, const char *begin, const char *at)
    {
        fault_ = {problem, fault_.wanted, offset_of(begin), offset_of(at)};
        return false;
    }

    [[nodiscard]] std::size_t offset_of(const char *place) const
    {
        return static_cast<std::size_t>(place - begin_);
    }
    static std::string_view view(const char *begin, const char *end)
    {
        return {begin, static_cast<std::size_t>(end - begin)};
    }

    json_rules rules_;
    const char *begin_;
    const char *at_; // what comes next
    const char *end_;
    json_fault fault_;

  private:
    static constexpr std::ptrdiff_t unicode_escape_size = 6;
    static constexpr std::uint32_t first_lead = 0xD800; // surrogates, 1,024 of each kind
    static constexpr std::uint32_t first_trail = 0xDC00;
    static constexpr std::uint32_t replacement = 0xFFFD;

    static bool is_digit(char chr) { return chr >= '0' && chr <= '9'; }

    static bool is_surrogate(std::uint32_t unit, std::uint32_t first)
    {
        return unit >= first && unit < first + 0x400;
    }

    static std::uint32_t hex_value(char chr) // 16 and more for what is no digit
    {
        const auto letter = static_cast<unsigned char>(chr | 0x20);
        if (is_digit(chr))
            return static_cast<std::uint32_t>(chr - '0');
        return letter >= 'a' && letter <= 'f' ? letter - 'a' + 10U : 16U;
    }

    bool take_digits()
    {
        const char *const begin = at_;
        while (is_digit(next()))
            ++at_;
        return at_ != begin;
    }

    [[gnu::noinline]] bool skip_more_blanks()
    {
        for (;;) {
            skip_spaces();
            if (next() == '\n' || next() == '\t' || next() == '\r')
                ++at_;
            else if (next() != '/')
                return true;
            else if (!skip_comment())
                return false;
        }
    }

    // An indented line begins with many.
    void skip_spaces()
    {
        constexpr std::string_view many = "        ";
        while (view(at_, end_).substr(0, many.size()) == many)
            at_ += many.size();
        while (at_ != end_ && *at_ == ' ')
            ++at_;
    }

    bool skip_comment()
    {
        const char *const begin = at_++;
        const bool is_line = next() == '/';
        if (!is_line && next() != '*')
            return fail(json_problem::lone_slash, begin, at_);
        while (++at_ != end_) {
            if (is_line && (*at_ == '\n' || *at_ == '\r'))
                return true;
            if (!is_line && *at_ == '*' && view(at_, end_).substr(1, 1) == "/") {
                at_ += 2;
                return true;
            }
            if (*at_ == '\0')
                return fail(json_problem::unexpected, at_, at_);
            if (rules_.check_comments) {
                const utf8_sequence character = utf8_at(view(at_, end_));
                if (!character.is_whole)
                    return fail(json_problem::broken_utf8, at_, at_ + character.size);
                at_ += character.size - 1;
            }
        }
        return is_line || fail(json_problem::unclosed_comment, begin, end_);
    }

    // Goes to the first byte that does not stand for itself in a string: a quote, a backslash, a
    // control character, or one outside ASCII. Eight bytes are looked at together.
    void skip_plain()
    {
        constexpr std::uint64_t ones = 0x0101010101010101U;
        std::uint64_t word = 0;
        for (; end_ - at_ >= static_cast<std::ptrdiff_t>(sizeof word); at_ += sizeof word) {
            std::memcpy(&word, at_, sizeof word);
            // A byte below what is taken off borrows, which sets its high bit. The bytes above it
            // may then have theirs for no reason, so only the lowest one counts.
            const std::uint64_t special =
                (word | (word - ones * ' ') | ((word ^ ones * '"') - ones) |
                 ((word ^ ones * '\\') - ones)) &
                ones * 0x80U;
            if (special == 0)
                continue;
#if defined(__BYTE_ORDER__) && __BYTE_ORDER__ == __ORDER_LITTLE_ENDIAN__
            at_ += __builtin_ctzll(special) / 8;
            return;
#else
            break;
#endif
        }
        while (at_ != end_ && *at_ >= ' ' && *at_ != '"' && *at_ != '\\' && (*at_ & 0x80) == 0)
            ++at_;
    }

    // A string that is not plain up to its end. What was changed in it stands in made_, and so does
    // what comes before that.
    [[gnu::noinline]] bool take_other_string(const char *begin, std::string_view &str)
    {
        const char *kept = begin;
        made_.clear();
        for (; next() != '"'; skip_plain()) {
            if (at_ == end_)
                return fail(json_problem::unclosed_string, begin - 1, at_);
            const utf8_sequence character = utf8_at(view(at_, end_));
            if (character.is_whole && *at_ != '\\') {
                if (static_cast<unsigned char>(*at_) < ' ')
                    return fail(json_problem::control_character, at_, at_);
                at_ += character.size;
                continue;
            }
            made_.append(kept, at_);
            if (!(character.is_whole ? take_escape() : take_broken_utf8(character.size)))
                return false;
            kept = at_;
        }
        str = view(kept, at_++);
        if (kept != begin)
            str = made_.append(str);
        return true;
    }

    // A run of bytes none of which begins a character is repaired as one.
    bool take_broken_utf8(std::size_t fitting)
    {
        if (!rules_.repair)
            return fail(json_problem::broken_utf8, at_, at_ + fitting);
        do {
            ++at_;
        } while (at_ != end_ && !utf8_at(view(at_, end_)).is_whole);
        make_char(replacement);
        return true;
    }

    bool take_escape()
    {
        constexpr std::string_view letters = "\"\\/bfnrt";
        constexpr std::string_view meanings = "\"\\/\b\f\n\r\t";
        const char *const begin = at_++;
        if (next() == 'u')
            return take_unicode_escape(begin);
        const std::size_t found = at_ != end_ ? letters.find(*at_) : letters.npos;
        if (found == letters.npos)
            return fail(json_problem::unknown_escape, begin, at_);
        made_ += meanings[found];
        ++at_;
        return true;
    }

    bool take_unicode_escape(const char *begin)
    {
        std::uint32_t chr = 0;
        std::uint32_t trail = 0;
        at_ = read_unicode_escape(begin, chr);
        if (at_ - begin < unicode_escape_size)
            return fail(json_problem::incomplete_escape, begin, at_);
        const char *shows_it = at_ - 1;
        if (is_surrogate(chr, first_lead)) {
            const char *const end = read_unicode_escape(at_, trail);
            const bool is_escape = end - at_ == unicode_escape_size;
            if (is_escape && is_surrogate(trail, first_trail)) {
                at_ = end;
                chr = 0x10000 + ((chr - first_lead) << 10U) + (trail - first_trail);
            }
            shows_it = is_escape ? end - 1 : end;
        }
        if (is_surrogate(chr, first_lead) || is_surrogate(chr, first_trail)) {
            if (!rules_.repair)
                return fail(json_problem::lone_surrogate, begin, shows_it);
            chr = replacement;
        }
        make_char(chr);
        return true;
    }

    // Gives the end of the escape \uXXXX, or the first byte that does not fit into one.
    const char *read_unicode_escape(const char *escape, std::uint32_t &unit) const
    {
        const char *const end = escape + std::min(end_ - escape, unicode_escape_size);
        const char *at = escape;
        for (const char chr : {'\\', 'u'}) {
            if (at == end || *at != chr)
                return at;
            ++at;
        }
        for (; at != end && hex_value(*at) < 16; ++at)
            unit = unit * 16 + hex_value(*at);
        return at;
    }

    void make_char(std::uint32_t chr)
    {
        constexpr std::uint32_t leads[] = {0, 0xC0, 0xE0, 0xF0};
        unsigned more = chr < 0x80 ? 0 : chr < 0x800 ? 1 : chr < 0x10000 ? 2 : 3;
        made_ += static_cast<char>(leads[more] | chr >> 6 * more);
        while (more-- > 0)
            made_ += static_cast<char>(0x80U | (chr >> 6 * more & 0x3FU));
    }

    std::string made_;
};

} // namespace qel

#endif
