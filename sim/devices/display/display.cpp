#include "sim/devices/display/display.h"

#include <cstdint>
#include <cstdio>

namespace fieldline::sim {
namespace {

enum Command : BYTE { kRegisters = 0x80, kVariables = 0x82 };

// Registers that have an effect; writes to others are ignored.
constexpr BYTE kPage = 0x03;      // and 0x04, high byte first
constexpr BYTE kSetClock = 0x1F;  // 0x5A sets the clock from the registers after it
constexpr std::size_t kClockLength = 7;

WORD Word(std::span<const BYTE> bytes) { return static_cast<WORD>(bytes[0] * 256 + bytes[1]); }

// "24-05-17 13:45:00, day 5": the digits of the BCD bytes year, month, day, day of week, hour, minute, second.
std::string Clock(std::span<const BYTE> bcd) {
  char text[40];
  std::snprintf(text, sizeof text, "%02x-%02x-%02x %02x:%02x:%02x, day %x", bcd[0], bcd[1], bcd[2], bcd[4], bcd[5],
                bcd[6], bcd[3]);
  return text;
}

}  // namespace

Display::Display() {
  values().Add({.name = "page", .maximum = 65535, .read_only = true});
  values().Add({.name = "clock", .max_length = 40, .text = "not set", .read_only = true});
}

std::map<WORD, WORD> Display::Variables() const {
  const std::lock_guard lock(variables_mutex_);
  return variables_;
}

std::string Display::Screen() {
  constexpr std::size_t kInside = 38;
  std::string screen = "+" + std::string(kInside, '-') + "+\n";
  const auto add = [&](std::string line) {
    line.resize(kInside - 1, ' ');
    screen += "| " + line + "|\n";
  };
  add("page " + std::to_string(values().Scaled("page", 1)) + "   " + values().Text("clock"));
  for (const auto& [address, value] : Variables()) {
    char line[40];
    std::snprintf(line, sizeof line, "%04X  %5u  %6d  0x%04X", address, value, static_cast<std::int16_t>(value), value);
    add(line);
  }
  return screen + "+" + std::string(kInside, '-') + "+\n";
}

std::size_t Display::Receive(std::span<const BYTE> received, bool, std::vector<Reply>&) {
  if (received.size() < 4 || received[0] != 0xA5 || received[1] != 0x5A) return 0;
  const std::size_t length = received[2];
  if (length < 1 || received.size() < 3 + length) return 0;
  const std::span data = received.subspan(4, length - 1);
  bool changed = false;
  if (received[3] == kVariables) changed = WriteVariables(data);
  if (received[3] == kRegisters) changed = WriteRegisters(data);
  if (changed && listener_) listener_(*this);
  return 3 + length;
}

// `data` is an address and the words from there on.
bool Display::WriteVariables(std::span<const BYTE> data) {
  if (data.size() < 4) return false;
  const std::lock_guard lock(variables_mutex_);
  WORD address = Word(data);
  for (auto rest = data.subspan(2); rest.size() >= 2; rest = rest.subspan(2)) variables_[address++] = Word(rest);
  return true;
}

// `data` is a register's number and the bytes from there on.
bool Display::WriteRegisters(std::span<const BYTE> data) {
  if (data.size() == 3 && data[0] == kPage) {
    values().PutNumber("page", Word(data.subspan(1)));
    return true;
  }
  if (data.size() == 2 + kClockLength && data[0] == kSetClock && data[1] == 0x5A) {
    values().PutText("clock", Clock(data.subspan(2)));
    return true;
  }
  return false;
}

}  // namespace fieldline::sim
