#pragma once

#include <optional>
#include <string>

#include "service/alarm/alarm_service.h"
#include "service/http/api.h"

namespace fieldline::service {

// What a person does with an alarm: POST /api/v1/alarms/NAME/acknowledge, shelve or unshelve, with a JSON object.
// Nothing when there is no such path. Throws UsageError for a wrong body.
std::optional<Reply> PostToAlarm(AlarmService& alarms, const std::string& path, const std::string& body);

}  // namespace fieldline::service
