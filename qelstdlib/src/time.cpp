#include "qelstdlib_int.h"

#include <array>
#include <chrono>
#include <ctime>
#include <memory>

#include <cctz/civil_time.h>
#include <cctz/time_zone.h>

struct Qel_time_tz {
    cctz::time_zone zone;
};

namespace
{

// Names of the database have no other bytes. Keeping to them also keeps the loader, which takes
// paths and schemes as well, from opening any other file.
bool is_zone_name(std::string_view name)
{
    constexpr std::string_view allowed = "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ"
                                         "0123456789_+-/";
    const bool relative = !name.empty() && name.front() != '/';
    return relative && name.find_first_not_of(allowed) == std::string_view::npos;
}

std::int64_t two_digit_year(std::int64_t year)
{
    return (year % 100 + 100) % 100;
}

void set_abbr(Qel_time_localtm_t &localtm, std::string_view abbr)
{
    abbr.copy(localtm.abbr, sizeof localtm.abbr - 1); // the rest is zero already
}

Qel_time_localtm_t time_in_zone(Qel_time_t t, const cctz::time_zone &zone)
{
    const cctz::time_point<cctz::seconds> when{cctz::seconds(t)};
    const auto found = zone.lookup(when);
    const cctz::civil_second &civil = found.cs;
    const cctz::civil_day date(civil);
    const int days_since_monday = static_cast<int>(cctz::get_weekday(date));

    Qel_time_localtm_t localtm{};
    localtm.month = civil.month();
    localtm.day = civil.day();
    localtm.year = civil.year();
    localtm.year2 = two_digit_year(civil.year());
    localtm.hour = civil.hour();
    localtm.min = civil.minute();
    localtm.sec = civil.second();
    localtm.wday = (days_since_monday + 1) % 7;
    localtm.yday = cctz::get_yearday(date) - 1;
    localtm.isdst = found.is_dst ? 1 : 0;
    localtm.gmtoff = found.offset;
    set_abbr(localtm, found.abbr);
    return localtm;
}

// The C library knows every form that TZ may take. It has no time for years beyond an int; those
// are shown in UTC.
Qel_time_localtm_t time_in_system_zone(Qel_time_t t)
{
    const auto when = static_cast<std::time_t>(t);
    std::tm tm{};
    ::tzset(); // localtime_r need not look at TZ again
    if (::localtime_r(&when, &tm) == nullptr)
        return time_in_zone(t, cctz::utc_time_zone());

    Qel_time_localtm_t localtm{};
    localtm.month = tm.tm_mon + 1;
    localtm.day = tm.tm_mday;
    localtm.year = std::int64_t{tm.tm_year} + 1900;
    localtm.year2 = two_digit_year(localtm.year);
    localtm.hour = tm.tm_hour;
    localtm.min = tm.tm_min;
    localtm.sec = tm.tm_sec;
    localtm.wday = tm.tm_wday;
    localtm.yday = tm.tm_yday;
    localtm.isdst = tm.tm_isdst > 0 ? 1 : 0;
    localtm.gmtoff = tm.tm_gmtoff;
    set_abbr(localtm, qel::view(tm.tm_zone));
    return localtm;
}

struct field {
    char directive;
    std::int64_t Qel_time_localtm_t::*member;
    std::size_t digits;
    std::int64_t low; // the range when read
    std::int64_t high;
};

constexpr std::array<field, 7> fields{{
    {'m', &Qel_time_localtm_t::month, 2, 1, 12},
    {'d', &Qel_time_localtm_t::day, 2, 1, 31},
    {'y', &Qel_time_localtm_t::year2, 2, 0, 99},
    {'H', &Qel_time_localtm_t::hour, 2, 0, 23},
    {'M', &Qel_time_localtm_t::min, 2, 0, 59},
    {'S', &Qel_time_localtm_t::sec, 2, 0, 60},
    {'Y', &Qel_time_localtm_t::year, 4, 1, 0}, // only written: no value is in range
}};

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
    const bool known = found != fields.end();
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

Qel_time_t Qel_time(void) noexcept
{
    const auto now = std::chrono::system_clock::now().time_since_epoch();
    return std::chrono::floor<std::chrono::seconds>(now).count();
}

Qel_time_tz_t *Qel_time_tz_load(const char *name) noexcept
{
    if (!is_zone_name(qel::view(name)))
        return nullptr;
    auto zone = std::make_unique<Qel_time_tz>();
    const bool known = cctz::load_time_zone(name, &zone->zone);
    return known ? zone.release() : nullptr;
}

void Qel_time_tz_destroy(Qel_time_tz_t *zone) noexcept
{
    const std::unique_ptr<Qel_time_tz> ended(zone);
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
        *localtm = zone != nullptr ? time_in_zone(t, zone->zone) : time_in_system_zone(t);
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
