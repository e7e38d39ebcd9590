#include "fieldline/platform/clock.h"

#include "fieldline/platform/win32/deadline.h"
#include "fieldline/platform/win32/system.h"

namespace fieldline {

// GetTickCount() goes on every 10 to 16 ms only.
std::uint32_t TickMs() {
  LARGE_INTEGER frequency;
  LARGE_INTEGER now;
  QueryPerformanceFrequency(&frequency);
  QueryPerformanceCounter(&now);
  const std::int64_t seconds = now.QuadPart / frequency.QuadPart;
  const std::int64_t rest = now.QuadPart % frequency.QuadPart;
  return static_cast<std::uint32_t>(seconds * 1000 + rest * 1000 / frequency.QuadPart);
}

void SleepMs(std::uint32_t ms) {
  constexpr std::uint32_t kDay = 24 * 3600 * 1000;
  // Sleep() may end up to a tick too early.
  for (const Deadline end(ms); !end.HasPassed();) Sleep(end.RemainingMs(kDay));
}

CalendarTime LocalTime() {
  SYSTEMTIME now;
  GetLocalTime(&now);
  return {now.wYear, now.wMonth, now.wDay, now.wHour, now.wMinute, now.wSecond};
}

}  // namespace fieldline
