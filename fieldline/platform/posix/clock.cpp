#include "fieldline/platform/clock.h"

#include <time.h>

#include <cerrno>

namespace fieldline {

static_assert(sizeof(time_t) == 8, "time goes on after January 2038");

std::uint32_t TickMs() {
  timespec now;
  clock_gettime(CLOCK_MONOTONIC, &now);
  return static_cast<std::uint32_t>(std::int64_t{now.tv_sec} * 1000 + now.tv_nsec / 1'000'000);
}

void SleepMs(std::uint32_t ms) {
  timespec end;
  clock_gettime(CLOCK_MONOTONIC, &end);
  end.tv_sec += static_cast<time_t>(ms / 1000);
  end.tv_nsec += static_cast<long>(ms % 1000) * 1'000'000;
  if (end.tv_nsec >= 1'000'000'000) {
    end.tv_sec += 1;
    end.tv_nsec -= 1'000'000'000;
  }
  while (clock_nanosleep(CLOCK_MONOTONIC, TIMER_ABSTIME, &end, nullptr) == EINTR) {
  }
}

CalendarTime LocalTime() {
  const time_t now = time(nullptr);
  tm local{};
  tzset();  // localtime_r alone may not notice a changed time zone
  localtime_r(&now, &local);
  return {local.tm_year + 1900, local.tm_mon + 1, local.tm_mday, local.tm_hour, local.tm_min, local.tm_sec};
}

}  // namespace fieldline
