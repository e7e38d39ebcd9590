#pragma once

#include <optional>
#include <string>

#include "polling/alarm/alarm_status.h"
#include "service/alarm/alarm_duty.h"

namespace fieldline::service {

// All that an alarm needs to go on after a restart.
struct SavedAlarm {
  AlarmStatus status;
  AlarmDuty duty{};
  std::optional<Time> test_until{};
};

// All times are moved by `offset`: from the time that the alarms count in to the clock's.
std::string ToJsonText(const SavedAlarm& alarm, std::chrono::milliseconds offset);

// Nothing for a text that another version has written, or a damaged one.
std::optional<SavedAlarm> ParseSavedAlarm(const std::string& text);

}  // namespace fieldline::service
