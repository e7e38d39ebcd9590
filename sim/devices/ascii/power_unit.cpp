#include "sim/devices/ascii/power_unit.h"

namespace fieldline::sim {
namespace {

constexpr int kValues = 52;
constexpr int kStates = 11;

std::string ValueName(int number) { return "value_" + std::to_string(number); }
std::string StateName(int number) { return "state_" + std::to_string(number); }

std::string Zeros(std::size_t bytes) { return std::string(2 * bytes, '0'); }

}  // namespace

PowerUnit::PowerUnit(BYTE address) : HexAsciiDevice({'~', 0x11, address, 0x2A}) {
  for (int i = 1; i <= kValues; ++i) {
    values().Add({.name = ValueName(i), .minimum = -1e6, .maximum = 1e6, .decimals = 2, .number = 10 * i + 0.5});
  }
  for (int i = 1; i <= kStates; ++i) values().Add({.name = StateName(i), .maximum = 0xFF, .number = 1.0 * i});
}

std::optional<std::string> PowerUnit::Answer(unsigned command, std::string_view /*info*/) {
  switch (command) {
    case 0xE1:
      return Zeros(2) + Floats(1, 13);
    case 0x41:
      return Zeros(13) + Floats(14, 21) + Zeros(3);
    case 0xE2:
      return Zeros(2) + Floats(22, 36);
    case 0xE3:
      return Zeros(2) + Floats(37, 52);
    case 0x43:
      return Zeros(1) + States(1, 1) + Zeros(1) + States(2, 11) + Zeros(2);
    default:
      return std::nullopt;
  }
}

std::string PowerUnit::Floats(int first, int last) {
  std::string text;
  for (int i = first; i <= last; ++i) text += HexFloat(values().Number(ValueName(i)));
  return text;
}

std::string PowerUnit::States(int first, int last) {
  std::string text;
  for (int i = first; i <= last; ++i) text += HexByte(static_cast<unsigned>(values().Number(StateName(i))));
  return text;
}

}  // namespace fieldline::sim
