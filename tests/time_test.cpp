// Time: parsing, writing, zones and the calendar.
#include "qelstdlib_tests.hpp"

#include <cstdlib>
#include <ctime>
#include <filesystem>
#include <utility>

#include <malloc.h>
#include <sys/resource.h>
#include <unistd.h>

namespace
{

using namespace test;

// The fields in their order, for comparison and for messages.
std::string fields_of(const Qel_time_localtm_t &tm)
{
    std::string text;
    for (const std::int64_t value : {tm.month, tm.day, tm.year, tm.year2, tm.hour, tm.min, tm.sec,
                                     tm.wday, tm.yday, tm.isdst, tm.gmtoff})
        text += std::to_string(value) + ' ';
    return text + tm.abbr;
}

std::string local_fields(Qel_time_t t, const Qel_time_tz_t *zone)
{
    Qel_time_localtm_t tm{};
    Qel_time_tolocal(t, &tm, zone);
    return fields_of(tm);
}

TEST(Time, Parse)
{
    const std::pair<const char *, const char *> rows[] = {
        {"070423153000", "7 4 2023 23 15 30 0 0 0 0 42 "},
        {"010169000000", "1 1 1969 69 0 0 0 0 0 0 42 "},
        {"123199235960", "12 31 1999 99 23 59 60 0 0 0 42 "},
        {"023168000000", "2 31 2068 68 0 0 0 0 0 0 42 "}, // the calendar is not consulted
    };
    for (const auto &[text, fields] : rows) {
        Qel_time_localtm_t tm{};
        tm.gmtoff = 42;
        EXPECT_TRUE(Qel_time_parsefmt(text, "%m%d%y%H%M%S", &tm)) << text;
        EXPECT_EQ(fields_of(tm), fields);
    }
    Qel_time_localtm_t tm{};
    for (const char *bad :
         texts{absent, "", "07042315300", "0704231530000", "130423153000", "000423153000",
               "070023153000", "073223153000", "070423243000", "070423156000", "070423153061",
               "0704231530 1", "07042315301 ", "+7042315300"})
        EXPECT_FALSE(Qel_time_parsefmt(bad, "%m%d%y%H%M%S", &tm)) << bad;
    EXPECT_FALSE(Qel_time_parsefmt("07", absent, &tm));
    EXPECT_FALSE(Qel_time_parsefmt("07", "%m", nullptr));
    EXPECT_FALSE(Qel_time_parsefmt("07-04", "%m/%d", &tm));
    EXPECT_EQ(fields_of(tm), fields_of({}));
    EXPECT_TRUE(Qel_time_parsefmt("07%at 4", "%m%%at 4", &tm));
}

TEST(Time, Write)
{
    Qel_time_localtm_t tm{};
    EXPECT_EQ(taken(Qel_time_to_str("%d/%m/%y %H:%M:%S %Y", &tm)), "00/00/00 00:00:00 0000");
    tm = {7, 4, 2023, 23, 15, 30, 9, 0, 0, 0, 0, ""};
    EXPECT_EQ(taken(Qel_time_to_str("%m/%d/%y %H:%M:%S", &tm)), "07/04/23 15:30:09");
    EXPECT_EQ(taken(Qel_time_to_str("%d/%m/%Y%% %q%", &tm)), "04/07/2023% %q%");
    tm = {int64_least, 123, -5, -5, 0, 0, 0, 0, 0, 0, 0, ""};
    EXPECT_EQ(taken(Qel_time_to_str("%m|%d|%y|%Y", &tm)), "-9223372036854775808|123|-5|-5");
    EXPECT_EQ(taken(Qel_time_to_str(absent, &tm)), "");
    EXPECT_EQ(taken(Qel_time_to_str("%d", nullptr)), "");
}

TEST(Time, ZonesAndTheirRules)
{
    const struct {
        const char *zone;
        Qel_time_t t;
        const char *fields;
    } rows[] = {
        {"America/Toronto", 1700000000, "11 14 2023 23 17 13 20 2 317 0 -18000 EST"},
        {"America/Toronto", 1678604399, "3 12 2023 23 1 59 59 0 70 0 -18000 EST"},
        {"America/Toronto", 1678604400, "3 12 2023 23 3 0 0 0 70 1 -14400 EDT"},
        {"America/Toronto", 4118126400, "7 1 2100 0 8 0 0 4 181 1 -14400 EDT"}, // by rule
        {"America/Argentina/Buenos_Aires", 0, "12 31 1969 69 21 0 0 3 364 0 -10800 -03"},
        {"Etc/GMT+5", -1, "12 31 1969 69 18 59 59 3 364 0 -18000 -05"},
        {"Asia/Kolkata", 1700000000, "11 15 2023 23 3 43 20 3 318 0 19800 IST"},
        {"UTC", -1, "12 31 1969 69 23 59 59 3 364 0 0 UTC"},
        {"UTC", 951782400, "2 29 2000 0 0 0 0 2 59 0 0 UTC"},
        {"UTC", int64_most, "12 4 292277026596 96 15 30 7 0 338 0 0 UTC"},
    };
    for (const auto &[name, t, fields] : rows) {
        const qel::time_tz zone(Qel_time_tz_load(name));
        ASSERT_TRUE(zone) << name;
        EXPECT_EQ(local_fields(t, zone.get()), fields);
        // The two digits count up before year 0 too.
        EXPECT_NE(local_fields(int64_least, zone.get()).find(" -292277022657 43 "),
                  std::string::npos);
        Qel_time_tolocal(t, nullptr, zone.get());
    }
    EXPECT_LE(std::abs(Qel_time() - std::time(nullptr)), 60);
}

// The C library's calendar beside ours.
TEST(Time, CalendarOfFourHundredYears)
{
    const qel::time_tz utc(Qel_time_tz_load("UTC"));
    constexpr std::int64_t first = -14831769600; // 1500-01-01
    constexpr std::int64_t cycle = std::int64_t{146097} * 86400;
    constexpr std::int64_t step = 86400 - 3607; // meets every day, and all times of a day
    for (std::int64_t t = first; t < first + 2 * cycle; t += step) {
        const auto when = static_cast<std::time_t>(t);
        if (when != t)
            continue; // beyond the years of a machine of 32 bits
        std::tm tm{};
        gmtime_r(&when, &tm);
        Qel_time_localtm_t ours{};
        Qel_time_tolocal(t, &ours, utc.get());
        const Qel_time_localtm_t theirs = {tm.tm_mon + 1,
                                           tm.tm_mday,
                                           tm.tm_year + 1900,
                                           (tm.tm_year + 1900) % 100,
                                           tm.tm_hour,
                                           tm.tm_min,
                                           tm.tm_sec,
                                           tm.tm_wday,
                                           tm.tm_yday,
                                           0,
                                           0,
                                           "UTC"};
        ASSERT_EQ(fields_of(ours), fields_of(theirs)) << t;
    }
}

TEST(Time, OnlyNamesOfTheDatabaseAreLoaded)
{
    const std::string long_name =
        "America/" + std::string(57, 'x'); // a byte more than is looked for
    for (const char *name :
         texts{absent, "", "Nowhere/None", "America", "/usr/share/zoneinfo/America/Toronto",
               "file:America/Toronto", "America/../America/Toronto", "America/./Toronto",
               "America//Toronto", "America/Toronto/", "libc:localtime", "Fixed/UTC+01:00:00",
               "tzdata.zi", long_name.c_str()})
        EXPECT_EQ(Qel_time_tz_load(name), nullptr) << name;
    Qel_time_tz_destroy(nullptr);

    // Where there is a file of that name.
    std::string folder_name = testing::TempDir() + "time_test.XXXXXX";
    ASSERT_NE(mkdtemp(folder_name.data()), nullptr);
    const std::filesystem::path folder = folder_name;
    setenv("TZDIR", folder.c_str(), 1);
    for (const auto &[len, is_loaded] : {std::pair(64, true), {65, false}}) {
        const std::string file(static_cast<std::size_t>(len), 'x');
        std::filesystem::copy("/usr/share/zoneinfo/Asia/Tokyo", folder / file);
        EXPECT_EQ(qel::time_tz(Qel_time_tz_load(file.c_str())) != nullptr, is_loaded) << len;
    }
    unsetenv("TZDIR");
    std::filesystem::remove_all(folder);
}

// Nor is a zone unknown for good because there was no free descriptor when it was first loaded.
TEST(Time, AMomentWithoutDescriptorsDoesNoLastingHarm)
{
    rlimit limit{};
    getrlimit(RLIMIT_NOFILE, &limit);
    const rlimit none{0, limit.rlim_max};
    setrlimit(RLIMIT_NOFILE, &none);
    EXPECT_EQ(Qel_time_tz_load("Asia/Kathmandu"), nullptr);
    setrlimit(RLIMIT_NOFILE, &limit);
    EXPECT_TRUE(qel::time_tz(Qel_time_tz_load("Asia/Kathmandu")));
}

std::size_t allocated()
{
    return mallinfo2().uordblks;
}

// Names that nobody has must not be kept by whoever loads zones.
TEST(Time, UnknownNamesLeaveNothingBehind)
{
    const auto load = [](int number) {
        const std::string name = "Nowhere/" + std::string(40, 'x') + std::to_string(number);
        EXPECT_EQ(Qel_time_tz_load(name.c_str()), nullptr);
    };
    load(0);
    const std::size_t before = allocated();
    for (int number = 1; number < 20'000; ++number)
        load(number);
    EXPECT_LT(allocated(), before + 100'000);
}

TEST(Time, AbsentZoneIsTheSystemsOwn)
{
    const std::pair<const char *, const char *> rows[] = {
        {"XYZ-3:30", "7 14 2023 23 15 30 0 5 194 0 12600 XYZ"},
        {"EST5EDT,M3.2.0,M11.1.0", "7 14 2023 23 8 0 0 5 194 1 -14400 EDT"},
        {"ABCDEFGHIJKLMNOPQRSTUVWXYZABCDEFGHI-3", // more than has room
         "7 14 2023 23 15 0 0 5 194 0 10800 ABCDEFGHIJKLMNOPQRSTUVWXYZABCDE"},
        {"Asia/Tokyo", "7 14 2023 23 21 0 0 5 194 0 32400 JST"},
    };
    for (const auto &[tz, fields] : rows) {
        setenv("TZ", tz, 1);
        EXPECT_EQ(local_fields(1689336000, nullptr), fields);
    }
    EXPECT_EQ(local_fields(4102444800, nullptr), "1 1 2100 0 9 0 0 5 0 0 32400 JST");
    // Beyond the years that the C library knows: in UTC.
    EXPECT_EQ(local_fields(int64_most, nullptr), "12 4 292277026596 96 15 30 7 0 338 0 0 UTC");
    EXPECT_NE(local_fields(int64_least, nullptr).find(" -292277022657 43 "), std::string::npos);
}

} // namespace
