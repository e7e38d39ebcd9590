#pragma once

#include <cstdint>
#include <vector>

#include "fieldline/platform/clock.h"

namespace fieldline::test {

// Takes the place of the platform's clock in a test program: time stands still but for sleeps, and for one millisecond
// with every look at the ticks.
struct FakeClock {
  std::uint32_t ticks = 0;
  std::vector<std::uint32_t> sleeps;
  CalendarTime local_time{2024, 5, 17, 13, 45, 0};
};

FakeClock& Clock();

}  // namespace fieldline::test
