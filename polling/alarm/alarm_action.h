#pragma once

#include <chrono>
#include <optional>
#include <string>
#include <variant>
#include <vector>

namespace fieldline {

// What is done when an alarm is raised. Nothing here does it: these are the words of the site file, checked.

struct SmsAction {
  std::vector<std::string> to;  // telephone numbers
  std::string text;             // with placeholders such as {value}
};

struct DialAction {
  std::string to;
  std::string text;  // that is spoken
};

struct SpeechAction {
  std::string text;
};

struct RelayAction {
  enum class While {
    kEver,    // it stays as it is set
    kRaised,  // until the alarm is acknowledged or has returned
    kActive,  // until the alarm has returned
  };

  int number;
  bool on;
  While how_long = While::kEver;
};

struct PictureAction {
  std::string camera;            // name of a device
  std::vector<std::string> mms;  // telephone numbers
};

struct DisplayAction {
  int page;
};

struct MqttAction {};

using AlarmAction =
    std::variant<SmsAction, DialAction, SpeechAction, RelayAction, PictureAction, DisplayAction, MqttAction>;

struct Escalation {
  std::chrono::milliseconds after;  // the raise, while nobody has acknowledged it
  std::vector<AlarmAction> actions;
};

enum class RepeatUntil { kAcknowledged, kReturned };

struct AlarmPlan {
  std::vector<AlarmAction> actions;  // in order
  std::optional<std::chrono::milliseconds> repeat;
  RepeatUntil until = RepeatUntil::kAcknowledged;
  std::optional<Escalation> escalation;
};

}  // namespace fieldline
