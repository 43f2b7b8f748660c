// The C library's time zones for a library that asks its program for them. Not for threads: which
// zone the C library goes by is in the environment.
#include "../qelstdlib/src/time_zone_host.h"

#include <cstdint>
#include <cstdlib>
#include <ctime>
#include <optional>
#include <string>

#include <sys/stat.h>

namespace
{

// Puts another TZ into the environment while it lives.
class other_zone
{
  public:
    explicit other_zone(const std::string &name)
    {
        if (const char *const own = std::getenv("TZ"))
            own_ = own;
        setenv("TZ", name.c_str(), 1);
        tzset();
    }
    ~other_zone()
    {
        if (own_)
            setenv("TZ", own_->c_str(), 1);
        else
            unsetenv("TZ");
        tzset();
    }
    other_zone(const other_zone &) = delete;
    other_zone &operator=(const other_zone &) = delete;

  private:
    std::optional<std::string> own_;
};

std::int32_t local_offset(std::int64_t time)
{
    const auto when = static_cast<std::time_t>(time);
    std::tm tm{};
    tzset();
    return localtime_r(&when, &tm) == nullptr ? 0 : static_cast<std::int32_t>(tm.tm_gmtoff);
}

} // namespace

std::int32_t Qel_time_host_offset(const char *name, std::int64_t time)
{
    if (*name == '\0')
        return local_offset(time);
    const char *const folder = std::getenv("TZDIR");
    const std::string path =
        std::string(folder != nullptr ? folder : "/usr/share/zoneinfo") + '/' + name;
    struct stat file {
    };
    if (stat(path.c_str(), &file) != 0 || !S_ISREG(file.st_mode))
        return QEL_TIME_HOST_UNKNOWN;
    const other_zone zone(name);
    return local_offset(time);
}
