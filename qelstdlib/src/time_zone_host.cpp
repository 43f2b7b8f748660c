// Time zones of the program that hosts the library, such as a browser, which has them already.
#include "time_zone_host.h"

#include "qelstdlib_int.h"
#include "time_zone.h"

#include <array>
#include <memory>
#include <string>

struct Qel_time_tz {
    std::string name;
};

namespace
{

// As the database names what has no abbreviation: -03, +0530, and seconds where there are any.
std::string numeric_abbr(std::int64_t offset)
{
    std::string abbr(1, offset < 0 ? '-' : '+');
    const std::int64_t seconds = offset < 0 ? -offset : offset;
    const std::array<std::int64_t, 3> parts{seconds / 3600, seconds / 60 % 60, seconds % 60};
    const std::size_t shown = parts[2] != 0 ? 3 : parts[1] != 0 ? 2 : 1;
    for (std::size_t i = 0; i < shown; ++i)
        abbr += qel::decimal(parts[i], 2);
    return abbr;
}

} // namespace

Qel_time_tz_t *Qel_time_tz_load(const char *name) noexcept
{
    const bool known = qel::is_zone_name(qel::view(name)) &&
                       Qel_time_host_offset(name, 0) != QEL_TIME_HOST_UNKNOWN;
    return known ? std::make_unique<Qel_time_tz>(Qel_time_tz{name}).release() : nullptr;
}

void Qel_time_tz_destroy(Qel_time_tz_t *zone) noexcept
{
    const std::unique_ptr<Qel_time_tz> ended(zone);
}

// The host does not say whether clocks are ahead for the summer.
Qel_time_localtm_t qel::local_time(Qel_time_t t, const Qel_time_tz_t *zone)
{
    const std::int32_t offset = Qel_time_host_offset(zone == nullptr ? "" : zone->name.c_str(), t);
    if (offset == QEL_TIME_HOST_UNKNOWN || offset == 0)
        return time_at_offset(t, 0, false, "UTC");
    return time_at_offset(t, offset, false, numeric_abbr(offset));
}
