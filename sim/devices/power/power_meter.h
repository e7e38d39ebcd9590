#pragma once

#include <array>
#include <string_view>

#include "sim/devices/modbus_slave.h"

namespace fieldline::sim {

// Base class of the two three-phase power meters. They have the same values in different holding registers.
//
// The values have the names and scales that a poll shows. Their meaning is the simulator's own choice: quantities 1 to
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
    int step;  // value of one register count: with 10, a register of 150 is the value 1500
  };

  struct RegisterMap {
    int size;     // registers 0 to size - 1 can be read
    int counter;  // high half of the counter; the low half follows
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
