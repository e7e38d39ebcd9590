#pragma once

#include <chrono>
#include <functional>
#include <optional>
#include <span>

#include "fieldline/serial/ser_base.h"
#include "tools/poller.h"
#include "tools/schedule.h"
#include "tools/shared_driver.h"
#include "tools/site.h"

namespace fieldline::tool {

struct WatchLimits {
  int polls = 0;  // of each device; 0 for any number
  Schedule::Clock::time_point end = Schedule::Clock::time_point::max();
};

// Polls the devices of one line in turn, on the thread that calls Run(). A line that is absent is opened again and
// again.
class LineWorker {
 public:
  // Is told of each poll; `record` is the kind's, empty after a failure. While the line can't be opened, each attempt
  // counts as a failed poll of all its devices.
  using Report = std::function<void(const SiteDevice&, const PollResult&, std::span<const BYTE> record)>;

  // All must outlive the worker; `drivers` has one for every kind on the line.
  LineWorker(const SiteLine& line, SharedDrivers& drivers, const WatchLimits& limits, TraceOutput& trace,
             Report report);

  // Until a limit is reached or Ctrl-C.
  void Run();

 private:
  using Clock = Schedule::Clock;

  bool Stopped() const;
  void Sleep(Clock::duration time) const;
  bool OpenPort(OpenLine& open_line);
  bool LineIsGone();
  void Poll(std::size_t index);
  void Tell(std::size_t index, const PollResult& result, std::span<const BYTE> record);

  const SiteLine& line_;
  SharedDrivers& drivers_;
  const WatchLimits limits_;
  const Report report_;
  CSerBase port_{SER_COM};
  Recorder recorder_;
  Schedule schedule_;
  std::vector<int> polls_;  // made of each device
};

}  // namespace fieldline::tool
