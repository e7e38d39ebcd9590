#pragma once

#include <nlohmann/json.hpp>

#include "service/live_state.h"

namespace fieldline::service {

// What a list shows of a device: its condition, its value while that is fresh, and why it fails.
nlohmann::ordered_json DeviceToJson(const WatchedDevice& watched, const DeviceState& state,
                                    DeviceState::Clock::time_point now);

// The device's values, as the last poll brought them, or the last good one besides the failure.
nlohmann::ordered_json LatestToJson(const WatchedDevice& watched, const DeviceState& state,
                                    DeviceState::Clock::time_point now);

nlohmann::ordered_json FailureToJson(std::string_view code, const std::string& message);

// Whatever bytes a device's text holds.
std::string ToText(const nlohmann::ordered_json& json);

}  // namespace fieldline::service
