#pragma once

#include <array>
#include <string_view>

#include "sim/devices/modbus_slave.h"

namespace fieldline::sim {

// What the two three-phase power meters have in common: the same values, in holding registers that differ.
//
// The values are named and counted as a poll shows them. What they mean is the simulator's own choice: quantities 1 to
// 3 are active, reactive and apparent power, 4 is the power factor, 5 the voltage, 6 the current, and the single value
// is the frequency.
class PowerMeter : public ModbusSlave {
 public:
  static constexpr int kQuantities = 6;

 protected:
  static constexpr int kNone = -1;

  struct Quantity {
    std::string_view name;
    int total;  // register; kNone when there is none
    int phase1;
    int step;  // what a register counts in: 10 for one that goes up by 1 when the value goes up by 10
  };

  struct RegisterMap {
    int size;     // registers 0 to size - 1 can be read
    int counter;  // its high half; the low half follows
    int single;
    int phase_stride;  // from one phase of a quantity to the next
    std::array<Quantity, kQuantities> quantities;
  };

  // `map` must outlive the meter.
  PowerMeter(BYTE address, const RegisterMap& map);

  void Refresh() override;

 private:
  void Put(int reg, std::string_view value, int step);

  const RegisterMap& map_;
};

}  // namespace fieldline::sim
