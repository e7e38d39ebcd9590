#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "polling/alarm/change_window.h"
#include "polling/text.h"

namespace fieldline {

// States after ISA-18.2; docs/alarms.md has the diagram.
enum class AlarmState {
  kCleared,       // normal
  kWaiting,       // the condition holds, but not yet for the on-delay
  kRaised,        // active, not acknowledged
  kAcknowledged,  // active, acknowledged
  kReturned,      // no longer active, but nobody acknowledged it
  kShelved,       // set aside by a person for a time
};

std::string_view StateName(AlarmState state);

// What made the condition hold.
struct AlarmCause {
  std::string device;            // or the name of a line
  std::string field;             // empty when it was no number
  std::optional<double> number;  // in the field's unit
  std::string text;              // "28.4 °C", "silent" or "gone"
};

struct Shelving {
  Time until;
  std::string who;
  std::string why;
};

// The state of an alarm as plain data. Saved before a restart and restored after it, the alarm goes on where it was.
struct AlarmStatus {
  AlarmState state = AlarmState::kCleared;
  Time changed{};                     // when the state began
  bool is_active = false;             // the condition holds with its delays, also of a shelved alarm
  std::optional<Time> holds_since;    // the condition began to hold
  std::optional<Time> returns_since;  // of an active alarm: the condition to return began to hold
  std::optional<AlarmCause> cause;    // of the last raise
  std::string acknowledged_by;        // of the last raise; empty before
  std::optional<Shelving> shelving;
  std::vector<std::vector<ChangeWindow::Part>> windows;  // of the condition's kChangedBy tests, in order
};

// A change of state.
struct AlarmChange {
  std::size_t alarm;  // index in AlarmRules::rules
  Time time;
  AlarmState from;
  AlarmState to;
  Time since;                       // when the condition began to hold, of a raise; otherwise `time`
  std::optional<AlarmCause> cause;  // of a raise
  std::string who = {};             // a person's name, when a person made the change
};

}  // namespace fieldline
