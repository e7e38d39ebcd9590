#pragma once

#include <string>
#include <string_view>

#include "service/alarm/alarm_service.h"
#include "service/live_state.h"

namespace fieldline::service {

constexpr char kMetricsType[] = "text/plain; version=0.0.4; charset=utf-8";

// The state of all devices in Prometheus' text format. A device that is not good has no values, so that a graph shows a
// gap. Values are in base units, which their names tell.
std::string Metrics(const std::string& unit, const LiveState& live, const AlarmService& alarms,
                    DeviceState::Clock::time_point now);

// What the name of a value in this unit ends with, and how many of that unit one of this is.
struct BaseUnit {
  std::string suffix;  // "celsius"; empty for a number without a unit
  double factor;
};
BaseUnit BaseUnitOf(std::string_view unit);

}  // namespace fieldline::service
