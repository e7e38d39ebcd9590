#pragma once

#include <chrono>
#include <vector>

#include "polling/text.h"

namespace fieldline {

// The least and the most of the numbers of a time that has just passed. Needs the same room however many numbers come:
// the time is divided into sixty parts, and a whole part leaves when its first number is too old.
class ChangeWindow {
 public:
  struct Part {
    Time from;  // time of its first number
    double least;
    double most;
  };

  explicit ChangeWindow(std::chrono::milliseconds time) : time_(time) {}

  void Add(Time now, double number);

  // Most less least.
  double Change() const;

  void Clear() { parts_.clear(); }
  const std::vector<Part>& parts() const { return parts_; }
  void Restore(std::vector<Part> parts) { parts_ = std::move(parts); }

 private:
  static constexpr int kParts = 60;

  const std::chrono::milliseconds time_;
  std::vector<Part> parts_;  // oldest first
};

}  // namespace fieldline
