#pragma once

#include <cstddef>
#include <span>
#include <string>
#include <utility>
#include <vector>

#include "polling/alarm/alarm_condition_state.h"
#include "polling/alarm/alarm_rule.h"
#include "polling/alarm/alarm_status.h"

namespace fieldline {

// A moment, with what local clocks show then.
struct AlarmTime {
  Time time;
  int minute_of_day;
};

// Decides which alarms are raised and which return. Reads no clock and does nothing else: the caller gives it readings
// and the time, and acts on the changes that it returns. The rules must outlive it. Not thread-safe.
//
// Delays count in the time that is given, which should not follow changes of the wall clock. A time before an earlier
// one counts as that one; Resume() sets the time back.
class AlarmEvaluator {
 public:
  using Changes = std::vector<AlarmChange>;

  AlarmEvaluator(const AlarmRules& rules, AlarmTime start);

  // A poll has ended.
  Changes Add(const AlarmReading& reading, AlarmTime now);

  // Time has passed. Call it about once a second: delays end, devices fall silent, hours and shelving end.
  Changes Advance(AlarmTime now);

  // For a raised or returned alarm; others do not change.
  Changes Acknowledge(std::size_t alarm, Time now, const std::string& who);

  // Sets the alarm aside. At the end it is cleared, or raised when its condition holds. The caller checks that `who`
  // and `why` are given and that `until` is later than `now`.
  Changes Shelve(std::size_t alarm, Time now, const Shelving& shelving);
  Changes Unshelve(std::size_t alarm, Time now, const std::string& who);

  // Polling begins again after a pause of unknown length: until they are polled, nothing is known of devices and lines.
  // Alarms keep their states.
  void Resume(AlarmTime now);

  const AlarmStatus& StatusOf(std::size_t alarm) const { return alarms_[alarm].status; }

  // The status with all that Restore needs to go on from there.
  AlarmStatus Save(std::size_t alarm) const;
  void Restore(std::size_t alarm, AlarmStatus status);

 private:
  struct Alarm {
    explicit Alarm(AlarmConditionState condition) : when(std::move(condition)) {}

    AlarmConditionState when;
    std::optional<AlarmConditionState> clear;
    AlarmStatus status;
    bool is_held_back = false;
  };

  Time Latest(Time now);
  bool Concerns(const AlarmCondition& condition, std::size_t device) const;
  bool IsHeldBack(std::size_t alarm) const;
  void UpdateHeldBack(std::size_t alarm, Time now);
  void Evaluate(std::size_t alarm, AlarmTime now, Changes& changes);
  void EvaluateInactive(std::size_t alarm, Truth when, Time now, Changes& changes);
  void EvaluateActive(std::size_t alarm, Truth when, bool in_hours, Time now, Changes& changes);
  void Change(std::size_t alarm, AlarmState to, Time now, Changes& changes, const std::string& who = {});
  void EndShelving(std::size_t alarm, Time now, Changes& changes, const std::string& who);

  const AlarmRules& rules_;
  std::vector<Alarm> alarms_;
  std::vector<std::vector<std::size_t>> alarms_by_device_;  // those that a poll of the device concerns
  AlarmFacts facts_;
  Time latest_;
};

}  // namespace fieldline
