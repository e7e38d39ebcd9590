#pragma once

#include <gtest/gtest.h>

#include <chrono>
#include <cstdio>
#include <string>

namespace fieldline::test {

// Reads a time of the command's output: 2024-05-17T13:45:00.123Z.
inline std::chrono::system_clock::time_point ParseLogTime(const std::string& iso) {
  int year = 0, month = 0, day = 0, hour = 0, minute = 0, second = 0, ms = 0;
  EXPECT_EQ(std::sscanf(iso.c_str(), "%d-%d-%dT%d:%d:%d.%dZ", &year, &month, &day, &hour, &minute, &second, &ms), 7);
  const std::chrono::sys_days date(std::chrono::year(year) / month / day);
  return date + std::chrono::hours(hour) + std::chrono::minutes(minute) + std::chrono::seconds(second) +
         std::chrono::milliseconds(ms);
}

}  // namespace fieldline::test
