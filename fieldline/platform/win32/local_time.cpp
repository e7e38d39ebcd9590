#include "fieldline/platform/local_time.h"

#include <cstdio>

#include "fieldline/platform/win32/system.h"

namespace fieldline {

namespace {

SYSTEMTIME LocalTime(std::int64_t seconds) {
  constexpr std::int64_t kFrom1601To1970 = 11'644'473'600;
  const std::int64_t ticks = (seconds + kFrom1601To1970) * 10'000'000;
  const FILETIME file_time{static_cast<DWORD>(ticks), static_cast<DWORD>(ticks >> 32)};
  SYSTEMTIME utc{};
  SYSTEMTIME local{};
  FileTimeToSystemTime(&file_time, &utc);
  SystemTimeToTzSpecificLocalTime(nullptr, &utc, &local);
  return local;
}

}  // namespace

int LocalMinuteOfDay(std::int64_t seconds) {
  const SYSTEMTIME local = LocalTime(seconds);
  return 60 * local.wHour + local.wMinute;
}

std::string LocalTimeText(std::int64_t seconds) {
  const SYSTEMTIME local = LocalTime(seconds);
  char text[32];
  std::snprintf(text, sizeof text, "%04u-%02u-%02u %02u:%02u:%02u", local.wYear, local.wMonth, local.wDay, local.wHour,
                local.wMinute, local.wSecond);
  return text;
}

}  // namespace fieldline
