#include "polling/display_panel.h"

#include <new>

namespace fieldline {

DisplayPanel::DisplayPanel(const LineConfig& line, TraceOutput* trace)
    : line_(line), recorder_(trace), open_line_(port_, recorder_), display_(CHubMonitor::GetInstance()) {
  if (display_ == nullptr) throw std::bad_alloc();
  CHubMonitor::InitHandler(&port_);
}

DisplayPanel::~DisplayPanel() {
  CHubMonitor::InitHandler(nullptr);
  CHubMonitor::FreeInstance();
}

PollResult DisplayPanel::Run(const std::function<unsigned long(CHubMonitor& display)>& operation) {
  if (port_.IsOpened() == 0) {
    if (const std::optional<Failure> failure = open_line_.Open(line_)) return FailedToOpen(*failure);
  }
  return PollOnce(KindOf(SERDAT_MONITOR), &port_, 0, recorder_, [&] { return static_cast<int>(operation(*display_)); });
}

}  // namespace fieldline
