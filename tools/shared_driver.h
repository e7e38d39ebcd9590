#pragma once

#include <atomic>
#include <map>

#include "tools/kinds.h"

namespace fieldline::tool {

// A mutex that is taken in the order in which it was asked for. The lines of a kind take turns at its driver for long;
// with a plain mutex a busy line may keep the others out.
class FairMutex {
 public:
  void lock() {
    const unsigned ticket = next_++;
    for (unsigned serving = serving_; serving != ticket; serving = serving_) serving_.wait(serving);
  }
  void unlock() {
    ++serving_;
    serving_.notify_all();
  }

 private:
  std::atomic<unsigned> next_ = 0;
  std::atomic<unsigned> serving_ = 0;
};

// The one driver of a kind, with its record. Whoever polls, and reads the record, holds the mutex.
struct SharedDriver {
  explicit SharedDriver(CSensorBase* of_kind) : driver(of_kind) {}

  CSensorBase* const driver;
  FairMutex mutex;
};

using SharedDrivers = std::map<const Kind*, SharedDriver>;

}  // namespace fieldline::tool
