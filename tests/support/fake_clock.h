#pragma once

#include <cstdint>
#include <vector>

#include "fieldline/platform/clock.h"

namespace fieldline::test {

// Replaces the platform's clock in a test program. Time advances only by sleeps, and by one millisecond each time the
// ticks are read.
struct FakeClock {
  std::uint32_t ticks = 0;
  std::vector<std::uint32_t> sleeps;
  CalendarTime local_time{2024, 5, 17, 13, 45, 0};
};

FakeClock& Clock();

}  // namespace fieldline::test
