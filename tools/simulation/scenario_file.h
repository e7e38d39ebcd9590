#pragma once

#include <string>

#include "sim/scenario.h"

namespace fieldline::tool {

// Reads a scenario for a room of this layout, see docs/scenarios.md. Throws UsageError when anything in the file is
// wrong or does not fit the room.
sim::Scenario ReadScenario(const std::string& path, const sim::RoomLayout& layout);

}  // namespace fieldline::tool
