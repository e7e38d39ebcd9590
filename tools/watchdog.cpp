#include "tools/watchdog.h"

#include <chrono>
#include <system_error>
#include <utility>

#include "fieldline/platform/console.h"

namespace fieldline::tool {

using namespace std::chrono_literals;

Watchdog::Watchdog(std::function<void()> give_up) : give_up_(std::move(give_up)) {
  try {
    thread_ = std::thread([this] { Run(); });
  } catch (const std::system_error&) {
    // No thread can be created. The verb can run without the watchdog: the third interrupt ends the program anyway.
  }
}

Watchdog::~Watchdog() {
  if (!thread_.joinable()) return;
  {
    const std::lock_guard lock(mutex_);
    ended_ = true;
  }
  ending_.notify_one();
  Interrupt();  // ends the sleep
  thread_.join();
}

void Watchdog::Run() {
  constexpr auto kPatience = 700ms;
  constexpr auto kLook = 20ms;
  constexpr int kHour = 3'600'000;  // ms
  while (SleepUnlessInterrupted(kHour)) {
  }
  const auto end = std::chrono::steady_clock::now() + kPatience;
  std::unique_lock lock(mutex_);
  while (!ending_.wait_for(lock, kLook, [this] { return ended_; })) {
    if (InterruptCount() >= 2 || std::chrono::steady_clock::now() >= end) give_up_();
  }
}

}  // namespace fieldline::tool
