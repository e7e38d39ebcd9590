#pragma once

#include <optional>
#include <string>
#include <vector>

#include "polling/alarm/alarm_rule.h"
#include "polling/alarm/alarm_status.h"
#include "service/alarm/alarm_task.h"

namespace fieldline::service {

// An alarm as it is now. Times are those of the clock.
struct AlarmView {
  const AlarmRule* rule = nullptr;
  AlarmState state = AlarmState::kCleared;
  bool is_test = false;
  Time changed{};              // when the state began
  std::optional<Time> raised;  // the last time, also of an alarm that is cleared by now
  std::optional<AlarmCause> cause;
  std::string acknowledged_by;
  std::optional<Shelving> shelving;
  std::uint64_t raises = 0;     // since the start
  std::vector<AlarmTask> told;  // what was done for the last raise, and what waits
};

// A device that acts: the alarm board, the display, or the cameras together.
struct ActorView {
  std::string name;
  std::string trouble;  // why it can't be used; empty: it can
  Time since{};         // of the trouble
  std::size_t waiting = 0;
};

// Whether a person should look at it.
constexpr bool NeedsAttention(AlarmState state) {
  return state == AlarmState::kRaised || state == AlarmState::kAcknowledged || state == AlarmState::kReturned;
}

}  // namespace fieldline::service
