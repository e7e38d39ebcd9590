#include "tests/support/fake_clock.h"

namespace fieldline {
namespace test {

FakeClock& Clock() {
  static FakeClock clock;
  return clock;
}

}  // namespace test

std::uint32_t TickMs() { return test::Clock().ticks++; }

void SleepMs(std::uint32_t ms) {
  test::Clock().sleeps.push_back(ms);
  test::Clock().ticks += ms;
}

CalendarTime LocalTime() { return test::Clock().local_time; }

}  // namespace fieldline
