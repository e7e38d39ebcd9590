#pragma once

#include <stdexcept>

namespace fieldline {

// An argument or a file that is wrong: what is wrong with it, and what to write in its place.
class UsageError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

}  // namespace fieldline
