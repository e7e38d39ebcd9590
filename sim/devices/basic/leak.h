#pragma once

#include "sim/devices/modbus_slave.h"

namespace fieldline::sim {

// Water-leak controller. Input register 0 is its status: bits 0 and 1 report water, bits 2 and 3 a second condition.
class LeakController : public ModbusSlave {
 public:
  explicit LeakController(BYTE address);

 protected:
  void Refresh() override;
};

}  // namespace fieldline::sim
