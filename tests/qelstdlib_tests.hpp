// What the tests of the utility layer share.
#ifndef QELSTDLIB_TESTS_HPP
#define QELSTDLIB_TESTS_HPP

#include "qelstdlib.hpp"

#include <cstdint>
#include <limits>
#include <string>
#include <vector>

#include <gtest/gtest.h>

namespace test
{

using texts = std::vector<const char *>;

inline constexpr std::int64_t int64_least = std::numeric_limits<std::int64_t>::min();
inline constexpr std::int64_t int64_most = std::numeric_limits<std::int64_t>::max();

inline const char *absent = nullptr; // a variable, so that the compiler does not warn of it

// The new text, or "(absent)".
inline std::string taken(char *new_text)
{
    const qel::text text(new_text);
    return text ? text.get() : "(absent)";
}

} // namespace test

#endif
