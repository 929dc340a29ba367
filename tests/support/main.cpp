#include <cstdio>

#include <gtest/gtest.h>

#include "tests/support/OuterData.h"

int main(int argc, char** argv) {
    ::testing::InitGoogleTest(&argc, argv);
    const int result = RUN_ALL_TESTS();
    const auto* unit = ::testing::UnitTest::GetInstance();
    // One line that ./test adds up over all rooms.
    std::printf("ROOM SUMMARY: %d passed, %d failed, %d not run\n",
                unit->successful_test_count() - testing_support::NotRunCount(), unit->failed_test_count(),
                testing_support::NotRunCount());
    return result;
}
