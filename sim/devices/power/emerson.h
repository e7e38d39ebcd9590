#pragma once

#include "sim/devices/modbus_slave.h"

namespace fieldline::sim {

// Emerson unit: discrete inputs 0 to 108 and four runs of input registers. Each of them is a value: input_0, register_8
// ...
class EmersonUnit : public ModbusSlave {
 public:
  explicit EmersonUnit(BYTE address);

 protected:
  void Refresh() override;
};

}  // namespace fieldline::sim
