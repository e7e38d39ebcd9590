#include "sim/devices/basic/leak.h"

namespace fieldline::sim {

LeakController::LeakController(BYTE address) : ModbusSlave(address) {
  values().Add({.name = "leak", .unit = "(bits 0 and 1 of the status)", .maximum = 3});
  values().Add({.name = "second_flag", .unit = "(bits 2 and 3 of the status)", .maximum = 3});
  values().Add({.name = "input_register_1", .maximum = 0xFFFF, .number = 35});
  values().Add({.name = "holding_register_1", .maximum = 0xFFFF, .number = 100});
  values().Add({.name = "input_register_4", .maximum = 0xFFFF, .number = 20, .drift = 5});
}

void LeakController::Refresh() {
  input_registers_[0] = static_cast<WORD>(values().Number("leak") + 4 * values().Number("second_flag"));
  input_registers_[1] = static_cast<WORD>(values().Number("input_register_1"));
  input_registers_[4] = static_cast<WORD>(values().Number("input_register_4"));
  holding_registers_[1] = static_cast<WORD>(values().Number("holding_register_1"));
}

}  // namespace fieldline::sim
