#include "service/mqtt/discovery.h"

#include <algorithm>
#include <iterator>
#include <nlohmann/json.hpp>

#include "service/http/device_json.h"

namespace fieldline::service {
namespace {

using nlohmann::ordered_json;

struct UnitClass {
  std::string_view unit;
  std::string_view device_class;
  std::string_view state_class;
};

// Home Assistant's words for a unit, where the unit alone tells them: a percentage may be of anything.
constexpr UnitClass kUnits[] = {
    {"°C", "temperature",    "measurement"     },
    {"V",   "voltage",        "measurement"     },
    {"mV",  "voltage",        "measurement"     },
    {"A",   "current",        "measurement"     },
    {"mA",  "current",        "measurement"     },
    {"W",   "power",          "measurement"     },
    {"kW",  "power",          "measurement"     },
    {"VA",  "apparent_power", "measurement"     },
    {"var", "reactive_power", "measurement"     },
    {"Wh",  "energy",         "total_increasing"},
    {"kWh", "energy",         "total_increasing"},
    {"MWh", "energy",         "total_increasing"},
    {"Hz",  "frequency",      "measurement"     },
    {"Pa",  "pressure",       "measurement"     },
    {"hPa", "pressure",       "measurement"     },
    {"kPa", "pressure",       "measurement"     },
    {"bar", "pressure",       "measurement"     },
    {"s",   "duration",       "measurement"     },
    {"min", "duration",       "measurement"     },
    {"h",   "duration",       "measurement"     },
    {"m/s", "speed",          "measurement"     },
};

ordered_json Availability(const std::string& topic) {
  ordered_json json;
  json["topic"] = topic;
  return json;
}

// Where the field is in a message of the state topic.
std::string Template(const RecordField& field) {
  const std::string name = "['" + std::string(field.name) + "']";
  return IsPhysical(field) ? "{{ value_json['physical']" + name + "['value'] }}"
                           : "{{ value_json['record']" + name + " }}";
}

}  // namespace

std::map<std::string, std::string> DiscoveryOf(const WatchedDevice& watched, const MqttSettings& settings,
                                               const std::string& unit, const MqttTopics& topics) {
  const SiteDevice& device = *watched.device;
  const std::string node = "fieldline-" + Identifier(unit) + '-' + Identifier(device.name);
  ordered_json described;
  described["identifiers"] = {node};
  described["name"] = unit + ' ' + device.name;
  described["model"] = device.kind->description;
  described["manufacturer"] = "fieldline";
  described["sw_version"] = FIELDLINE_VERSION;

  std::map<std::string, std::string> messages;
  for (const RecordField& field : device.fields) {
    ordered_json json;
    json["name"] = field.name;
    json["unique_id"] = node + '-' + Identifier(field.name);
    json["state_topic"] = topics.State(device.name);
    json["value_template"] = Template(field);
    json["availability"] = {Availability(topics.Status()), Availability(topics.Availability(device.name))};
    json["availability_mode"] = "all";
    if (!field.unit.empty()) json["unit_of_measurement"] = field.unit;
    const auto* const known = std::ranges::find(kUnits, field.unit, &UnitClass::unit);
    if (known != std::end(kUnits)) {
      json["device_class"] = known->device_class;
      json["state_class"] = known->state_class;
    } else if (!IsText(field) && !field.unit.empty()) {
      json["state_class"] = "measurement";
    }
    json["device"] = described;
    messages.emplace(settings.discovery + "/sensor/" + node + '/' + Identifier(field.name) + "/config", ToText(json));
  }
  return messages;
}

std::pair<std::string, std::string> DiscoveryOf(const AlarmRule& alarm, const MqttSettings& settings,
                                                const std::string& unit, const MqttTopics& topics) {
  const std::string node = "fieldline-" + Identifier(unit) + "-alarms";
  ordered_json json;
  json["name"] = alarm.name;
  json["unique_id"] = node + '-' + Identifier(alarm.name);
  json["device_class"] = "problem";
  json["state_topic"] = topics.Alarm(alarm.name);
  json["value_template"] = "{{ 'ON' if value_json['state'] in ['raised', 'acknowledged', 'returned'] else 'OFF' }}";
  json["json_attributes_topic"] = topics.Alarm(alarm.name);
  json["availability"] = {Availability(topics.Status())};
  json["device"]["identifiers"] = {node};
  json["device"]["name"] = unit + " alarms";
  json["device"]["manufacturer"] = "fieldline";
  json["device"]["sw_version"] = FIELDLINE_VERSION;
  return {settings.discovery + "/binary_sensor/" + node + '/' + Identifier(alarm.name) + "/config", ToText(json)};
}

}  // namespace fieldline::service
