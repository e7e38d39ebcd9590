#pragma once

#include <chrono>
#include <cstddef>
#include <deque>
#include <string>
#include <vector>

#include "fieldline/kinds.h"
#include "polling/record/record_field.h"
#include "polling/site/line_config.h"

namespace fieldline {

struct SiteDevice {
  std::string name;
  const Kind* kind;
  int address;  // 0 where the protocol has none
  std::chrono::milliseconds interval;
  PollOptions options;
  std::vector<RecordField> fields;  // the kind's, each number alone, with the site's scales
  std::size_t shown;                // the field that stands for the device in a table
};

struct SiteLine {
  std::string name;
  bool local;  // the unit's own inputs, which have no port; else:
  LineConfig port;
  std::vector<SiteDevice> devices;
};

// All that is polled at one place.
struct Site {
  Site() = default;
  Site(Site&&) = default;

  std::vector<SiteLine> lines;
  std::deque<std::string> texts;  // which the fields view
};

// Reads a site file, which docs/commissioning.md describes, and tells the library of the lines' paths. Throws
// UsageError when anything in the file is wrong.
Site ReadSite(const std::string& path);

}  // namespace fieldline
