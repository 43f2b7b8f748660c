// What the tests of the receipt core share.
#ifndef CORE_TESTS_HPP
#define CORE_TESTS_HPP

#include "qel_rcpt_int.h"
#include "test_record.hpp"

#include <vector>

namespace test
{

using texts = std::vector<const char *>;

inline constexpr auto en = QEL_RCPT_LANG_EN;
inline constexpr auto fr = QEL_RCPT_LANG_FR;

inline Qel_rcpt_attrs_t attrs_of(const Qel_rcpt_config_t &config, bool is_custcopy = true)
{
    Qel_rcpt_attrs_t attrs{};
    Qel_rcpt_setup_rcpt_attrs(&attrs, &config, is_custcopy);
    return attrs;
}

inline const Qel_rcpt_attrs_t us = attrs_of({en, en, 840, 840, QEL_RCPT_IND_RETAIL, nullptr});
inline const Qel_rcpt_attrs_t euro = attrs_of({fr, en, 250, 978, QEL_RCPT_IND_RETAIL, nullptr});

// Texts side by side; '~' stands for an absent one.
inline std::string joined(const std::vector<result> &all)
{
    std::string out;
    for (const result &one : all)
        out.append(&one == &all.front() ? "" : "|").append(one.value_or("~"));
    return out;
}

// Records, or other texts, and the outcome that each of them has.
struct row {
    texts ways;
    result outcome;
};

template <typename Get>
void expect_rows(const std::vector<row> &rows, Get get)
{
    for (const row &row : rows) {
        for (const char *way : row.ways)
            EXPECT_EQ(get(way), row.outcome) << way;
    }
}

} // namespace test

#endif
