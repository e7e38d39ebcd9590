#include "service/alarm/alarm_clock.h"

#include "fieldline/platform/local_time.h"

namespace fieldline::service {
namespace {

constexpr std::chrono::seconds kWasSet(2);  // less is the wall clock's usual correction

}  // namespace

AlarmTime AlarmClock::At(Steady::time_point moment) const {
  const Time time = start_ + std::chrono::duration_cast<Time::duration>(moment - steady_start_);
  return {time, LocalMinuteOfDay(WallTime(time) / 1000)};
}

void AlarmClock::FollowWallClock() {
  const auto offset = std::chrono::round<std::chrono::milliseconds>(std::chrono::system_clock::now() - Now().time);
  if (std::chrono::abs(offset - offset_) > kWasSet) offset_ = offset;
}

}  // namespace fieldline::service
