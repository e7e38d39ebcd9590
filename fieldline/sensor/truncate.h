#pragma once

#include <cfloat>
#include <cmath>
#include <limits>

namespace fieldline {

// `value` rounded to double precision. The x87 computes with more digits: there, a product that a double rounds up to a
// whole number would stay just below it.
inline double RoundToDouble(double value) {
  if constexpr (FLT_EVAL_METHOD == 0) return value;
  volatile double stored = value;
  return stored;
}

// `value` truncated to a whole number. Values outside the range of Integer are clamped; not-a-number gives 0.
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
