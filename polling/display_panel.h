#pragma once

#include <functional>

#include "fieldline/display/hub_monitor.h"
#include "fieldline/serial/ser_base.h"
#include "polling/poller.h"

namespace fieldline {

// The serial display on a line, through the library's one object for it, until this goes.
class DisplayPanel {
 public:
  DisplayPanel(const LineConfig& line, TraceOutput* trace);
  ~DisplayPanel();
  DisplayPanel(const DisplayPanel&) = delete;
  DisplayPanel& operator=(const DisplayPanel&) = delete;

  // Opens the line if it is not open, and runs an operation, which returns 1 for success. The display never answers:
  // all that can fail is the sending.
  PollResult Run(const std::function<unsigned long(CHubMonitor& display)>& operation);

 private:
  const LineConfig line_;
  PolledPort<CSerBase> polled_;
  CHubMonitor* const display_;
};

}  // namespace fieldline
