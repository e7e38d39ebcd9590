#pragma once

#include <chrono>
#include <functional>
#include <optional>
#include <vector>

#include "tools/diagnosis.h"
#include "tools/kinds.h"
#include "tools/line_option.h"
#include "tools/recorder.h"

namespace fieldline::tool {

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
  std::optional<Failure> Open(const Line& line);

 private:
  ISerBase& port_;
  Recorder& recorder_;
};

struct PollResult {
  Time time;  // when it began
  std::chrono::duration<double, std::milli> duration;
  std::vector<Exchange> exchanges;
  std::optional<Failure> failure;
};

// In place of a poll on a line that could not be opened.
PollResult FailedToOpen(const Failure& failure);

// One poll, made by `get_data`, which returns 1 or 0 as drivers do. `port` is null for a kind without a line.
PollResult PollOnce(const Kind& kind, ISerBase* port, int address, Recorder& recorder,
                    const std::function<int()>& get_data);

// The same with a driver.
PollResult PollOnce(const Kind& kind, CSensorBase& driver, ISerBase* port, int address, Recorder& recorder);

}  // namespace fieldline::tool
