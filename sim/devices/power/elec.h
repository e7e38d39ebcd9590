#pragma once

#include "sim/devices/power/power_meter.h"

namespace fieldline::sim {

// Power meter with 57 holding registers; the total and the phases of a quantity are next to each other.
class ElecMeter : public PowerMeter {
 public:
  explicit ElecMeter(BYTE address) : PowerMeter(address, kMap) {}

 private:
  static const RegisterMap kMap;
};

}  // namespace fieldline::sim
