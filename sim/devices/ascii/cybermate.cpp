#include "sim/devices/ascii/cybermate.h"

namespace fieldline::sim {
namespace {

constexpr struct {
  const char* name;
  unsigned command;
  int count;
  int bytes;  // per value
  int first;  // initial value of number 1; the following ones count up
} kGroups[] = {
    {"analog",       0x42, 5,  2, 500 },
    {"switch_state", 0x43, 7,  1, 0x11},
    {"alarm_state",  0x44, 26, 1, 0x21},
    {"parameter",    0x47, 10, 1, 0x41},
};

std::string Name(const char* name, int number) { return name + ('_' + std::to_string(number)); }

}  // namespace

Cybermate::Cybermate(BYTE address) : HexAsciiDevice({'~', 0x21, address, 0x60}) {
  for (const auto& group : kGroups) {
    const double maximum = group.bytes == 2 ? 0xFFFF : 0xFF;
    for (int i = 0; i < group.count; ++i) {
      values().Add({.name = Name(group.name, i + 1), .maximum = maximum, .number = 1.0 * group.first + i});
    }
  }
}

std::optional<std::string> Cybermate::Answer(unsigned command, std::string_view /*info*/) {
  for (const auto& group : kGroups) {
    if (group.command != command) continue;
    std::string info;
    for (int i = 1; i <= group.count; ++i) {
      const auto number = static_cast<unsigned>(values().Number(Name(group.name, i)));
      info += group.bytes == 2 ? HexWord(number) : HexByte(number);
    }
    return info;
  }
  return std::nullopt;
}

}  // namespace fieldline::sim
