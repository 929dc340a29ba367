// Optional test data that lies outside the repository, found through the variable DMB_TEST_DATA.
#pragma once

#include <filesystem>
#include <optional>
#include <string>

namespace testing_support {

// The file or folder below DMB_TEST_DATA, or nothing when the variable is unset or the path is absent.
[[nodiscard]] std::optional<std::filesystem::path> FindOuterData(const std::string& relativePath);

// Writes "NOT RUN" with the reason and counts it; the test binary's summary repeats the count.
void ReportNotRun(const std::string& what);

[[nodiscard]] int NotRunCount();

} // namespace testing_support

// Declares `name` as the path of outer data, or reports NOT RUN and leaves the test.
#define DMB_OUTER_DATA(name, relativePath)                                                                             \
    const auto name##Found = testing_support::FindOuterData(relativePath);                                             \
    if (!name##Found) {                                                                                                \
        testing_support::ReportNotRun(relativePath);                                                                   \
        return;                                                                                                        \
    }                                                                                                                  \
    const std::filesystem::path name = *name##Found
