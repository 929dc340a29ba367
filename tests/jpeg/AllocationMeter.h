// Counts what goes through operator new in this test binary, and lets an allocation fail.
#pragma once

#include <cstddef>

namespace allocation_meter {

// From here on counts start at 0.
void Reset();
[[nodiscard]] std::size_t Count();
[[nodiscard]] std::size_t PeakBytes(); // above what was held at Reset()

// The n-th nothrow allocation from now (1 = the next) returns null; 0 = none.
void FailAt(std::size_t n);

} // namespace allocation_meter
