#pragma once

#include <cstdint>

namespace fieldline {

// Milliseconds on a monotonic clock with an arbitrary start. Wraps at 32 bits: subtract two values as unsigned numbers.
std::uint32_t TickMs();

// Sleeps for at least `ms` milliseconds; a signal does not shorten it.
void SleepMs(std::uint32_t ms);

struct CalendarTime {
  int year;   // four digits
  int month;  // 1 to 12
  int day;    // 1 to 31
  int hour;
  int minute;
  int second;
};

// The local time of the unit.
CalendarTime LocalTime();

}  // namespace fieldline
