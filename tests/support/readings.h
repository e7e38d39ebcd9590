#pragma once

#include <cmath>
#include <nlohmann/json.hpp>
#include <string>
#include <string_view>
#include <vector>

#include "sim/values.h"

// Holds what a driver decoded against what the simulated device sent, under the names that both have for it.
namespace fieldline::test {

// What a record says of a value of the device.
struct Reading {
  std::string value;  // its name there
  double number;
  double tolerance = 0;
  double (*kept)(double sent) = [](double sent) { return sent; };  // what the driver keeps of it

  bool Shows(double sent) const { return std::abs(kept(sent) - number) <= tolerance; }
};

// The characters of a card are numbers here, as they are in its record.
inline std::vector<std::pair<std::string, double>> NumbersOf(const sim::Values& values) {
  std::vector<std::pair<std::string, double>> numbers;
  for (const sim::Value& value : values.List()) {
    if (value.max_length == 0) numbers.emplace_back(value.name, value.number);
    if (value.name != "card") continue;
    for (std::size_t i = 0; i < value.max_length; ++i) {
      numbers.emplace_back("byte_" + std::to_string(i + 1), i < value.text.size() ? value.text[i] : 0);
    }
  }
  return numbers;
}

// Numbers of the record that no value stands behind are among them.
inline std::vector<Reading> Readings(std::string_view kind, int address, const nlohmann::json& record) {
  constexpr auto kMagnitude = [](double sent) { return std::abs(sent); };
  // Of the frame of the dual-protocol unit: where values 1 to 33 stand in it, the first seven as words.
  constexpr int kFrame[] = {0,  2,  4,  6,  8,  10, 12, 14, 15, 22, 23, 30, 31, 45, 46, 52, 53,
                            54, 55, 56, 57, 58, 59, 60, 61, 66, 67, 68, 69, 80, 81, 82, 83};
  // And of its Modbus variant.
  constexpr int kFloats[] = {2382, 2384, 2386, 2388, 2390, 2392, 2394};

  std::vector<Reading> readings;
  for (const auto& [name, field] : record.items()) {
    if (!field.is_number()) continue;
    const double number = field;
    const bool is_value = name.starts_with("value_");
    const std::size_t index = is_value ? std::stoul(name.substr(6)) - 1 : 0;
    if (kind == "envir") {
      const double with_sign = number > 0x7FFF ? number - 0x10000 : number;
      readings.push_back({name == "register_0" ? "humidity" : "temperature", with_sign / 10, 0.001});
    } else if (kind == "leak") {
      if (name == "input_register_1" && record["leak"] == 0) continue;  // not asked for
      const bool is_flag = name == "leak" || name == "second_flag";     // of two bits
      readings.push_back(
          {name, number, 0, is_flag ? [](double sent) { return sent > 0 ? 1.0 : 0.0; } : Reading().kept});
    } else if (kind == "di") {
      readings.push_back({name, number > 0 ? 1.0 : 0.0});
    } else if (kind == "card") {
      readings.push_back({name == "byte_14" ? "state" : name, number});
    } else if (kind == "airc" && name.ends_with("_low")) {
      readings.push_back(
          {name.substr(0, name.size() - 4), number, 0, [](double sent) { return std::fmod(sent, 256); }});
    } else if (kind == "airc" && name.ends_with("_high")) {
      readings.push_back(
          {name.substr(0, name.size() - 5), number, 0, [](double sent) { return std::floor(sent / 256); }});
    } else if (kind == "dual-proto" && is_value && address % 2 == 0) {
      if (index < std::size(kFloats)) {
        readings.push_back({"register_" + std::to_string(kFloats[index]), number / 10, 0.1});
      }
      if (index == 7) readings.push_back({"register_2350", number, 1});
      if (index == 8) readings.push_back({"register_2356", number, 1});
      if (index == 13) readings.push_back({"register_2348", number / 10, 0.1});
      if (index == 14) readings.push_back({"register_2352", number, 1});
    } else if (kind == "dual-proto" && is_value) {
      const bool is_word = index < 7;
      const double factor = index >= 15 && index != 27 ? 10 : 1;
      const double without_sign = is_word && number < 0 ? number + 0x10000 : number;
      readings.push_back({(is_word ? "word_" : "byte_") + std::to_string(kFrame[index]), without_sign / factor});
    } else if (kind.starts_with("elec")) {
      readings.push_back({name, number, 12.5});  // some registers count in steps of 25
    } else if (kind == "ups") {
      constexpr std::string_view kInTenths =
          "input_voltage input_fault_voltage output_voltage input_frequency "
          "battery_voltage temperature";
      const bool tenths = kInTenths.find(name) != std::string_view::npos;
      const double cut = name.starts_with("rated_") ? 0.999 : tenths ? 0.101 : 0;  // of the device's digits
      readings.push_back({name, tenths ? number / 10 : number, cut});
    } else if (kind == "battery") {
      const double factor = name.starts_with("cell_") ? 1000 : name.starts_with("group_3") ? 10 : 100;
      readings.push_back({name, number / factor, 1.1 / factor, kMagnitude});
    } else if (kind == "power-unit") {
      const bool hundredths = index == 6 || index == 7 || index == 11 || (index >= 20 && index <= 23);
      const double factor = !is_value || index == 48 ? 1 : hundredths ? 100 : 10;
      readings.push_back({name, number / factor, is_value ? 1.1 / factor + number * 1e-7 : 0, kMagnitude});
    } else {
      readings.push_back({name, number});
    }
  }
  return readings;
}

}  // namespace fieldline::test
