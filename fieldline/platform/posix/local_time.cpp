#include "fieldline/platform/local_time.h"

#include <time.h>

namespace fieldline {

int LocalMinuteOfDay(std::int64_t seconds) {
  const time_t moment = seconds;
  tm local{};
  tzset();  // localtime_r alone may not notice a changed time zone
  localtime_r(&moment, &local);
  return 60 * local.tm_hour + local.tm_min;
}

}  // namespace fieldline
