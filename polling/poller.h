#pragma once

#include <chrono>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "fieldline/kinds.h"
#include "fieldline/serial/ser_base.h"
#include "polling/diagnosis.h"
#include "polling/line/line_port.h"
#include "polling/line/recorder.h"
#include "polling/site/line_config.h"

namespace fieldline {

// A line that is polled: a port of the library with a reply checker and a recorder.
class PolledLine {
 public:
  PolledLine() = default;
  virtual ~PolledLine() = default;
  PolledLine(const PolledLine&) = delete;
  PolledLine& operator=(const PolledLine&) = delete;

  virtual ISerBase& port() = 0;
  virtual ReplyChecker& checker() = 0;
  virtual Recorder& recorder() = 0;

  // Opens the line. Returns the reason when that fails.
  std::optional<Failure> Open(const LineConfig& line);

  // The line as it was last opened.
  const LineConfig& config() const { return config_; }

 private:
  LineConfig config_;
};

// A polled line with its port. The destructor closes the port.
template <class Base>
class PolledPort final : public PolledLine {
 public:
  // See Recorder for `trace` and `name`; `arguments` are those of the port.
  template <typename... Arguments>
  explicit PolledPort(TraceOutput* trace, std::string name, Arguments&&... arguments)
      : own_recorder_(trace, std::move(name)), own_port_(own_recorder_, std::forward<Arguments>(arguments)...) {}
  ~PolledPort() override { own_port_.Close(); }

  ISerBase& port() override { return own_port_; }
  ReplyChecker& checker() override { return own_port_.checker(); }
  Recorder& recorder() override { return own_recorder_; }
  Base& own_port() { return own_port_; }

 private:
  Recorder own_recorder_;
  LinePort<Base> own_port_;
};

// A new driver of a kind that is polled.
std::unique_ptr<CSensorBase> RequireDriver(const Kind& kind);

// A problem on the line that a person should look at, although the reading is good.
struct Warning {
  std::string_view code;  // for programs, such as "stray_bytes"
  std::string message;    // for people
};

struct PollResult {
  Time time;  // when it began
  std::chrono::duration<double, std::milli> duration{};
  std::vector<Exchange> exchanges;
  std::optional<Failure> failure;
  std::optional<Warning> warning;  // of a good reading
  Bytes record;                    // what the driver decoded; empty after a failure
};

// The result of a poll on a line that could not be opened.
PollResult FailedToOpen(const Failure& failure);

// Makes one poll by calling `get_data`, which returns 1 or 0 as drivers do. `line` is null for a kind without a line.
PollResult PollOnce(const Kind& kind, int address, PolledLine* line, const PollOptions& options,
                    const std::function<int()>& get_data);

// The same with a driver. Repeats the poll when nothing answers, up to the number of retries in the options.
PollResult Poll(const Kind& kind, int address, CSensorBase& driver, PolledLine* line, const PollOptions& options);

}  // namespace fieldline
