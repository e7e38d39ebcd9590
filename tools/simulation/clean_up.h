#pragma once

#include <functional>

namespace fieldline::tool {

// Removes something from the file system when it goes, or earlier, when the process has to end before that.
class CleanUp {
 public:
  // `remove` is called once, perhaps while other threads go on using what it removes.
  explicit CleanUp(std::function<void()> remove);
  ~CleanUp();
  CleanUp(const CleanUp&) = delete;
  CleanUp& operator=(const CleanUp&) = delete;

 private:
  friend void CleanUpNow();

  std::function<void()> remove_;  // null once it was called
};

// Lets all that live do their work; for a process that is about to end. May be called from any thread.
void CleanUpNow();

}  // namespace fieldline::tool
