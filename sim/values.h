#pragma once

#include <cstddef>
#include <cstdint>
#include <mutex>
#include <string>
#include <string_view>
#include <vector>

namespace fieldline::sim {

// A named quantity of a simulated device: a number, or a text when `max_length` is above 0.
struct Value {
  std::string name;  // in snake case, unique within the device
  std::string unit{};
  double minimum = 0;
  double maximum = 0;
  int decimals = 0;  // of the number as the device sends it; a number is always rounded to them
  double number = 0;
  double drift = 0;  // how far the number wanders from what was set last, in its unit; 0 for what doesn't wander
  std::size_t max_length = 0;  // bytes
  std::string text{};
  bool read_only = false;  // what the device reports about itself, such as the page that a display shows
};

// The values of one device, in the order in which they were added. Every operation may be called from any thread.
class Values {
 public:
  void Add(Value value);

  std::vector<Value> List() const;

  // The value of that name, which must have been added.
  double Number(std::string_view name) const;
  std::string Text(std::string_view name) const;

  // Number(name) x factor, rounded: what a device that sends tenths (factor 10) puts into a register.
  long Scaled(std::string_view name, double factor) const;

  // Sets a value from outside. False, with the reason and what was expected in *error, when there is no such value,
  // when it is read only, and for a number that is none or out of range or a text that is too long.
  bool Set(std::string_view name, std::string_view text, std::string* error);

  // For the device itself: read-only values too. A number is brought into its range, a text is cut.
  void PutNumber(std::string_view name, double number);
  void PutText(std::string_view name, std::string_view text);

  // Period and direction in which each value drifts follow from the seed.
  void SeedDrift(std::uint32_t seed);

  // Lets `seconds` pass. Where the numbers are then depends on the time passed since each was set, not on its slices.
  void Drift(double seconds);

 private:
  struct Entry {
    Value value;
    double base = 0;       // the number last set, around which it drifts
    double since_set = 0;  // s
    double period = 0;     // s; negative when it falls first
  };

  std::size_t Find(std::string_view name) const;  // entries_.size() when there is none
  void AssignPeriods();
  static void SetNumber(Entry& entry, double number);

  mutable std::mutex mutex_;
  std::vector<Entry> entries_;
  std::uint32_t seed_ = 1;
};

// The number with the decimals of `value`, or its text.
std::string ToText(const Value& value);

}  // namespace fieldline::sim
