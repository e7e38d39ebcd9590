#include "polling/poller.h"

#include <new>

#include "fieldline/sensor/make_driver.h"

namespace fieldline {

std::optional<Failure> OpenLine::Open(const LineConfig& line) {
  if (line.timeout) port_.SetTimeout(line.timeout->per_byte, line.timeout->constant);
  if (port_.Open(line.definition.c_str()) != 0) return std::nullopt;
  return DiagnoseOpen(port_, line);
}

std::unique_ptr<CSensorBase> RequireDriver(const Kind& kind) {
  CSensorBase* const driver = MakeDriver(kind.number);
  if (driver == nullptr) throw std::bad_alloc();
  return std::unique_ptr<CSensorBase>(driver);
}

PollResult FailedToOpen(const Failure& failure) {
  PollResult result;
  result.time = std::chrono::system_clock::now();
  result.failure = failure;
  return result;
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
  PollResult result = PollOnce(kind, port, address, recorder, [&] { return driver.GetData(port, address); });
  if (!result.failure) result.record.assign(driver.m_pData, driver.m_pData + kind.record_size);
  return result;
}

}  // namespace fieldline
