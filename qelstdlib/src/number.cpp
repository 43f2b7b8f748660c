// Numbers and amounts in texts.
#include "qelstdlib_int.h"

#include <array>
#include <limits>

namespace
{

using qel::take_while;
using qel::view;

bool is_sign(char chr)
{
    return chr == '+' || chr == '-';
}

// The number with one more digit, or the greatest number when that is too large.
std::uint64_t with_digit(std::uint64_t number, char digit)
{
    std::uint64_t longer = 0;
    const auto value = static_cast<std::uint64_t>(digit - '0');
    const bool is_too_large = __builtin_mul_overflow(number, 10U, &longer) ||
                              __builtin_add_overflow(longer, value, &longer);
    return is_too_large ? std::numeric_limits<std::uint64_t>::max() : longer;
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
    std::string_view rest = qel::trimmed(view(str));
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
