#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "service/history/unix_time.h"

namespace fieldline::service {

// One thing to do for an alarm: a message to one number, a relay, a page of the display.
struct AlarmTask {
  enum class Kind { kSms, kMms, kDial, kSpeech, kRelay, kPicture, kDisplay };
  enum class Outcome {
    kWaiting,     // to be done, or done again
    kHeld,        // a message above the hourly limit: it becomes part of a summary
    kDone,        // the device has accepted it
    kFailed,      // given up
    kSummarised,  // a summary told it
    kReplaced,    // a later task for the same relay or display made it void
  };

  std::int64_t id = 0;
  std::string alarm{};   // empty for a summary
  UnixTime raised = 0;   // the raise that it is for
  UnixTime created = 0;  // when it came to be done
  Kind kind = Kind::kSms;
  std::string target{};  // telephone number, name of the camera, number of the relay or page
  std::string text{};    // SMS, or what is spoken; of an MMS the picture's path; of a picture the numbers it goes to
  int number = 0;        // state of a relay
  bool is_test = false;
  bool is_other_way = false;  // in place of a message that failed
  Outcome outcome = Outcome::kWaiting;
  int tries = 0;
  std::string reason{};  // why the last try failed
  UnixTime ended = 0;    // 0: not yet
};

// "sms", "mms" ...
std::string_view NameOf(AlarmTask::Kind kind);
// "waiting", "held" ...
std::string_view NameOf(AlarmTask::Outcome outcome);

// Null for a name that is none.
const AlarmTask::Kind* FindTaskKind(std::string_view name);
const AlarmTask::Outcome* FindTaskOutcome(std::string_view name);

// Whether it reaches a person's telephone.
constexpr bool IsMessage(AlarmTask::Kind kind) {
  return kind == AlarmTask::Kind::kSms || kind == AlarmTask::Kind::kMms || kind == AlarmTask::Kind::kDial;
}

}  // namespace fieldline::service
