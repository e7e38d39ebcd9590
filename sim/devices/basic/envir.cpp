#include "sim/devices/basic/envir.h"

namespace fieldline::sim {

EnvirProbe::EnvirProbe(BYTE address) : ModbusSlave(address) {
  values().Add({.name = "humidity", .unit = "%", .maximum = 100, .decimals = 1, .number = 45, .drift = 5});
  values().Add(
      {.name = "temperature", .unit = "°C", .minimum = -40, .maximum = 85, .decimals = 1, .number = 23.5, .drift = 2});
}

void EnvirProbe::Refresh() {
  holding_registers_[0] = static_cast<WORD>(values().Scaled("humidity", 10));
  holding_registers_[1] = static_cast<WORD>(values().Scaled("temperature", 10));
}

}  // namespace fieldline::sim
