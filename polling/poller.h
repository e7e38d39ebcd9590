#pragma once

#include <chrono>
#include <functional>
#include <memory>
#include <optional>
#include <vector>

#include "fieldline/kinds.h"
#include "polling/diagnosis.h"
#include "polling/recorder.h"
#include "polling/site/line_config.h"

namespace fieldline {

// A port of the library with a recorder on it; closed again when this goes.
class OpenLine {
 public:
  OpenLine(ISerBase& port, Recorder& recorder) : port_(port), recorder_(recorder) { port_.InsertObserver(&recorder_); }
  ~OpenLine() {
    port_.RemoveObserver(&recorder_);
    port_.Close();
  }
  OpenLine(const OpenLine&) = delete;
  OpenLine& operator=(const OpenLine&) = delete;

  // Opens the line; what is wrong when it can't be opened.
  std::optional<Failure> Open(const LineConfig& line);

 private:
  ISerBase& port_;
  Recorder& recorder_;
};

// A new driver of a kind that is polled.
std::unique_ptr<CSensorBase> RequireDriver(const Kind& kind);

struct PollResult {
  Time time;  // when it began
  std::chrono::duration<double, std::milli> duration{};
  std::vector<Exchange> exchanges;
  std::optional<Failure> failure;
  Bytes record;  // what the driver decoded; empty after a failure
};

// In place of a poll on a line that could not be opened.
PollResult FailedToOpen(const Failure& failure);

// One poll, made by `get_data`, which returns 1 or 0 as drivers do. `port` is null for a kind without a line.
PollResult PollOnce(const Kind& kind, ISerBase* port, int address, Recorder& recorder,
                    const std::function<int()>& get_data);

// The same with a driver.
PollResult PollOnce(const Kind& kind, CSensorBase& driver, ISerBase* port, int address, Recorder& recorder);

}  // namespace fieldline
