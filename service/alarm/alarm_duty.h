#pragma once

#include <optional>
#include <vector>

#include "polling/alarm/alarm_action.h"
#include "polling/alarm/alarm_status.h"

namespace fieldline::service {

// What was done for the last raise of an alarm, as far as more may have to be done.
struct AlarmDuty {
  std::optional<Time> raised;
  Time told{};  // when the actions were done last
  bool is_escalated = false;
};

// Whether the actions are to be repeated.
bool IsRepeatDue(const AlarmPlan& plan, AlarmState state, const AlarmDuty& duty, Time now);

// Whether nobody has acknowledged the alarm for so long that the further actions are to be done.
bool IsEscalationDue(const AlarmPlan& plan, AlarmState state, const AlarmDuty& duty, Time now);

// The relays that this alarm keeps as they are while it is in the state.
std::vector<RelayAction> HeldRelays(const AlarmPlan& plan, AlarmState state, bool is_escalated);

}  // namespace fieldline::service
