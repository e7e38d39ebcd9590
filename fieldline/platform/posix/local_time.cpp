#include "fieldline/platform/local_time.h"

#include <time.h>

namespace fieldline {

namespace {

tm LocalTime(std::int64_t seconds) {
  const time_t moment = seconds;
  tm local{};
  tzset();  // localtime_r alone may not notice a changed time zone
  localtime_r(&moment, &local);
  return local;
}

}  // namespace

int LocalMinuteOfDay(std::int64_t seconds) {
  const tm local = LocalTime(seconds);
  return 60 * local.tm_hour + local.tm_min;
}

std::string LocalTimeText(std::int64_t seconds) {
  const tm local = LocalTime(seconds);
  char text[64];
  return {text, strftime(text, sizeof text, "%Y-%m-%d %H:%M:%S", &local)};
}

}  // namespace fieldline
