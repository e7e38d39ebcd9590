#include "tools/poller.h"

namespace fieldline::tool {

std::optional<Failure> OpenLine::Open(const Line& line) {
  if (line.timeout) port_.SetTimeout(line.timeout->per_byte, line.timeout->constant);
  if (port_.Open(line.definition.c_str()) != 0) return std::nullopt;
  return DiagnoseOpen(port_, line);
}

PollResult FailedToOpen(const Failure& failure) {
  return {.time = std::chrono::system_clock::now(), .duration = {}, .exchanges = {}, .failure = failure};
}

PollResult PollOnce(const Kind& kind, ISerBase* port, int address, Recorder& recorder,
                    const std::function<int()>& get_data) {
  recorder.Clear();
  PollResult result;
  result.time = std::chrono::system_clock::now();
  const auto began = std::chrono::steady_clock::now();
  const int good = get_data();
  const auto ended = std::chrono::steady_clock::now();
  result.duration = ended - began;
  result.exchanges = recorder.Exchanges();
  if (good == 0) result.failure = DiagnosePoll(kind, address, port, result.exchanges, ended);
  return result;
}

PollResult PollOnce(const Kind& kind, CSensorBase& driver, ISerBase* port, int address, Recorder& recorder) {
  return PollOnce(kind, port, address, recorder, [&] { return driver.GetData(port, address); });
}

}  // namespace fieldline::tool
