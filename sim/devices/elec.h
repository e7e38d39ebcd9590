#pragma once

#include "sim/devices/power_meter.h"

namespace fieldline::sim {

// Power meter with 57 holding registers, a quantity's total and phases side by side.
class ElecMeter : public PowerMeter {
 public:
  explicit ElecMeter(BYTE address) : PowerMeter(address, kMap) {}

 private:
  static const RegisterMap kMap;
};

}  // namespace fieldline::sim
