#pragma once

#include <nlohmann/json.hpp>

#include "service/alarm/alarm_view.h"
#include "service/history/events.h"

namespace fieldline::service {

// An alarm as it is now, with what was done for it.
nlohmann::ordered_json AlarmToJson(const AlarmView& alarm);

// A device that acts.
nlohmann::ordered_json ActorToJson(const ActorView& actor);

// A change of an alarm's state.
nlohmann::ordered_json AlarmEventToJson(const HistoryEvent& event);

}  // namespace fieldline::service
