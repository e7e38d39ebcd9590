#pragma once

#include <stdexcept>

namespace fieldline {

// A wrong argument or file. The text says what is wrong and what to write instead.
class UsageError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

}  // namespace fieldline
