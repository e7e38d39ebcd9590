#pragma once

#include "sim/devices/ascii/hex_ascii.h"

namespace fieldline::sim {

// Battery monitor with 32 cells and three groups of two numbers; the first number of group 1 is the monitor's own sum
// of the cells.
class BatteryMonitor : public HexAsciiDevice {
 public:
  explicit BatteryMonitor(BYTE address);

 protected:
  std::optional<std::string> Answer(unsigned command, std::string_view info) override;
};

}  // namespace fieldline::sim
