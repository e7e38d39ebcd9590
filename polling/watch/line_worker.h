#pragma once

#include <chrono>
#include <functional>
#include <memory>
#include <optional>

#include "fieldline/serial/ser_base.h"
#include "polling/poller.h"
#include "polling/site/site.h"
#include "polling/watch/schedule.h"

namespace fieldline {

struct WatchLimits {
  int polls = 0;  // of each device; 0 for any number
  Schedule::Clock::time_point end = Schedule::Clock::time_point::max();
};

// Polls the devices of one line in turn, on the thread that calls Run(). When the line is missing, keeps trying to open
// it.
class LineWorker {
 public:
  // Called after each poll. While the line can't be opened, each attempt counts as a failed poll of all its devices.
  using Report = std::function<void(const SiteDevice&, const PollResult&)>;

  // `line` and `trace` must outlive the worker. Each device has its own driver object.
  LineWorker(const SiteLine& line, const WatchLimits& limits, TraceOutput& trace, Report report);

  // Returns when a limit is reached or the program is interrupted.
  void Run();

 private:
  using Clock = Schedule::Clock;

  bool Stopped() const;
  void Sleep(Clock::duration time) const;
  bool OpenPort();
  bool LineIsGone();
  void Poll(std::size_t index);
  void ReportPoll(std::size_t index, const PollResult& result);

  const SiteLine& line_;
  const WatchLimits limits_;
  const Report report_;
  PolledPort<CSerBase> polled_;
  Schedule schedule_;
  struct Polled {
    std::unique_ptr<CSensorBase> driver;
    int polls = 0;  // made so far
  };
  std::vector<Polled> devices_;
};

}  // namespace fieldline
