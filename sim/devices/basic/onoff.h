#pragma once

#include "sim/devices/modbus_slave.h"

namespace fieldline::sim {

// Module with 12 switch inputs. It answers a read of its 12 input registers with one byte each instead of two, and any
// other read with an exception.
class SwitchInputs : public ModbusSlave {
 public:
  explicit SwitchInputs(BYTE address);

 protected:
  Bytes Answer(std::span<const BYTE> request) override;
};

}  // namespace fieldline::sim
