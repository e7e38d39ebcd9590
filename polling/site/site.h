#pragma once

#include <chrono>
#include <cstddef>
#include <deque>
#include <string>
#include <vector>

#include "fieldline/kinds.h"
#include "polling/alarm/alarm_rule.h"
#include "polling/record/record_field.h"
#include "polling/site/line_config.h"
#include "polling/site/service_settings.h"

namespace fieldline {

struct SiteDevice {
  std::string name;
  const Kind* kind;
  int address;  // 0 when the protocol has none
  std::chrono::milliseconds interval;
  PollOptions options;
  std::vector<RecordField> fields;   // the kind's fields, runs split, with the site's scales
  std::size_t shown;                 // index of the field that a table shows
  std::optional<Publish> publish{};  // nothing: as the site says
};

struct SiteLine {
  std::string name;
  bool local;  // true for the unit's own inputs, which have no port
  LineConfig port;
  std::vector<SiteDevice> devices;
};

// A device that something is done with, on a line of its own: the alarm board, the display or a camera.
struct ControlledDevice {
  std::string name;
  const Kind* kind;
  LineConfig port;
};

// All lines and devices of a site file.
struct Site {
  Site() = default;
  Site(Site&&) = default;

  std::vector<SiteLine> lines;               // with watched devices
  std::vector<SiteLine> cameras;             // each with one camera, which only the service polls
  std::vector<ControlledDevice> controlled;  // cameras, too
  ServiceSettings service;
  AlarmRules alarms;
  std::deque<std::string> texts;  // the fields' names and units point into these
};

// Reads a site file, see docs/commissioning.md, and maps the lines' paths in the library. Throws UsageError when
// anything in the file is wrong.
Site ReadSite(const std::string& path);

}  // namespace fieldline
