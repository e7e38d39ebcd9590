#pragma once

#include <functional>

#include "fieldline/alarm/hub_alarm.h"
#include "fieldline/serial/ser_base.h"
#include "polling/poller.h"

namespace fieldline {

// The alarm board on a line, through the library's one controller, until this goes.
class AlarmBoard {
 public:
  AlarmBoard(const LineConfig& line, TraceOutput* trace);
  ~AlarmBoard();
  AlarmBoard(const AlarmBoard&) = delete;
  AlarmBoard& operator=(const AlarmBoard&) = delete;

  // For observers.
  ISerBase& port() { return polled_.port(); }

  // Opens the line if it is not open, and runs an operation, which returns 0 for success.
  PollResult Run(const std::function<int(IHubAlarm& board)>& operation);

 private:
  // After a failed write the controller opens its port without a definition; this one then opens the same line again.
  class Port : public CSerBase {
   public:
    explicit Port(std::wstring definition) : CSerBase(SER_COM), definition_(std::move(definition)) {}
    int Open(const wchar_t*) override { return CSerBase::Open(definition_.c_str()); }

   private:
    const std::wstring definition_;
  };

  const LineConfig line_;
  PolledPort<Port> polled_;
  CHubAlarm* const board_;
};

}  // namespace fieldline
