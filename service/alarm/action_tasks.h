#pragma once

#include <optional>
#include <string>
#include <vector>

#include "polling/alarm/alarm_rule.h"
#include "polling/alarm/alarm_status.h"
#include "service/alarm/alarm_task.h"

namespace fieldline::service {

// An alarm at a moment when something is to be done for it. Times are those of the wall clock.
struct Occasion {
  const std::string& unit;
  const AlarmRule& rule;
  const AlarmStatus& status;
  std::optional<UnixTime> since{};  // when its condition began to hold
  UnixTime raised = 0;
  bool is_test = false;
};

// What the actions ask for, in their order, with all texts as they are sent. The tasks are not numbered yet.
std::vector<AlarmTask> TasksOf(const std::vector<AlarmAction>& actions, const Occasion& occasion);
AlarmTask RelayTask(int relay, bool on, const Occasion& occasion);

// The messages that carry a picture: it was taken for this task, and is at the path.
std::vector<AlarmTask> PictureMessages(const AlarmTask& taken, const std::string& path);

// What is done in place of a task that has failed: a call for an SMS, an SMS for all else. Nothing for a task that was
// such itself: two ways that both fail would otherwise go on for ever.
std::vector<AlarmTask> OtherWays(const AlarmTask& failed, const Occasion& occasion);

}  // namespace fieldline::service
