#pragma once

#include <chrono>

#include "polling/alarm/alarm_evaluator.h"
#include "service/history/unix_time.h"

namespace fieldline::service {

// The time that alarms count in: it begins as that of the wall clock and follows none of its changes.
class AlarmClock {
 public:
  using Steady = std::chrono::steady_clock;

  Time Start() const { return start_; }
  AlarmTime Now() const { return At(Steady::now()); }
  AlarmTime At(Steady::time_point moment) const;

  // What the wall clock shows at such a time.
  Time OnWall(Time time) const { return time + offset_; }
  UnixTime WallTime(Time time) const { return ToUnixTime(OnWall(time)); }

  // From this time to the wall clock's: not 0 after that was set.
  std::chrono::milliseconds Offset() const { return offset_; }

  // Notices that the wall clock was set. Call it about once a second.
  void FollowWallClock();

 private:
  const Time start_ = std::chrono::system_clock::now();
  const Steady::time_point steady_start_ = Steady::now();
  std::chrono::milliseconds offset_{0};
};

}  // namespace fieldline::service
