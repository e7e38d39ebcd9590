#include "sim/values.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <numbers>
#include <random>
#include <utility>

namespace fieldline::sim {
namespace {

constexpr double kShortestPeriod = 60;  // s
constexpr double kLongestPeriod = 300;

std::string NumberToText(double number, int decimals) {
  char text[400];  // the largest double has 309 digits
  const auto end = std::to_chars(text, text + sizeof text, number, std::chars_format::fixed, decimals).ptr;
  return {text, end};
}

std::string Range(const Value& value) {
  std::string range =
      NumberToText(value.minimum, value.decimals) + " to " + NumberToText(value.maximum, value.decimals);
  if (!value.unit.empty()) range += " " + value.unit;
  return range;
}

double Rounded(double number, int decimals) {
  const double scale = std::pow(10, decimals);
  return std::round(number * scale) / scale + 0.0;  // turns -0 into 0
}

}  // namespace

void Values::Add(Value value) {
  const std::lock_guard lock(mutex_);
  entries_.push_back({.value = std::move(value)});
  SetNumber(entries_.back(), entries_.back().value.number);
  AssignPeriods();
}

std::vector<Value> Values::List() const {
  const std::lock_guard lock(mutex_);
  std::vector<Value> values;
  for (const Entry& entry : entries_) values.push_back(entry.value);
  return values;
}

double Values::Number(std::string_view name) const {
  const std::lock_guard lock(mutex_);
  return entries_.at(Find(name)).value.number;
}

std::string Values::Text(std::string_view name) const {
  const std::lock_guard lock(mutex_);
  return entries_.at(Find(name)).value.text;
}

long Values::Scaled(std::string_view name, double factor) const { return std::lround(Number(name) * factor); }

bool Values::Set(std::string_view name, std::string_view text, std::string* error) {
  const std::lock_guard lock(mutex_);
  const std::size_t found = Find(name);
  if (found == entries_.size()) {
    *error = "no value '" + std::string(name) + "'; expected one of:";
    for (const Entry& known : entries_) {
      if (!known.value.read_only) *error += " " + known.value.name;
    }
    return false;
  }
  Value& value = entries_[found].value;
  if (value.read_only) {
    *error = value.name + " is reported by the device and can't be set";
    return false;
  }
  if (value.max_length > 0) {
    if (text.size() > value.max_length) {
      *error = value.name + ": '" + std::string(text) + "' is too long; expected at most " +
               std::to_string(value.max_length) + " bytes";
      return false;
    }
    value.text = text;
    return true;
  }
  double number = 0;
  const char* end = text.data() + text.size();
  const auto parsed = std::from_chars(text.data(), end, number);
  const bool in_range = number >= value.minimum && number <= value.maximum;  // false for not-a-number
  if (parsed.ec != std::errc() || parsed.ptr != end || !in_range) {
    *error = value.name + ": '" + std::string(text) + "' is not a number from " + Range(value);
    return false;
  }
  SetNumber(entries_[found], number);
  return true;
}

void Values::PutNumber(std::string_view name, double number) {
  const std::lock_guard lock(mutex_);
  SetNumber(entries_.at(Find(name)), number);
}

void Values::PutText(std::string_view name, std::string_view text) {
  const std::lock_guard lock(mutex_);
  Value& value = entries_.at(Find(name)).value;
  value.text = text.substr(0, value.max_length);
}

void Values::SeedDrift(std::uint32_t seed) {
  const std::lock_guard lock(mutex_);
  seed_ = seed;
  AssignPeriods();
}

void Values::Drift(double seconds) {
  const std::lock_guard lock(mutex_);
  for (Entry& entry : entries_) {
    Value& value = entry.value;
    if (value.drift == 0) continue;
    entry.since_set += seconds;
    const double swing = value.drift * std::sin(2 * std::numbers::pi * entry.since_set / entry.period);
    value.number = Rounded(std::clamp(entry.base + swing, value.minimum, value.maximum), value.decimals);
  }
}

std::size_t Values::Find(std::string_view name) const {
  std::size_t index = 0;
  while (index < entries_.size() && entries_[index].value.name != name) ++index;
  return index;
}

void Values::AssignPeriods() {
  std::mt19937 random(seed_);
  for (Entry& entry : entries_) {
    const double fraction = static_cast<std::uint32_t>(random()) / 4294967296.0;
    entry.period = kShortestPeriod + fraction * (kLongestPeriod - kShortestPeriod);
    if (random() % 2 != 0) entry.period = -entry.period;
  }
}

void Values::SetNumber(Entry& entry, double number) {
  Value& value = entry.value;
  value.number = Rounded(std::clamp(number, value.minimum, value.maximum), value.decimals);
  entry.base = value.number;
  entry.since_set = 0;
}

std::string ToText(const Value& value) {
  return value.max_length > 0 ? value.text : NumberToText(value.number, value.decimals);
}

}  // namespace fieldline::sim
