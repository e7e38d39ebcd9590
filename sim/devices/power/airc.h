#pragma once

#include "sim/devices/modbus_slave.h"

namespace fieldline::sim {

// Controller of an air conditioner. It has 26 input registers and sends them low byte first. A request for more is
// answered with these 26.
class AirConditioner : public ModbusSlave {
 public:
  explicit AirConditioner(BYTE address);

 protected:
  void Refresh() override;
  Bytes Answer(std::span<const BYTE> request) override;
};

}  // namespace fieldline::sim
