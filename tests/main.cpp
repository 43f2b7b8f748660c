// Runs the tests in the locale of the environment, so that nothing here depends on "C".
#include <gtest/gtest.h>

#include <clocale>
#include <cstdio>

int main(int argc, char **argv)
{
    if (std::setlocale(LC_ALL, "") == nullptr) {
        std::fputs("the environment names a locale that the system does not have\n", stderr);
        return 1;
    }
    testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
