#pragma once

#include <cmath>
#include <nlohmann/json.hpp>
#include <string>
#include <string_view>
#include <vector>

#include "polling/record/kind_fields.h"
#include "sim/values.h"

// Compares what a driver decoded with what the simulated device sent, under the names that both use.
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

// The scales are those of the command's tables. Numbers of the record without a value are included.
inline std::vector<Reading> Readings(std::string_view kind, int address, const nlohmann::json& record) {
  // Of the frame of the dual-protocol unit: the positions of values 1 to 33, the first seven as words.
  constexpr int kFrame[] = {0,  2,  4,  6,  8,  10, 12, 14, 15, 22, 23, 30, 31, 45, 46, 52, 53,
                            54, 55, 56, 57, 58, 59, 60, 61, 66, 67, 68, 69, 80, 81, 82, 83};
  // And of its Modbus variant: the register of each value, some in tenths; 0 for none.
  constexpr int kFloats[] = {2382, 2384, 2386, 2388, 2390, 2392, 2394, 2350, 2356, 0, 0, 0, 0, 2348, 2352};

  std::vector<Reading> readings;
  const auto add = [&](const std::string& name, double factor) {
    Reading reading{name, record[name]};
    double& number = reading.number;
    const bool is_value = name.starts_with("value_");
    const std::size_t index = is_value ? std::stoul(name.substr(6)) - 1 : 0;
    // The record holds so many times the value, cut off.
    const auto scale = [&](double by, double cut) {
      number /= by;
      reading.tolerance = cut / by + std::abs(number) * 1e-7;
    };
    if (factor > 1) scale(factor, 1.1);
    if (kind == "envir") {
      reading.value = name == "register_0" ? "humidity" : "temperature";
      if (number > 0x7FFF) number -= 0x10000;
      scale(10, 0.01);
    } else if (kind == "leak") {
      if (name == "input_register_1" && record["leak"] == 0) return;  // not asked for
      const bool is_flag = name == "leak" || name == "second_flag";   // of two bits
      if (is_flag) reading.kept = [](double sent) { return sent > 0 ? 1.0 : 0.0; };
    } else if (kind == "di") {
      number = number > 0;
    } else if (kind == "card" && name == "byte_14") {
      reading.value = "state";
    } else if (kind == "airc" && name.ends_with("_low")) {
      reading.value.resize(name.size() - 4);
      reading.kept = [](double sent) { return std::fmod(sent, 256); };
    } else if (kind == "airc" && name.ends_with("_high")) {
      reading.value.resize(name.size() - 5);
      reading.kept = [](double sent) { return std::floor(sent / 256); };
    } else if (kind == "dual-proto" && is_value && address % 2 == 0) {
      if (index < std::size(kFloats)) reading.value = "register_" + std::to_string(kFloats[index]);
      scale(index < 7 || index == 13 ? 10 : 1, 1);
    } else if (kind == "dual-proto" && is_value) {
      const bool is_word = index < 7;
      reading.value = (is_word ? "word_" : "byte_") + std::to_string(kFrame[index]);
      if (is_word && number < 0) number += 0x10000;
      scale(index >= 15 && index != 27 ? 10 : 1, 0);
    } else if (kind.starts_with("elec")) {
      reading.tolerance = 12.5;  // some registers count in steps of 25
    } else if (kind == "ups" && name.starts_with("rated_")) {
      reading.tolerance = 0.999;
    } else if (kind == "battery" || (kind == "power-unit" && is_value)) {
      if (index == 48) reading.tolerance = 1.1;  // in whole units
      reading.kept = [](double sent) { return std::abs(sent); };
    }
    readings.push_back(reading);
  };
  for (const RecordField& field : FieldsOf(*FindKind(kind))) {
    for (int i = 0; i < field.count && !IsText(field); ++i) add(FieldName(field, i), field.factor);
  }
  return readings;
}

}  // namespace fieldline::test
