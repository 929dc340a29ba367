#include "tests/support/OuterData.h"

#include <cstdio>
#include <cstdlib>

#include <gtest/gtest.h>

namespace testing_support {

namespace {
int notRun = 0;
}

std::optional<std::filesystem::path> FindOuterData(const std::string& relativePath) {
    const char* root = std::getenv("DMB_TEST_DATA");
    if (root == nullptr || *root == '\0')
        return std::nullopt;
    std::filesystem::path path = std::filesystem::path(root) / relativePath;
    std::error_code error;
    if (!std::filesystem::exists(path, error))
        return std::nullopt;
    return path;
}

void ReportNotRun(const std::string& what) {
    ++notRun;
    const auto* info = ::testing::UnitTest::GetInstance()->current_test_info();
    std::printf("NOT RUN %s.%s (needs %s below DMB_TEST_DATA)\n", info ? info->test_suite_name() : "?",
                info ? info->name() : "?", what.c_str());
}

int NotRunCount() {
    return notRun;
}

} // namespace testing_support
