#pragma once

#include <functional>

namespace fieldline::sim {

// Removes something from the file system in its destructor, or earlier when the process has to end before.
class CleanUp {
 public:
  // `remove` is called once, possibly while other threads still use what it removes.
  explicit CleanUp(std::function<void()> remove);
  ~CleanUp();
  CleanUp(const CleanUp&) = delete;
  CleanUp& operator=(const CleanUp&) = delete;

 private:
  friend void CleanUpNow();

  std::function<void()> remove_;  // null after the call
};

// Calls `remove` of all existing objects, before the process ends. Thread-safe.
void CleanUpNow();

}  // namespace fieldline::sim
