#pragma once

#include <cstddef>

#include "fieldline/platform/clock.h"
#include "sim/device.h"

namespace fieldline::sim {

constexpr std::size_t kSmallestPicture = 600;  // bytes
constexpr std::size_t kLargestPicture = 65535;

// A JPEG picture of exactly `size` bytes that shows the date and the time.
Bytes DrawPicture(const CalendarTime& time, std::size_t size);

}  // namespace fieldline::sim
