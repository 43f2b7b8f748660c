#include "qelstdlib_int.h"
#include "time_zone.h"

#include <chrono>
#include <iterator>

namespace
{

constexpr std::int64_t day_seconds = 86400;

// Rounds down, before 1970 too.
constexpr std::int64_t floor_div(std::int64_t value, std::int64_t divisor)
{
    return value / divisor - (value % divisor < 0 ? 1 : 0);
}

// What is left of it, from 0 up.
constexpr std::int64_t floor_mod(std::int64_t value, std::int64_t divisor)
{
    return (value % divisor + divisor) % divisor;
}

struct civil_date {
    std::int64_t year;
    std::int64_t month; // 1 to 12
    std::int64_t day;   // 1 to 31
    std::int64_t yday;  // from 0
};

constexpr bool is_leap(std::int64_t year)
{
    return year % 4 == 0 && (year % 100 != 0 || year % 400 == 0);
}

// The date so many days after 1970-01-01. Years are counted from March meanwhile, so that the day
// which leap years add is a year's last.
constexpr civil_date date_of(std::int64_t days)
{
    constexpr std::int64_t cycle_days = 146097; // of 400 years
    constexpr std::int64_t to_march_0000 = 719468;
    const std::int64_t since = days + to_march_0000;
    const std::int64_t cycle = floor_div(since, cycle_days);
    const std::int64_t in_cycle = floor_mod(since, cycle_days);
    const std::int64_t year_in_cycle =
        (in_cycle - in_cycle / 1460 + in_cycle / 36524 - in_cycle / 146096) / 365;
    const std::int64_t from_march =
        in_cycle - (365 * year_in_cycle + year_in_cycle / 4 - year_in_cycle / 100);
    const std::int64_t month_from_march = (5 * from_march + 2) / 153;
    const std::int64_t day = from_march - (153 * month_from_march + 2) / 5 + 1;
    const bool next_year = month_from_march >= 10; // January and February
    const std::int64_t year = 400 * cycle + year_in_cycle + (next_year ? 1 : 0);
    const std::int64_t yday = next_year ? from_march - 306 : from_march + 59 + is_leap(year);
    return {year, month_from_march + (next_year ? -9 : 3), day, yday};
}

struct field {
    char directive;
    std::int64_t Qel_time_localtm_t::*member;
    std::size_t digits;
    std::int64_t low; // the range when read
    std::int64_t high;
};

constexpr field fields[] = {
    {'m', &Qel_time_localtm_t::month, 2, 1, 12}, {'d', &Qel_time_localtm_t::day, 2, 1, 31},
    {'y', &Qel_time_localtm_t::year2, 2, 0, 99}, {'H', &Qel_time_localtm_t::hour, 2, 0, 23},
    {'M', &Qel_time_localtm_t::min, 2, 0, 59},   {'S', &Qel_time_localtm_t::sec, 2, 0, 60},
    {'Y', &Qel_time_localtm_t::year, 4, 1, 0}, // only written: no value is in range
};

// One step of a format: a field or, without one, a byte that stands for itself.
struct step {
    const field *value;
    char literal;
};

step take_step(std::string_view &fmt)
{
    const char first = fmt.front();
    fmt.remove_prefix(1);
    if (first != '%' || fmt.empty())
        return {nullptr, first};

    const auto *const found = std::ranges::find(fields, fmt.front(), &field::directive);
    const bool known = found != std::end(fields);
    if (known || fmt.front() == '%')
        fmt.remove_prefix(1);
    return {known ? found : nullptr, '%'};
}

bool take_literal(std::string_view &text, char literal)
{
    if (!text.starts_with(literal))
        return false;
    text.remove_prefix(1);
    return true;
}

bool take_field(std::string_view &text, const field &wanted, Qel_time_localtm_t &localtm)
{
    if (text.size() < 2 || !qel::is_digit(text[0]) || !qel::is_digit(text[1]))
        return false;
    const std::int64_t value = (text[0] - '0') * 10 + (text[1] - '0');
    if (value < wanted.low || value > wanted.high)
        return false;

    text.remove_prefix(2);
    localtm.*wanted.member = value;
    if (wanted.directive == 'y')
        localtm.year = value + (value >= 69 ? 1900 : 2000);
    return true;
}

} // namespace

Qel_time_localtm_t qel::time_at_offset(Qel_time_t t, std::int64_t offset, bool is_dst,
                                       std::string_view abbr)
{
    // Added to the time of day, so that no sum leaves the range.
    const std::int64_t shifted = floor_mod(t, day_seconds) + offset;
    const std::int64_t days = floor_div(t, day_seconds) + floor_div(shifted, day_seconds);
    const std::int64_t second = floor_mod(shifted, day_seconds);
    const civil_date date = date_of(days);

    Qel_time_localtm_t localtm{};
    localtm.month = date.month;
    localtm.day = date.day;
    localtm.year = date.year;
    localtm.year2 = two_digit_year(date.year);
    localtm.hour = second / 3600;
    localtm.min = second / 60 % 60;
    localtm.sec = second % 60;
    localtm.wday = floor_mod(days + 4, 7); // 1970 began on a Thursday
    localtm.yday = date.yday;
    localtm.isdst = is_dst ? 1 : 0;
    localtm.gmtoff = offset;
    set_abbr(localtm, abbr);
    return localtm;
}

Qel_time_t Qel_time(void) noexcept
{
    const auto now = std::chrono::system_clock::now().time_since_epoch();
    return std::chrono::floor<std::chrono::seconds>(now).count();
}

bool Qel_time_parsefmt(const char *text, const char *fmt, Qel_time_localtm_t *localtm) noexcept
{
    if (text == nullptr || fmt == nullptr || localtm == nullptr)
        return false;

    Qel_time_localtm_t parsed = *localtm;
    std::string_view text_rest = text;
    std::string_view fmt_rest = fmt;
    while (!fmt_rest.empty()) {
        const auto [value, literal] = take_step(fmt_rest);
        const bool fits = value != nullptr ? take_field(text_rest, *value, parsed)
                                           : take_literal(text_rest, literal);
        if (!fits)
            return false;
    }
    if (!text_rest.empty())
        return false;

    *localtm = parsed;
    return true;
}

void Qel_time_tolocal(Qel_time_t t, Qel_time_localtm_t *localtm, const Qel_time_tz_t *zone) noexcept
{
    if (localtm != nullptr)
        *localtm = qel::local_time(t, zone);
}

char *Qel_time_to_str(const char *fmt, const Qel_time_localtm_t *localtm) noexcept
{
    if (fmt == nullptr || localtm == nullptr)
        return qel::new_text("");

    std::string written;
    std::string_view rest = fmt;
    while (!rest.empty()) {
        const auto [value, literal] = take_step(rest);
        if (value != nullptr)
            written += qel::decimal(localtm->*value->member, value->digits);
        else
            written += literal;
    }
    return qel::new_text(written);
}
