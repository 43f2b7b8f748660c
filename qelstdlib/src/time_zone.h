// Where local times come from. Of the files time_zone_*.cpp the build chooses one; it also has
// Qel_time_tz_load and Qel_time_tz_destroy.
#ifndef QELSTDLIB_TIME_ZONE_H
#define QELSTDLIB_TIME_ZONE_H

#include "qelstdlib.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string_view>

namespace qel
{

// In the zone, or in the system's own when it is absent.
Qel_time_localtm_t local_time(Qel_time_t t, const Qel_time_tz_t *zone);

// The time on clocks that are offset seconds ahead of UTC.
Qel_time_localtm_t time_at_offset(Qel_time_t t, std::int64_t offset, bool is_dst,
                                  std::string_view abbr);

inline void set_abbr(Qel_time_localtm_t &localtm, std::string_view abbr)
{
    abbr.copy(localtm.abbr, sizeof localtm.abbr - 1); // the rest is zero already
}

// The last two digits, which count up before year 0 too.
constexpr std::int64_t two_digit_year(std::int64_t year)
{
    return (year % 100 + 100) % 100;
}

// Whether the name may stand in the time zone database, whose longest has 32 bytes. A name has no
// dots and no other bytes that loaders of zones take for paths and schemes, and is spelled in one
// way only.
inline bool is_zone_name(std::string_view name)
{
    constexpr std::size_t longest = 64;
    constexpr std::string_view allowed = "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ"
                                         "0123456789_+-/";
    return !name.empty() && name.size() <= longest && !name.starts_with('/') &&
           !name.ends_with('/') && name.find("//") == std::string_view::npos &&
           name.find_first_not_of(allowed) == std::string_view::npos;
}

} // namespace qel

#endif
