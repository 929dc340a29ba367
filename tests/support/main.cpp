#include <cstdio>

#include <gtest/gtest.h>

#include "tests/support/OuterData.h"

// The font library's thread-wide cache of its last match is never given back; it is not ours to free.
extern "C" __attribute__((visibility("default"))) const char* __lsan_default_suppressions() {
    return "leak:libfontconfig\n";
}

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
