#pragma once

#include <map>
#include <string>
#include <utility>

#include "polling/alarm/alarm_rule.h"
#include "polling/site/mqtt_settings.h"
#include "service/mqtt/mqtt_topics.h"
#include "service/watched_device.h"

namespace fieldline::service {

// What Home Assistant's MQTT discovery wants to know of a device: a sensor for each field of its record. Topics with
// their messages, which the broker is to keep.
std::map<std::string, std::string> DiscoveryOf(const WatchedDevice& watched, const MqttSettings& settings,
                                               const std::string& unit, const MqttTopics& topics);

// The same for an alarm: a binary sensor, which is on while a person should look at it.
std::pair<std::string, std::string> DiscoveryOf(const AlarmRule& alarm, const MqttSettings& settings,
                                                const std::string& unit, const MqttTopics& topics);

}  // namespace fieldline::service
