#include "polling/alarm/alarm_status.h"

#include "polling/alarm/alarm_rule.h"

namespace fieldline {

std::string_view StateName(AlarmState state) {
  switch (state) {
    case AlarmState::kCleared:
      return "cleared";
    case AlarmState::kWaiting:
      return "waiting";
    case AlarmState::kRaised:
      return "raised";
    case AlarmState::kAcknowledged:
      return "acknowledged";
    case AlarmState::kReturned:
      return "returned";
    case AlarmState::kShelved:
      return "shelved";
  }
  return {};
}

std::string_view SeverityName(AlarmSeverity severity) {
  switch (severity) {
    case AlarmSeverity::kCritical:
      return "critical";
    case AlarmSeverity::kHigh:
      return "high";
    case AlarmSeverity::kMedium:
      return "medium";
    case AlarmSeverity::kLow:
      return "low";
  }
  return {};
}

}  // namespace fieldline
