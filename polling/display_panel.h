#pragma once

#include <functional>

#include "fieldline/display/hub_monitor.h"
#include "fieldline/serial/ser_base.h"
#include "polling/poller.h"

namespace fieldline {

// The serial display on a line. Uses the library's one display object, and releases it in the destructor.
class DisplayPanel {
 public:
  DisplayPanel(const LineConfig& line, TraceOutput* trace);
  ~DisplayPanel();
  DisplayPanel(const DisplayPanel&) = delete;
  DisplayPanel& operator=(const DisplayPanel&) = delete;

  // Opens the line if it is closed, then runs `operation`, which returns 1 for success. Only sending can fail: the
  // display never answers.
  PollResult Run(const std::function<unsigned long(CHubMonitor& display)>& operation);

 private:
  const LineConfig line_;
  PolledPort<CSerBase> polled_;
  CHubMonitor* const display_;
};

}  // namespace fieldline
