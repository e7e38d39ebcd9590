#pragma once

#include <cstdint>

namespace fieldline {

// Milliseconds since some moment in the past, on a clock that is never set; wraps at 32 bits. Differences are taken
// without sign.
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
