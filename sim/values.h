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
  int decimals = 0;  // as the device sends it; numbers are always rounded to them
  double number = 0;
  double drift = 0;            // largest distance from the number last set, in its unit; 0: no drift
  std::size_t max_length = 0;  // bytes
  std::string text{};
  bool read_only = false;  // set only by the device itself, such as the page that a display shows
};

// The values of one device, in the order in which they were added. Thread-safe.
class Values {
 public:
  void Add(Value value);

  std::vector<Value> List() const;

  // The value of that name, which must exist.
  double Number(std::string_view name) const;
  std::string Text(std::string_view name) const;

  // Number(name) x factor, rounded to a whole number: with factor 10, the register of a device that sends tenths.
  long Scaled(std::string_view name, double factor) const;

  // Sets a value from outside. Returns false, with the reason and the expected input in *error, when there is no such
  // value, when it is read-only, when the text is not a number or out of range, and when a text is too long.
  bool Set(std::string_view name, std::string_view text, std::string* error);

  // For the device itself; also for read-only values. A number is clamped to its range, a text is truncated.
  void PutNumber(std::string_view name, double number);
  void PutText(std::string_view name, std::string_view text);

  // Sets the seed from which each value gets the period and direction of its drift.
  void SeedDrift(std::uint32_t seed);

  // Moves the drift forward by `seconds`. The result depends only on the total time since a number was set, not on the
  // number of calls.
  void Drift(double seconds);

 private:
  struct Entry {
    Value value;
    double base = 0;       // the number last set, around which it drifts
    double since_set = 0;  // s
    double period = 0;     // s; negative when the number falls first
  };

  std::size_t Find(std::string_view name) const;  // entries_.size() when there is none
  void AssignPeriods();
  static void SetNumber(Entry& entry, double number);

  mutable std::mutex mutex_;
  std::vector<Entry> entries_;
  std::uint32_t seed_ = 1;
};

// The value as text; a number with its decimals.
std::string ToText(const Value& value);

}  // namespace fieldline::sim
