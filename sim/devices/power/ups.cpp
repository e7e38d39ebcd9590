#include "sim/devices/power/ups.h"

#include <algorithm>
#include <charconv>
#include <string>

namespace fieldline::sim {
namespace {

// Bits of the status, in the order sent.
constexpr const char* kStatusBits[] = {"utility_fail", "battery_low", "bypass_active",   "ups_failed",
                                       "standby_type", "self_test",   "shutdown_active", "beeper_on"};

// Widths of the identification's fields, padded with spaces.
constexpr std::size_t kMakerWidth = 15;
constexpr std::size_t kModelWidth = 10;
constexpr std::size_t kVersionWidth = 10;

std::string Filled(std::string text, std::size_t width) {
  text.resize(width, ' ');
  return text;
}

// `width` characters with leading zeros: "034", "208.4".
std::string Fixed(double number, std::size_t width, int decimals) {
  char digits[32];
  const auto end = std::to_chars(digits, digits + sizeof digits, number, std::chars_format::fixed, decimals).ptr;
  const std::string text(digits, end);
  return std::string(width - std::min(width, text.size()), '0') + text;
}

// Four characters, with as many decimals as fit: "2.05", "27.3".
std::string BatteryVoltage(double volts) { return Fixed(volts, 4, 2).substr(0, 4); }

}  // namespace

Ups::Ups() {
  values().Add({.name = "input_voltage", .unit = "V", .maximum = 999.9, .decimals = 1, .number = 220, .drift = 5});
  values().Add({.name = "input_fault_voltage", .unit = "V", .maximum = 999.9, .decimals = 1, .number = 140});
  values().Add({.name = "output_voltage", .unit = "V", .maximum = 999.9, .decimals = 1, .number = 220, .drift = 1});
  values().Add({.name = "output_load", .unit = "%", .maximum = 999, .number = 34, .drift = 10});
  values().Add({.name = "input_frequency", .unit = "Hz", .maximum = 99.9, .decimals = 1, .number = 50, .drift = 0.2});
  values().Add({.name = "battery_voltage", .unit = "V", .maximum = 99.99, .decimals = 2, .number = 27.3, .drift = 0.3});
  values().Add({.name = "temperature", .unit = "°C", .maximum = 99.9, .decimals = 1, .number = 35, .drift = 2});
  for (const char* bit : kStatusBits) values().Add({.name = bit, .maximum = 1});
  values().Add({.name = "rated_voltage", .unit = "V", .maximum = 999.9, .decimals = 1, .number = 220});
  values().Add({.name = "rated_current", .unit = "A", .maximum = 999, .number = 4});
  values().Add({.name = "rated_battery_voltage", .unit = "V", .maximum = 99.99, .decimals = 2, .number = 24});
  values().Add({.name = "rated_frequency", .unit = "Hz", .maximum = 99.9, .decimals = 1, .number = 50});
  values().Add({.name = "maker", .max_length = kMakerWidth, .text = "Fieldline"});
  values().Add({.name = "model", .max_length = kModelWidth, .text = "SIM-1000"});
  values().Add({.name = "version", .max_length = kVersionWidth, .text = "1.0"});
}

std::size_t Ups::Receive(std::span<const BYTE> received, bool /*silent*/, std::vector<Reply>& replies) {
  const auto end = std::ranges::find(received, '\r');
  if (end == received.end()) return 0;
  const std::string command(received.begin(), end);
  std::string reply;
  if (command == "Q1") {
    reply = Status();
  } else if (command == "I") {
    reply = Identification();
  } else if (command == "F") {
    reply = Ratings();
  }
  if (reply.empty()) return 0;
  replies.push_back({Bytes(reply.begin(), reply.end())});
  return command.size() + 1;
}

std::string Ups::Status() {
  std::string status = "(";
  status += Fixed(values().Number("input_voltage"), 5, 1) + ' ';
  status += Fixed(values().Number("input_fault_voltage"), 5, 1) + ' ';
  status += Fixed(values().Number("output_voltage"), 5, 1) + ' ';
  status += Fixed(values().Number("output_load"), 3, 0) + ' ';
  status += Fixed(values().Number("input_frequency"), 4, 1) + ' ';
  status += BatteryVoltage(values().Number("battery_voltage")) + ' ';
  status += Fixed(values().Number("temperature"), 4, 1) + ' ';
  for (const char* bit : kStatusBits) status += values().Number(bit) != 0 ? '1' : '0';
  return status + '\r';
}

std::string Ups::Identification() {
  return '#' + Filled(values().Text("maker"), kMakerWidth) + ' ' + Filled(values().Text("model"), kModelWidth) + ' ' +
         Filled(values().Text("version"), kVersionWidth) + '\r';
}

std::string Ups::Ratings() {
  return '#' + Fixed(values().Number("rated_voltage"), 5, 1) + ' ' + Fixed(values().Number("rated_current"), 3, 0) +
         ' ' + Fixed(values().Number("rated_battery_voltage"), 5, 2) + ' ' +
         Fixed(values().Number("rated_frequency"), 4, 1) + '\r';
}

}  // namespace fieldline::sim
