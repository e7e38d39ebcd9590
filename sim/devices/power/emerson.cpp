#include "sim/devices/power/emerson.h"

#include <string>

namespace fieldline::sim {
namespace {

constexpr int kInputs = 109;

constexpr struct {
  int first;
  int last;
} kRuns[] = {
    {8,   44 },
    {49,  78 },
    {99,  119},
    {129, 157}
};

std::string InputName(int number) { return "input_" + std::to_string(number); }

std::string RegisterName(int number) { return "register_" + std::to_string(number); }

}  // namespace

EmersonUnit::EmersonUnit(BYTE address) : ModbusSlave(address) {
  for (int i = 0; i < kInputs; ++i) values().Add({.name = InputName(i), .maximum = 1});
  for (const auto& run : kRuns) {
    // The initial value of register n is 10 n, so that a value in the wrong place is noticed.
    for (int i = run.first; i <= run.last; ++i) {
      values().Add({.name = RegisterName(i), .maximum = 0xFFFF, .number = 10.0 * i});
    }
  }
}

void EmersonUnit::Refresh() {
  for (int i = 0; i < kInputs; ++i) discrete_inputs_[static_cast<WORD>(i)] = values().Number(InputName(i)) != 0;
  for (const auto& run : kRuns) {
    for (int i = run.first; i <= run.last; ++i) {
      input_registers_[static_cast<WORD>(i)] = static_cast<WORD>(values().Number(RegisterName(i)));
    }
  }
}

}  // namespace fieldline::sim
