#pragma once

#include <deque>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "polling/alarm/alarm_rule.h"
#include "polling/text.h"
#include "service/alarm/alarm_task.h"

namespace fieldline::service {

// Keeps a flood of alarms from becoming a flood of messages: so many an hour, and after them one summary for each
// number. Reads no clock; the times that it is given should not follow changes of the wall clock.
class MessageLimit {
 public:
  // `unit` is the name with which a summary begins.
  MessageLimit(int most_an_hour, std::string unit) : most_(most_an_hour), unit_(std::move(unit)) {}

  // A message, or a summary, was sent at this time, before the start. In the order of time.
  void RestoreMessage(Time time) { sent_.push_back(time); }
  void RestoreSummary(Time time) { last_summary_ = time; }

  // Whether one more message may be sent now; counts it if so.
  bool Admit(Time now);

  // Keeps a message that may not be sent for the next summary.
  void Hold(const AlarmTask& message, AlarmSeverity severity, Time now);

  // The messages that tell what was held, when it is time for them, and what they tell. Of a message, kind, target and
  // text are set.
  struct Summaries {
    std::vector<AlarmTask> messages;
    std::vector<AlarmTask> told;
  };
  Summaries Take(Time now);

 private:
  struct Held {
    AlarmTask message;
    AlarmSeverity severity;
  };

  const int most_;
  const std::string unit_;
  std::deque<Time> sent_;  // in the last hour
  std::vector<Held> held_;
  Time first_held_{};
  std::optional<Time> last_summary_;
};

}  // namespace fieldline::service
