#pragma once

#include <functional>

#include "fieldline/alarm/hub_alarm.h"
#include "fieldline/serial/ser_base.h"
#include "polling/poller.h"

namespace fieldline {

// The alarm board on a line. Uses the library's one controller, and releases it in the destructor.
class AlarmBoard {
 public:
  AlarmBoard(const LineConfig& line, TraceOutput* trace);
  ~AlarmBoard();
  AlarmBoard(const AlarmBoard&) = delete;
  AlarmBoard& operator=(const AlarmBoard&) = delete;

  // To insert observers.
  ISerBase& port() { return polled_.port(); }

  // Opens the line if it is closed, then runs `operation`, which returns 0 for success.
  PollResult Run(const std::function<int(IHubAlarm& board)>& operation);

 private:
  // Opens the same line whatever the definition: after a failed write the controller opens its port without one.
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
