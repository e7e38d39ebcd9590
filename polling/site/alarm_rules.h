#pragma once

#include <optional>

#include "polling/alarm/alarm_rule.h"
#include "polling/site/json_file.h"

namespace fieldline {

struct Site;

// Reads the alarms of a site file, and what holds for all of them. Lines and devices are in `site` already. Without
// `alarms` there are no rules. Throws UsageError.
AlarmRules ReadAlarmRules(const std::optional<JsonNode>& alarms, const std::optional<JsonNode>& settings,
                          const Site& site);

}  // namespace fieldline
