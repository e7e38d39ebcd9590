#include "sim/devices/power/airc.h"

#include <algorithm>
#include <string>

namespace fieldline::sim {
namespace {

constexpr int kRegisters = 26;

std::string RegisterName(int number) { return "register_" + std::to_string(number); }

}  // namespace

AirConditioner::AirConditioner(BYTE address) : ModbusSlave(address) {
  for (int i = 0; i < kRegisters; ++i) {
    values().Add({.name = RegisterName(i), .maximum = 0xFFFF, .number = 200.0 + i, .drift = 3});
  }
}

void AirConditioner::Refresh() {
  for (int i = 0; i < kRegisters; ++i) {
    const auto value = static_cast<unsigned>(values().Number(RegisterName(i)));
    input_registers_[static_cast<WORD>(i)] = static_cast<WORD>(value << 8 | value >> 8);
  }
}

Bytes AirConditioner::Answer(std::span<const BYTE> request) {
  constexpr BYTE kReadFromFirst[] = {4, 0, 0};
  Bytes shortened(request.begin(), request.end());
  if (request.size() == 5 && std::ranges::equal(request.first(3), kReadFromFirst)) {
    const int count = request[3] * 256 + request[4];
    shortened[3] = 0;
    shortened[4] = static_cast<BYTE>(std::min(count, kRegisters));
  }
  return ModbusSlave::Answer(shortened);
}

}  // namespace fieldline::sim
