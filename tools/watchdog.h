#pragma once

#include <condition_variable>
#include <functional>
#include <mutex>
#include <thread>

namespace fieldline::tool {

// Sees to it that an interrupt ends the program while this lives. A verb notices it by itself, unless it sits in a long
// read or a driver's pause: then the program ends without it.
class Watchdog {
 public:
  // `give_up` is called on a thread of this object, when a verb has not ended soon after the first interrupt, and at
  // once upon the second; it ends the process.
  explicit Watchdog(std::function<void()> give_up);

  // The verb has ended.
  ~Watchdog();

  Watchdog(const Watchdog&) = delete;
  Watchdog& operator=(const Watchdog&) = delete;

 private:
  void Run();

  const std::function<void()> give_up_;
  std::mutex mutex_;  // of the next
  bool ended_ = false;
  std::condition_variable ending_;
  std::thread thread_;
};

}  // namespace fieldline::tool
