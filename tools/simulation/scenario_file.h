#pragma once

#include <string>

#include "sim/scenario.h"

namespace fieldline::tool {

// Reads a scenario for a room of this layout; docs/scenarios.md describes the file. Throws UsageError when anything in
// it is wrong or does not fit the room.
sim::Scenario ReadScenario(const std::string& path, const sim::RoomLayout& layout);

}  // namespace fieldline::tool
