#pragma once

#include <cfloat>
#include <cmath>
#include <limits>

namespace fieldline {

// `value` as a double has it, also where the processor computes with more digits than that (x87): a product that a
// double rounds up to a whole number must not stay just below it.
inline double RoundToDouble(double value) {
  if constexpr (FLT_EVAL_METHOD == 0) return value;
  volatile double stored = value;
  return stored;
}

// `value` without its fraction; what lies beyond the range of Integer stops at its bound, and a not-a-number gives 0.
template <class Integer>
Integer Truncate(double value) {
  using Limits = std::numeric_limits<Integer>;
  value = RoundToDouble(value);
  if (std::isnan(value)) return 0;
  if (value <= static_cast<double>(Limits::min())) return Limits::min();
  if (value >= static_cast<double>(Limits::max())) return Limits::max();
  return static_cast<Integer>(value);
}

}  // namespace fieldline
