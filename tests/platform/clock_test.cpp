#include "fieldline/platform/clock.h"

#include <gtest/gtest.h>

#include <chrono>

namespace fieldline {
namespace {

TEST(ClockTest, TicksKeepStepWithASleep) {
  const auto start = std::chrono::steady_clock::now();
  const std::uint32_t first = TickMs();
  SleepMs(30);
  const std::uint32_t elapsed = TickMs() - first;
  const auto bound = std::chrono::steady_clock::now() - start;
  EXPECT_GE(elapsed, 29u);  // each tick is cut to whole milliseconds
  EXPECT_LE(std::chrono::milliseconds(elapsed), bound + std::chrono::milliseconds(1));
}

}  // namespace
}  // namespace fieldline
