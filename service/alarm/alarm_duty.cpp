#include "service/alarm/alarm_duty.h"

namespace fieldline::service {
namespace {

// A person has still to look at it.
bool IsUnacknowledged(AlarmState state) { return state == AlarmState::kRaised || state == AlarmState::kReturned; }

bool IsHeld(const RelayAction& relay, AlarmState state) {
  switch (relay.how_long) {
    case RelayAction::While::kEver:
      return false;
    case RelayAction::While::kRaised:
      return state == AlarmState::kRaised;
    case RelayAction::While::kActive:
      return state == AlarmState::kRaised || state == AlarmState::kAcknowledged;
  }
  return false;
}

}  // namespace

bool IsRepeatDue(const AlarmPlan& plan, AlarmState state, const AlarmDuty& duty, Time now) {
  if (!plan.repeat || !duty.raised) return false;
  const bool is_active = state == AlarmState::kRaised || state == AlarmState::kAcknowledged;
  const bool goes_on = plan.until == RepeatUntil::kAcknowledged ? IsUnacknowledged(state) : is_active;
  return goes_on && now - duty.told >= *plan.repeat;
}

bool IsEscalationDue(const AlarmPlan& plan, AlarmState state, const AlarmDuty& duty, Time now) {
  return plan.escalation && duty.raised && !duty.is_escalated && IsUnacknowledged(state) &&
         now - *duty.raised >= plan.escalation->after;
}

std::vector<RelayAction> HeldRelays(const AlarmPlan& plan, AlarmState state, bool is_escalated) {
  std::vector<RelayAction> held;
  const auto add = [&](const std::vector<AlarmAction>& actions) {
    for (const AlarmAction& action : actions) {
      const auto* const relay = std::get_if<RelayAction>(&action);
      if (relay != nullptr && IsHeld(*relay, state)) held.push_back(*relay);
    }
  };
  add(plan.actions);
  if (is_escalated && plan.escalation) add(plan.escalation->actions);
  return held;
}

}  // namespace fieldline::service
