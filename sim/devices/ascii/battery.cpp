#include "sim/devices/ascii/battery.h"

namespace fieldline::sim {
namespace {

constexpr int kCells = 32;
constexpr unsigned kReadAnalog = 0x41;

constexpr struct {
  const char* name;
  double number;
} kNumbers[] = {
    {"group_1_second", 54.32},
    {"group_2_first",  12.5 },
    {"group_2_second", 3.25 },
    {"group_3_first",  25.5 },
    {"group_3_second", 26.5 },
};

std::string CellName(int number) { return "cell_" + std::to_string(number); }

}  // namespace

BatteryMonitor::BatteryMonitor(BYTE address) : HexAsciiDevice({'~', 0x20, address, 0x46}) {
  for (int i = 1; i <= kCells; ++i) {
    // The cells differ, so that a value in the wrong place is noticed.
    values().Add(
        {.name = CellName(i), .unit = "V", .maximum = 65.535, .decimals = 3, .number = 2 + 0.01 * i, .drift = 0.005});
  }
  for (const auto& row : kNumbers) {
    values().Add({.name = row.name, .minimum = -655.35, .maximum = 655.35, .decimals = 2, .number = row.number});
  }
}

// INFO: two bytes, the cells, 68 zero bytes, three groups of a byte and two numbers, a byte.
std::optional<std::string> BatteryMonitor::Answer(unsigned command, std::string_view /*info*/) {
  if (command != kReadAnalog) return std::nullopt;
  std::string cells;
  double sum = 0;
  for (int i = 1; i <= kCells; ++i) {
    const double cell = values().Number(CellName(i));
    cells += HexFloat(cell);
    sum += cell;
  }
  const auto number = [this](const char* name) { return HexFloat(values().Number(name)); };
  std::string answer = HexByte(0) + HexByte(kCells) + cells + std::string(136, '0');
  answer += HexByte(2) + HexFloat(sum) + number("group_1_second");
  answer += HexByte(2) + number("group_2_first") + number("group_2_second");
  answer += HexByte(2) + number("group_3_first") + number("group_3_second");
  return answer + HexByte(0);
}

}  // namespace fieldline::sim
