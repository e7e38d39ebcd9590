#pragma once

#include <atomic>
#include <chrono>
#include <deque>
#include <functional>
#include <thread>
#include <vector>

#include "polling/watch/line_worker.h"
#include "service/watched_device.h"

namespace fieldline::service {

// Polls all devices of a site, each line on a thread of its own.
class RoomWatch {
 public:
  // Is told of each poll, on the line's thread; `device` is its number.
  using Report = std::function<void(std::size_t device, const PollResult& result)>;

  // `site` must outlive this.
  RoomWatch(const Site& site, const Report& report);

  // Throws std::system_error when a thread can't be made.
  void Start();

  // False when the polls of a line have not come back for far longer than they may take.
  bool IsAlive() const;

 private:
  using Clock = std::chrono::steady_clock;

  struct Line {
    std::chrono::milliseconds longest_quiet{0};
    std::atomic<Clock::rep> last_report = 0;
  };

  TraceOutput trace_;
  std::deque<Line> lines_;
  std::deque<LineWorker> workers_;
  std::vector<std::jthread> threads_;  // last: they use all of the above
};

}  // namespace fieldline::service
