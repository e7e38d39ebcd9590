#include "polling/alarm/alarm_evaluator.h"

#include <algorithm>
#include <utility>

namespace fieldline {

AlarmEvaluator::AlarmEvaluator(const AlarmRules& rules, AlarmTime start)
    : rules_(rules), alarms_by_device_(rules.devices.size()), latest_(start.time) {
  facts_.heard.resize(rules.devices.size());
  facts_.line_gone.resize(rules.lines.size());
  for (const AlarmRule& rule : rules.rules) {
    Alarm& alarm = alarms_.emplace_back(AlarmConditionState(rule.when, rules, start.time));
    if (rule.clear) alarm.clear.emplace(*rule.clear, rules, start.time);
    for (std::size_t device = 0; device < rules.devices.size(); ++device) {
      if (!Concerns(rule.when, device) && !(rule.clear && Concerns(*rule.clear, device))) continue;
      alarms_by_device_[device].push_back(alarms_.size() - 1);
    }
  }
}

bool AlarmEvaluator::Concerns(const AlarmCondition& condition, std::size_t device) const {
  if (!condition.parts.empty()) {
    return std::ranges::any_of(condition.parts, [&](const AlarmCondition& part) { return Concerns(part, device); });
  }
  return condition.device == (condition.type == AlarmCondition::Type::kLineGone ? rules_.devices[device].line : device);
}

Time AlarmEvaluator::Latest(Time now) { return latest_ = std::max(latest_, now); }

AlarmEvaluator::Changes AlarmEvaluator::Add(const AlarmReading& reading, AlarmTime now) {
  now.time = Latest(now.time);
  if (reading.quality == AlarmReading::Quality::kGood) facts_.heard[reading.device] = now.time;
  facts_.line_gone[rules_.devices[reading.device].line] = reading.quality == AlarmReading::Quality::kLineGone;
  Changes changes;
  for (const std::size_t index : alarms_by_device_[reading.device]) {
    Alarm& alarm = alarms_[index];
    UpdateHeldBack(index, now.time);
    alarm.when.Read(reading, now.time);
    if (alarm.clear) alarm.clear->Read(reading, now.time);
    Evaluate(index, now, changes);
  }
  return changes;
}

AlarmEvaluator::Changes AlarmEvaluator::Advance(AlarmTime now) {
  now.time = Latest(now.time);
  Changes changes;
  for (std::size_t i = 0; i < alarms_.size(); ++i) {
    const std::optional<Shelving>& shelving = alarms_[i].status.shelving;
    if (shelving && now.time >= shelving->until) EndShelving(i, now.time, changes, {});
    UpdateHeldBack(i, now.time);
    Evaluate(i, now, changes);
  }
  return changes;
}

// Also while the other alarm waits for its on-delay: otherwise a quick alarm would be raised before the slow one that
// explains it.
bool AlarmEvaluator::IsHeldBack(std::size_t alarm) const {
  for (auto other = rules_.rules[alarm].depends_on; other; other = rules_.rules[*other].depends_on) {
    const AlarmStatus& status = alarms_[*other].status;
    if (status.is_active || status.holds_since) return true;
  }
  return false;
}

// After the release, readings from before do not count: a line that is back has told nothing yet of its devices.
void AlarmEvaluator::UpdateHeldBack(std::size_t alarm, Time now) {
  const bool was_held_back = std::exchange(alarms_[alarm].is_held_back, IsHeldBack(alarm));
  const bool is_released = was_held_back && !alarms_[alarm].is_held_back;
  if (is_released && !alarms_[alarm].status.is_active) alarms_[alarm].when.Forget(now);
}

void AlarmEvaluator::Evaluate(std::size_t alarm, AlarmTime now, Changes& changes) {
  const std::optional<DailyHours>& hours = rules_.rules[alarm].between;
  const bool in_hours = !hours || hours->Contains(now.minute_of_day);
  const Truth when = in_hours ? alarms_[alarm].when.Holds(facts_, now.time) : Truth::kNo;
  if (alarms_[alarm].status.is_active) {
    EvaluateActive(alarm, when, in_hours, now.time, changes);
  } else {
    EvaluateInactive(alarm, alarms_[alarm].is_held_back ? Truth::kNo : when, now.time, changes);
  }
}

void AlarmEvaluator::EvaluateInactive(std::size_t alarm, Truth when, Time now, Changes& changes) {
  AlarmStatus& status = alarms_[alarm].status;
  if (when == Truth::kUnknown) return;
  if (when == Truth::kNo) {
    status.holds_since.reset();
    if (status.state == AlarmState::kWaiting) Change(alarm, AlarmState::kCleared, now, changes);
    return;
  }
  if (!status.holds_since) status.holds_since = now;
  if (now - *status.holds_since < rules_.rules[alarm].on_delay) {
    if (status.state == AlarmState::kCleared) Change(alarm, AlarmState::kWaiting, now, changes);
    return;
  }
  status.is_active = true;
  status.returns_since.reset();
  status.acknowledged_by.clear();
  status.cause = alarms_[alarm].when.Cause(facts_, now);
  if (status.state != AlarmState::kShelved) Change(alarm, AlarmState::kRaised, now, changes);
}

void AlarmEvaluator::EvaluateActive(std::size_t alarm, Truth when, bool in_hours, Time now, Changes& changes) {
  const AlarmRule& rule = rules_.rules[alarm];
  AlarmStatus& status = alarms_[alarm].status;
  Truth returns = when == Truth::kUnknown ? Truth::kUnknown : when == Truth::kNo ? Truth::kYes : Truth::kNo;
  if (in_hours && alarms_[alarm].clear && when != Truth::kYes) returns = alarms_[alarm].clear->Holds(facts_, now);
  if (returns == Truth::kUnknown) return;
  if (returns == Truth::kNo) {
    status.returns_since.reset();
    return;
  }
  if (!status.returns_since) status.returns_since = now;
  if (in_hours && now - *status.returns_since < rule.off_delay) return;
  status.is_active = false;
  status.holds_since.reset();
  status.returns_since.reset();
  if (status.state == AlarmState::kRaised) Change(alarm, AlarmState::kReturned, now, changes);
  if (status.state == AlarmState::kAcknowledged) Change(alarm, AlarmState::kCleared, now, changes);
}

void AlarmEvaluator::Change(std::size_t alarm, AlarmState to, Time now, Changes& changes, const std::string& who) {
  AlarmStatus& status = alarms_[alarm].status;
  const bool is_raise = to == AlarmState::kRaised;
  changes.push_back({alarm, now, status.state, to, is_raise ? status.holds_since.value_or(now) : now,
                     is_raise ? status.cause : std::nullopt, who});
  status.state = to;
  status.changed = now;
}

AlarmEvaluator::Changes AlarmEvaluator::Acknowledge(std::size_t alarm, Time now, const std::string& who) {
  AlarmStatus& status = alarms_[alarm].status;
  Changes changes;
  if (status.state != AlarmState::kRaised && status.state != AlarmState::kReturned) return changes;
  const bool is_raised = status.state == AlarmState::kRaised;
  status.acknowledged_by = who;
  Change(alarm, is_raised ? AlarmState::kAcknowledged : AlarmState::kCleared, Latest(now), changes, who);
  return changes;
}

AlarmEvaluator::Changes AlarmEvaluator::Shelve(std::size_t alarm, Time now, const Shelving& shelving) {
  Changes changes;
  alarms_[alarm].status.shelving = shelving;
  Change(alarm, AlarmState::kShelved, Latest(now), changes, shelving.who);
  return changes;
}

AlarmEvaluator::Changes AlarmEvaluator::Unshelve(std::size_t alarm, Time now, const std::string& who) {
  Changes changes;
  if (alarms_[alarm].status.shelving) EndShelving(alarm, Latest(now), changes, who);
  return changes;
}

void AlarmEvaluator::EndShelving(std::size_t alarm, Time now, Changes& changes, const std::string& who) {
  AlarmStatus& status = alarms_[alarm].status;
  status.shelving.reset();
  status.acknowledged_by.clear();
  const AlarmState inactive = status.holds_since ? AlarmState::kWaiting : AlarmState::kCleared;
  Change(alarm, status.is_active ? AlarmState::kRaised : inactive, now, changes, who);
}

void AlarmEvaluator::Resume(AlarmTime now) {
  latest_ = now.time;
  std::ranges::fill(facts_.heard, std::nullopt);
  std::ranges::fill(facts_.line_gone, std::nullopt);
  for (Alarm& alarm : alarms_) {
    alarm.when.Forget(now.time);
    if (alarm.clear) alarm.clear->Forget(now.time);
    // Of use after the time was set back only.
    for (std::optional<Time>* since : {&alarm.status.holds_since, &alarm.status.returns_since}) {
      if (*since) *since = std::min(**since, now.time);
    }
  }
}

AlarmStatus AlarmEvaluator::Save(std::size_t alarm) const {
  AlarmStatus status = alarms_[alarm].status;
  alarms_[alarm].when.AppendWindows(status.windows);
  if (alarms_[alarm].clear) alarms_[alarm].clear->AppendWindows(status.windows);
  return status;
}

void AlarmEvaluator::Restore(std::size_t alarm, AlarmStatus status) {
  std::span<std::vector<ChangeWindow::Part>> windows = status.windows;
  alarms_[alarm].when.SetWindows(windows);
  if (alarms_[alarm].clear) alarms_[alarm].clear->SetWindows(windows);
  status.windows.clear();
  alarms_[alarm].status = std::move(status);
}

}  // namespace fieldline
