#include "qelstdlib_int.h"

#include <array>
#include <cstdarg>
#include <cstring>
#include <limits>

namespace
{

using qel::view;

bool equal_ignoring_case(std::string_view a, std::string_view b)
{
    return std::ranges::equal(a, b, {}, qel::to_lower, qel::to_lower);
}

// At most the first max_len bytes; looks at no others.
std::string_view head(const char *str, std::size_t max_len)
{
    return {str, str == nullptr ? 0 : ::strnlen(str, max_len)};
}

std::string lowered(std::string_view str)
{
    std::string lower(str);
    std::ranges::transform(lower, lower.begin(), qel::to_lower);
    return lower;
}

// Takes the bytes at the start of rest for which the condition holds.
template <typename Condition>
std::string_view take_while(std::string_view &rest, Condition condition)
{
    const auto end = std::ranges::find_if_not(rest, condition);
    const auto taken = rest.substr(0, static_cast<std::size_t>(end - rest.begin()));
    rest.remove_prefix(taken.size());
    return taken;
}

bool is_sign(char chr)
{
    return chr == '+' || chr == '-';
}

std::string_view trimmed(std::string_view str)
{
    take_while(str, qel::is_space);
    while (!str.empty() && qel::is_space(str.back()))
        str.remove_suffix(1);
    return str;
}

} // namespace

bool Qel_str_isempty(const char *str) noexcept
{
    return str == nullptr || *str == '\0';
}

size_t Qel_str_len(const char *str) noexcept
{
    return str == nullptr ? 0 : std::strlen(str);
}

size_t Qel_utf8_cnt(const char *str) noexcept
{
    const std::string_view text = view(str);
    return text.size() - static_cast<size_t>(std::ranges::count_if(text, qel::is_continuation));
}

const char *Qel_str_safe(const char *str) noexcept
{
    return str == nullptr ? "" : str;
}

bool Qel_chr_isdigit(char chr) noexcept
{
    return qel::is_digit(chr);
}

bool Qel_str_eq(const char *str1, const char *str2) noexcept
{
    return view(str1) == view(str2);
}

bool Qel_str_caseeq(const char *str1, const char *str2) noexcept
{
    return equal_ignoring_case(view(str1), view(str2));
}

bool Qel_str_caseeq_max(const char *str1, const char *str2, size_t max_len) noexcept
{
    return equal_ignoring_case(head(str1, max_len), head(str2, max_len));
}

bool Qel_str_caseeq_start(const char *str, const char *prefix) noexcept
{
    if (str == nullptr)
        return false;
    const std::string_view start = view(prefix);
    return equal_ignoring_case(head(str, start.size()), start);
}

const char *Qel_str_casestr(const char *haystack, const char *needle) noexcept
{
    if (haystack == nullptr)
        return nullptr;

    // Lower case keeps every byte's place, and strstr is linear whatever the texts hold.
    const std::string lower_haystack = lowered(haystack);
    const std::string lower_needle = lowered(view(needle));
    const char *const found = std::strstr(lower_haystack.c_str(), lower_needle.c_str());
    return found == nullptr ? nullptr : haystack + (found - lower_haystack.c_str());
}

bool Qel_str_istrue(const char *str) noexcept
{
    constexpr std::array<std::string_view, 6> words{"1", "y", "yes", "t", "true", "on"};
    const std::string_view word = view(str);
    return std::ranges::any_of(words, [&](auto yes) { return equal_ignoring_case(word, yes); });
}

bool Qel_str_isspace(const char *str) noexcept
{
    return std::ranges::all_of(view(str), qel::is_space);
}

namespace
{

// The capital of a Latin letter from U+00E0 to U+017E; the letter itself when its capital is
// missing or is not two bytes long in UTF-8.
constexpr unsigned latin_capital(unsigned letter)
{
    constexpr unsigned division_sign = 0xF7;
    constexpr unsigned y_diaeresis = 0xFF;
    constexpr unsigned dotless_i = 0x131;    // its capital is the one byte I
    constexpr unsigned n_apostrophe = 0x149; // its capital is two characters

    if (letter < 0xE0 || letter > 0x17E)
        return letter;
    if (letter == division_sign || letter == dotless_i || letter == n_apostrophe)
        return letter;
    if (letter < y_diaeresis)
        return letter - 0x20;
    if (letter == y_diaeresis)
        return 0x178;

    // Capital and small letter alternate. The small one has the odd number, but for two runs.
    const bool even_is_small = (letter >= 0x139 && letter <= 0x148) || letter >= 0x179;
    const bool is_small = (letter % 2 == 0) == even_is_small;
    return is_small ? letter - 1 : letter;
}

constexpr char ascii_capital(char chr)
{
    return chr >= 'a' && chr <= 'z' ? static_cast<char>(chr - 'a' + 'A') : chr;
}

void upper_latin(char &lead, char &continuation)
{
    const unsigned letter = (static_cast<unsigned char>(lead) & 0x1FU) << 6U |
                            (static_cast<unsigned char>(continuation) & 0x3FU);
    const unsigned capital = latin_capital(letter);
    lead = static_cast<char>(0xC0U | capital >> 6U);
    continuation = static_cast<char>(0x80U | (capital & 0x3FU));
}

// The first byte of a character from U+00C0 to U+017F.
bool is_latin_lead(char chr)
{
    const auto byte = static_cast<unsigned char>(chr);
    return byte >= 0xC3U && byte <= 0xC5U;
}

// Every byte from begin to end; a letter that begins there may end one byte after it.
void upper_characters(char *begin, const char *end)
{
    for (; begin < end; ++begin) {
        if (is_latin_lead(begin[0]) && qel::is_continuation(begin[1]))
            upper_latin(begin[0], begin[1]);
        else
            *begin = ascii_capital(*begin);
    }
}

// Most text is ASCII, and a stretch of known length goes through the processor's wide registers.
constexpr std::ptrdiff_t stretch_len = 32;

bool is_ascii_stretch(const char *begin)
{
    std::array<std::uint64_t, 4> words;
    static_assert(sizeof words == stretch_len);
    std::memcpy(words.data(), begin, sizeof words);
    return ((words[0] | words[1] | words[2] | words[3]) & 0x8080808080808080U) == 0;
}

void upper_ascii_stretch(char *begin)
{
    for (std::ptrdiff_t i = 0; i < stretch_len; ++i)
        begin[i] = ascii_capital(begin[i]);
}

} // namespace

void Qel_str_upper(char *str) noexcept
{
    if (str == nullptr)
        return;
    char *const end = str + std::strlen(str);
    while (end - str >= stretch_len) {
        if (is_ascii_stretch(str))
            upper_ascii_stretch(str);
        else
            upper_characters(str, str + stretch_len);
        str += stretch_len;
    }
    upper_characters(str, end);
}

namespace
{

// The number with one more digit, or the greatest number when that is too large.
std::uint64_t with_digit(std::uint64_t number, char digit)
{
    constexpr auto greatest = std::numeric_limits<std::uint64_t>::max();
    const auto value = static_cast<std::uint64_t>(digit - '0');
    return number > (greatest - value) / 10 ? greatest : number * 10 + value;
}

std::int64_t with_sign(std::uint64_t number, bool negative)
{
    using limits = std::numeric_limits<std::int64_t>;
    if (number > static_cast<std::uint64_t>(limits::max()))
        return negative ? limits::min() : limits::max();
    const auto value = static_cast<std::int64_t>(number);
    return negative ? -value : value;
}

// Takes digits, '.' and digits from the start of rest; either run may be empty.
struct decimal_parts {
    std::string_view units;
    std::string_view decimals;

    explicit decimal_parts(std::string_view &rest) : units(take_while(rest, qel::is_digit))
    {
        if (!rest.starts_with('.'))
            return;
        rest.remove_prefix(1);
        decimals = take_while(rest, qel::is_digit);
    }

    [[nodiscard]] bool is_number() const { return !units.empty() || !decimals.empty(); }

    [[nodiscard]] std::array<char, 2> hundredths() const
    {
        std::array<char, 2> two{'0', '0'};
        decimals.copy(two.data(), two.size());
        return two;
    }
};

} // namespace

int64_t Qel_str_to_int64(const char *str) noexcept
{
    std::string_view rest = view(str);
    take_while(rest, qel::is_space);
    const bool negative = rest.starts_with('-');
    if (!rest.empty() && is_sign(rest.front()))
        rest.remove_prefix(1);

    std::uint64_t number = 0;
    for (const char digit : take_while(rest, qel::is_digit))
        number = with_digit(number, digit);
    return with_sign(number, negative);
}

int64_t Qel_atofi100(const char *str) noexcept
{
    std::string_view rest = view(str);
    // A '-' put in front of a negative amount makes it positive, with a blank between them too.
    const std::string_view signs =
        take_while(rest, [](char chr) { return is_sign(chr) || qel::is_space(chr); });
    const bool negative = std::ranges::count(signs, '-') % 2 != 0;

    const decimal_parts parts(rest);
    std::uint64_t number = 0;
    for (const char digit : parts.units)
        number = with_digit(number, digit);
    for (const char digit : parts.hundredths())
        number = with_digit(number, digit);
    return with_sign(number, negative);
}

char *Qel_str_dot_money_out(const char *str) noexcept
{
    std::string_view rest = trimmed(view(str));
    const bool minus = rest.starts_with('-');
    if (!rest.empty() && is_sign(rest.front()))
        rest.remove_prefix(1);
    const decimal_parts parts(rest);
    if (!parts.is_number() || !rest.empty())
        return nullptr;

    std::string_view units = parts.units;
    take_while(units, [](char chr) { return chr == '0'; });
    const std::array<char, 2> hundredths = parts.hundredths();
    const bool zero = units.empty() && hundredths == std::array<char, 2>{'0', '0'};

    qel::text_builder money(units.size() + 5); // room for the sign, a 0 and the decimals
    money.append(minus && !zero ? "-" : "").append(units.empty() ? "0" : units).append('.');
    money.append({hundredths.data(), hundredths.size()});
    return money.release();
}

char *Qel_strdup(const char *str) noexcept
{
    return str == nullptr ? nullptr : qel::new_text(str);
}

char *Qel_strdup_trim(const char *str) noexcept
{
    return str == nullptr ? nullptr : qel::new_text(trimmed(str));
}

char *Qel_strdup_replace_str(const char *str, const char *search, const char *replace) noexcept
{
    if (str == nullptr || Qel_str_isempty(search))
        return Qel_strdup(str);

    std::string replaced;
    const std::size_t search_len = std::strlen(search);
    while (const char *const found = std::strstr(str, search)) {
        replaced.append(str, found).append(view(replace));
        str = found + search_len;
    }
    replaced.append(str);
    return qel::new_text(replaced);
}

char *Qel_strdup_replace_charset(const char *str, const char *charset, size_t charset_len,
                                 const char *replace) noexcept
{
    if (str == nullptr || charset == nullptr)
        return Qel_strdup(str);

    std::array<bool, 256> in_charset{};
    for (const char chr : std::string_view(charset, charset_len))
        in_charset[static_cast<unsigned char>(chr)] = true;

    std::string replaced;
    const std::string_view replacement = view(replace);
    for (const char chr : std::string_view(str)) {
        if (in_charset[static_cast<unsigned char>(chr)])
            replaced.append(replacement);
        else
            replaced.push_back(chr);
    }
    return qel::new_text(replaced);
}

namespace
{

enum class argument { none, text, integer, natural, natural_two_digits };

struct directive {
    std::string_view spelling;
    argument takes;
};

constexpr directive directives[] = {
    {"%s", argument::text},      {"%lld", argument::integer},
    {"%llu", argument::natural}, {"%02llu", argument::natural_two_digits},
    {"%%", argument::none},
};

// The directive that the format begins with, or absent.
const directive *find_directive(std::string_view fmt)
{
    if (!fmt.starts_with('%'))
        return nullptr;
    const auto *const found = std::ranges::find_if(
        directives, [&](const directive &known) { return fmt.starts_with(known.spelling); });
    return found == std::end(directives) ? nullptr : found;
}

// A va_list that functions can share: passed by itself, it would be spent after the first.
struct arguments {
    va_list list;
};

template <typename Put>
void put_argument(argument takes, arguments &args, Put &put)
{
    switch (takes) {
    case argument::none:
        put("%");
        break;
    case argument::text:
        put(view(va_arg(args.list, const char *)));
        break;
    case argument::integer:
        put(qel::decimal(va_arg(args.list, long long), 1));
        break;
    case argument::natural:
        put(qel::decimal(va_arg(args.list, unsigned long long), 1));
        break;
    case argument::natural_two_digits:
        put(qel::decimal(va_arg(args.list, unsigned long long), 2));
        break;
    }
}

// Hands the pieces of the formatted text to put, one after the other.
template <typename Put>
void format(const char *fmt, arguments &args, Put &put)
{
    std::string_view rest = view(fmt);
    while (!rest.empty()) {
        if (const directive *const found = find_directive(rest)) {
            put_argument(found->takes, args, put);
            rest.remove_prefix(found->spelling.size());
            continue;
        }
        // Up to the next '%'. One that begins no directive stands for itself.
        const std::string_view literal = rest.substr(0, rest.find('%', 1));
        put(literal);
        rest.remove_prefix(literal.size());
    }
}

// Takes what fits into an area of the caller's.
class bounded_text
{
  public:
    bounded_text(char *area, std::size_t size) : area_(area), max_len_(size - 1) {}

    void operator()(std::string_view piece)
    {
        const std::size_t kept = piece.copy(area_ + len_, max_len_ - len_);
        len_ += kept;
        if (kept < piece.size() && first_lost_ == '\0')
            first_lost_ = piece[kept];
    }

    std::size_t finish()
    {
        if (qel::is_continuation(first_lost_))
            drop_cut_character();
        area_[len_] = '\0';
        return len_;
    }

  private:
    // Stray bytes that belong to no character are no reason to drop any, nor is one that follows a
    // whole character.
    void drop_cut_character()
    {
        std::size_t begin = len_;
        while (begin > 0 && qel::is_continuation(area_[begin - 1]))
            --begin;
        if (begin > 0 && len_ - (begin - 1) < char_len(area_[begin - 1]))
            len_ = begin - 1;
    }

    // How many bytes a character has that begins so; 1 for what begins none of more.
    static std::size_t char_len(char lead)
    {
        const auto byte = static_cast<unsigned char>(lead);
        if (byte >= 0xF0U)
            return 4;
        if (byte >= 0xE0U)
            return 3;
        return byte >= 0xC0U ? 2 : 1;
    }

    char *area_;
    std::size_t max_len_;
    std::size_t len_ = 0;
    char first_lost_ = '\0';
};

} // namespace

size_t Qel_snprintf(char *buf, size_t size, const char *fmt, ...) noexcept
{
    if (buf == nullptr || size == 0)
        return 0;

    bounded_text bounded(buf, size);
    arguments args;
    va_start(args.list, fmt);
    format(fmt, args, bounded);
    va_end(args.list);
    return bounded.finish();
}

size_t Qel_asprintf(char **out, const char *fmt, ...) noexcept
{
    if (out == nullptr)
        return 0;

    qel::text_builder text(31);
    const auto append = [&](std::string_view piece) { text.append(piece); };
    arguments args;
    va_start(args.list, fmt);
    format(fmt, args, append);
    va_end(args.list);
    const std::size_t len = text.size();
    *out = text.release();
    return len;
}

void Qel_mem_move(void *dest, const void *src, size_t len) noexcept
{
    if (dest != nullptr && src != nullptr)
        std::memmove(dest, src, len);
}

void Qel_mem_set(void *mem, uint8_t byte, size_t len) noexcept
{
    if (mem != nullptr)
        std::memset(mem, byte, len);
}

void Qel_free(void *mem) noexcept
{
    std::free(mem); // NOLINT(cppcoreguidelines-no-malloc,cppcoreguidelines-owning-memory)
}
