// Time zones that the program brings.
#include <qelstdlib.hpp>

#include <gtest/gtest.h>

#include <cstdlib>
#include <string_view>

TEST(HostZone, OffsetsAreTheHosts)
{
    const struct {
        const char *zone; // absent: the host's own
        Qel_time_t t;
        std::string_view shown;
        int64_t gmtoff;
        std::string_view abbr;
    } rows[] = {
        {"America/Toronto", 1678604399, "03/12/23 01:59:59", -18000, "-05"},
        {"America/Toronto", 1678604400, "03/12/23 03:00:00", -14400, "-04"},
        {"America/Toronto", -3000000000, "12/07/74 13:22:28", -19052, "-051732"},
        {"Asia/Kolkata", 1700000000, "11/15/23 03:43:20", 19800, "+0530"},
        {"Europe/London", 1700000000, "11/14/23 22:13:20", 0, "UTC"},
        {nullptr, 1700000000, "11/14/23 17:43:20", -16200, "-0430"},
    };
    setenv("TZ", "XYZ4:30", 1);
    for (const auto &row : rows) {
        const qel::time_tz zone(Qel_time_tz_load(row.zone));
        EXPECT_EQ(zone == nullptr, row.zone == nullptr);
        Qel_time_localtm_t tm{};
        Qel_time_tolocal(row.t, &tm, zone.get());
        const qel::text shown(Qel_time_to_str("%m/%d/%y %H:%M:%S", &tm));
        EXPECT_EQ(qel::view(shown), row.shown);
        EXPECT_EQ(tm.gmtoff, row.gmtoff);
        EXPECT_EQ(tm.abbr, row.abbr);
    }
    for (const char *name : {"", "Nowhere/None", "/America/Toronto", "America//Toronto"})
        EXPECT_EQ(Qel_time_tz_load(name), nullptr) << name;
}
