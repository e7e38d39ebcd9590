#pragma once

#include "sim/devices/power/power_meter.h"

namespace fieldline::sim {

// Second model of power meter: 41 holding registers, one block of eight for each phase, then the totals.
class ElecYMeter : public PowerMeter {
 public:
  explicit ElecYMeter(BYTE address) : PowerMeter(address, kMap) {}

 private:
  static const RegisterMap kMap;
};

}  // namespace fieldline::sim
