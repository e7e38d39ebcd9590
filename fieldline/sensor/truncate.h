#pragma once

#include <cmath>
#include <limits>

namespace fieldline {

// `value` without its fraction; what lies beyond the range of Integer stops at its bound, and a not-a-number gives 0.
template <class Integer>
Integer Truncate(double value) {
  using Limits = std::numeric_limits<Integer>;
  if (std::isnan(value)) return 0;
  if (value <= static_cast<double>(Limits::min())) return Limits::min();
  if (value >= static_cast<double>(Limits::max())) return Limits::max();
  return static_cast<Integer>(value);
}

}  // namespace fieldline
