#pragma once

#include "polling/alarm/alarm_action.h"
#include "polling/site/json_file.h"

namespace fieldline {

struct Site;

// Reads what an alarm does: "do", "repeat", "until" and "escalate" of `alarm`. Throws UsageError, also for an action
// whose device is not in the site.
AlarmPlan ReadAlarmPlan(const JsonNode& alarm, const Site& site);

}  // namespace fieldline
