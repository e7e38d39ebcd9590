#pragma once

#include <chrono>
#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "polling/alarm/alarm_action.h"
#include "polling/record/record_field.h"

namespace fieldline {

// What must hold for an alarm: one test of a number, a device or a line, or several of them together.
struct AlarmCondition {
  enum class Type {
    kAll,
    kAny,
    // Tests of a number:
    kAbove,        // limit
    kBelow,        // limit
    kOutside,      // limit, upper
    kEqual,        // limit
    kNotEqual,     // limit
    kChangedBy,    // limit, within a time
    kImplausible,  // by the field's range
    // Tests of a device and of a line:
    kSilentFor,  // a time
    kLineGone,
  };

  Type type;
  std::vector<AlarmCondition> parts = {};  // of kAll and kAny
  std::size_t device = 0;                  // index in AlarmRules::devices; for a line, index in AlarmRules::lines
  std::size_t number = 0;                  // index in the device's numbers
  std::optional<int> bit = {};             // this bit of the raw number, 0 or 1, is tested
  double limit = 0;
  double upper = 0;
  std::chrono::milliseconds time{0};
};

constexpr bool IsOfNumber(AlarmCondition::Type type) {
  return type >= AlarmCondition::Type::kAbove && type <= AlarmCondition::Type::kImplausible;
}

// A part of each day in local time, in minutes from midnight. It crosses midnight when `from` is later than `to`.
struct DailyHours {
  int from;
  int to;

  constexpr bool Contains(int minute) const {
    return from < to ? minute >= from && minute < to : minute >= from || minute < to;
  }
};

// The priority, highest first.
enum class AlarmSeverity { kCritical, kHigh, kMedium, kLow };
std::string_view SeverityName(AlarmSeverity severity);

struct AlarmRule {
  std::string name;
  AlarmCondition when;
  std::chrono::milliseconds on_delay{0};  // how long the condition holds before the alarm is raised
  std::optional<AlarmCondition> clear;    // without it, the alarm returns when its condition does not hold
  std::chrono::milliseconds off_delay{0};
  std::optional<DailyHours> between;      // at other hours the condition never holds
  std::optional<std::size_t> depends_on;  // an earlier rule: while its condition holds, this alarm is held back
  AlarmSeverity severity = AlarmSeverity::kMedium;
  AlarmPlan plan;
};

// A device whose polls the alarms need, and its numbers in the order in which readings carry them.
struct AlarmDevice {
  std::string name;
  std::size_t line;  // index in AlarmRules::lines
  std::vector<RecordField> numbers;
};

// What holds for all alarms of a site.
struct AlarmSettings {
  int messages_per_hour = 30;                 // at most: SMS, MMS and calls together
  std::optional<AlarmCondition> acknowledge;  // when it begins to hold, all alarms are acknowledged: a switch
};

// The alarms of a site, each after the one that it depends on.
struct AlarmRules {
  std::vector<AlarmRule> rules;
  AlarmSettings settings;
  std::vector<AlarmDevice> devices;  // all of the site, in the order of its file, cameras last
  std::vector<std::string> lines;    // in the same order
};

// The index of the rule with this name.
std::optional<std::size_t> FindRule(const AlarmRules& rules, std::string_view name);

}  // namespace fieldline
