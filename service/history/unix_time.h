#pragma once

#include <chrono>
#include <cstdint>

namespace fieldline::service {

// Milliseconds since 1970, UTC: times in the history.
using UnixTime = std::int64_t;

constexpr UnixTime kSlot = 5 * 60 * 1000;  // ms that a five-minute value stands for
constexpr UnixTime kHour = 60 * 60 * 1000;

inline UnixTime ToUnixTime(std::chrono::system_clock::time_point time) {
  return std::chrono::floor<std::chrono::milliseconds>(time.time_since_epoch()).count();
}

inline std::chrono::system_clock::time_point ToTime(UnixTime time) {
  return std::chrono::system_clock::time_point(std::chrono::milliseconds(time));
}

}  // namespace fieldline::service
