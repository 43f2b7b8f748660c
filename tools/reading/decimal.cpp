#include "reading/decimal.h"

#include <charconv>
#include <system_error>

namespace tool
{

std::string decimal_text(std::string_view number)
{
    constexpr long most_digits = 400;
    const size_t mark = number.find_first_of("eE");
    if (mark == std::string_view::npos)
        return std::string(number);
    std::string_view exponent_text = number.substr(mark + 1);
    if (exponent_text.starts_with('+'))
        exponent_text.remove_prefix(1);
    long exponent = 0;
    const char *const end = exponent_text.data() + exponent_text.size();
    const auto [stop, error] = std::from_chars(exponent_text.data(), end, exponent);
    if (error != std::errc() || stop != end || exponent > most_digits || exponent < -most_digits)
        return std::string(number);

    std::string_view significand = number.substr(0, mark);
    std::string text;
    if (significand.starts_with('-')) {
        text = "-";
        significand.remove_prefix(1);
    }
    const std::string_view units = significand.substr(0, significand.find('.'));
    std::string digits(units);
    if (units.size() < significand.size())
        digits += significand.substr(units.size() + 1);
    const long point = static_cast<long>(units.size()) + exponent; // digits in front of it
    if (point <= 0)
        return text + "0." + std::string(static_cast<size_t>(-point), '0') + digits;
    const auto front = static_cast<size_t>(point);
    if (front >= digits.size())
        return text + digits + std::string(front - digits.size(), '0');
    return text + digits.substr(0, front) + "." + digits.substr(front);
}

} // namespace tool
