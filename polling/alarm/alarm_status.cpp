#include "polling/alarm/alarm_status.h"

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

}  // namespace fieldline
