#pragma once

#include "sim/devices/modbus_slave.h"

namespace fieldline::sim {

// Temperature and humidity probe. Holding register 0 is the relative humidity in 0.1 %, register 1 the temperature in
// 0.1 degrees Celsius, two's complement.
class EnvirProbe : public ModbusSlave {
 public:
  explicit EnvirProbe(BYTE address);

 protected:
  void Refresh() override;
};

}  // namespace fieldline::sim
