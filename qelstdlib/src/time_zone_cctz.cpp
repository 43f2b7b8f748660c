// Time zones from the system's zone files, which the library cctz reads.
#include "qelstdlib_int.h"
#include "time_zone.h"

#include <chrono>
#include <cstdlib>
#include <ctime>
#include <memory>
#include <string>

#include <cctz/time_zone.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

struct Qel_time_tz {
    cctz::time_zone zone;
};

namespace
{

// The loader keeps what it has looked for until the process ends, found or not, so it is asked only
// for what is there and can be opened: a moment without free descriptors must not make a zone
// unknown for good. (Another thread may still take the last one in between.) It looks in the same
// place, and knows UTC without a file.
bool can_open_zone_file(const std::string &name)
{
    if (name == "UTC")
        return true;
    const char *const folder = std::getenv("TZDIR");
    const bool is_set = folder != nullptr && *folder != '\0';
    const std::string path = std::string(is_set ? folder : "/usr/share/zoneinfo") + '/' + name;
    const int fd = ::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK);
    struct stat file {
    };
    const bool is_file = fd >= 0 && ::fstat(fd, &file) == 0 && S_ISREG(file.st_mode);
    if (fd >= 0)
        ::close(fd);
    return is_file;
}

// The C library knows every form that TZ may take. It has no time for years beyond an int; those
// are shown in UTC.
Qel_time_localtm_t time_in_system_zone(Qel_time_t t)
{
    const auto when = static_cast<std::time_t>(t);
    std::tm tm{};
    ::tzset(); // localtime_r need not look at TZ again
    if (when != t || ::localtime_r(&when, &tm) == nullptr)
        return qel::time_at_offset(t, 0, false, "UTC");

    Qel_time_localtm_t localtm{};
    localtm.month = tm.tm_mon + 1;
    localtm.day = tm.tm_mday;
    localtm.year = std::int64_t{tm.tm_year} + 1900;
    localtm.year2 = qel::two_digit_year(localtm.year);
    localtm.hour = tm.tm_hour;
    localtm.min = tm.tm_min;
    localtm.sec = tm.tm_sec;
    localtm.wday = tm.tm_wday;
    localtm.yday = tm.tm_yday;
    localtm.isdst = tm.tm_isdst > 0 ? 1 : 0;
    localtm.gmtoff = tm.tm_gmtoff;
    qel::set_abbr(localtm, qel::view(tm.tm_zone));
    return localtm;
}

} // namespace

Qel_time_tz_t *Qel_time_tz_load(const char *name) noexcept
{
    if (!qel::is_zone_name(qel::view(name)) || !can_open_zone_file(name))
        return nullptr;
    auto zone = std::make_unique<Qel_time_tz>();
    const bool known = cctz::load_time_zone(name, &zone->zone);
    return known ? zone.release() : nullptr;
}

void Qel_time_tz_destroy(Qel_time_tz_t *zone) noexcept
{
    const std::unique_ptr<Qel_time_tz> ended(zone);
}

Qel_time_localtm_t qel::local_time(Qel_time_t t, const Qel_time_tz_t *zone)
{
    if (zone == nullptr)
        return time_in_system_zone(t);
    const auto found = zone->zone.lookup(cctz::time_point<cctz::seconds>(cctz::seconds(t)));
    return time_at_offset(t, found.offset, found.is_dst, found.abbr);
}
