// Texts: what they are compared with, their capitals and their changed copies.
#include "qelstdlib_int.h"

#include <array>
#include <cstdlib>
#include <cstring>

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
    return qel::utf8_cnt(view(str));
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
    str1 = Qel_str_safe(str1);
    str2 = Qel_str_safe(str2);
    while (*str1 != '\0' && qel::to_lower(*str1) == qel::to_lower(*str2)) {
        ++str1;
        ++str2;
    }
    return *str1 == *str2;
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
    str = Qel_str_safe(str);
    while (qel::is_space(*str))
        ++str;
    return *str == '\0';
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
    const char *const begin = str;
    char *const end = str + std::strlen(str);
    while (end - str >= stretch_len) {
        if (is_ascii_stretch(str))
            upper_ascii_stretch(str);
        else
            upper_characters(str, str + stretch_len);
        str += stretch_len;
    }
    // What is left, together with what is in capitals already.
    if (end - begin >= stretch_len && is_ascii_stretch(end - stretch_len))
        upper_ascii_stretch(end - stretch_len);
    else
        upper_characters(str, end);
}

char *Qel_strdup(const char *str) noexcept
{
    return str == nullptr ? nullptr : qel::new_text(str);
}

char *Qel_strdup_trim(const char *str) noexcept
{
    return str == nullptr ? nullptr : qel::new_text(qel::trimmed(str));
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
