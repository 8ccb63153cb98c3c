#include <clocale>
#include <gtest/gtest.h>

int main(int argc, char **argv)
{
    // Number text must never depend on the machine running the tests.
    std::setlocale(LC_ALL, "C");
    ::testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
