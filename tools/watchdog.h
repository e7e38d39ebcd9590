#pragma once

#include <condition_variable>
#include <functional>
#include <mutex>
#include <thread>

namespace fieldline::tool {

// Makes sure that an interrupt ends the program while this object exists. A verb normally ends by itself. When it is in
// a long read or a driver's pause, the program ends without waiting for it.
class Watchdog {
 public:
  // `give_up` must end the process. It is called on this object's thread when a verb has not ended soon after the first
  // interrupt, and immediately after the second.
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
