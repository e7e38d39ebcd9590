#pragma once

#include <algorithm>
#include <chrono>
#include <cstdint>

namespace fieldline {

// A point in time on the monotonic clock, `ms` milliseconds after construction.
class Deadline {
 public:
  explicit Deadline(std::int64_t ms) : end_(Clock::now() + Ms(std::clamp<std::int64_t>(ms, 0, kLongest.count()))) {}

  bool HasPassed() const { return Clock::now() >= end_; }

  // What is left, rounded up, but at most `most`: Windows takes no long durations, and what waits must look around.
  std::uint32_t RemainingMs(std::uint32_t most) const {
    const auto left = std::chrono::ceil<Ms>(end_ - Clock::now()).count();
    return static_cast<std::uint32_t>(std::clamp<std::int64_t>(left, 0, most));
  }

 private:
  using Clock = std::chrono::steady_clock;
  using Ms = std::chrono::milliseconds;
  static constexpr auto kLongest = std::chrono::ceil<Ms>(std::chrono::years(100));

  Clock::time_point end_;
};

}  // namespace fieldline
