#include "polling/display_panel.h"

#include <new>

namespace fieldline {

DisplayPanel::DisplayPanel(const LineConfig& line, TraceOutput* trace)
    : line_(line), polled_(trace, {}, SER_COM), display_(CHubMonitor::GetInstance()) {
  if (display_ == nullptr) throw std::bad_alloc();
  CHubMonitor::InitHandler(&polled_.port());
}

DisplayPanel::~DisplayPanel() {
  CHubMonitor::InitHandler(nullptr);
  CHubMonitor::FreeInstance();
}

PollResult DisplayPanel::Run(const std::function<unsigned long(CHubMonitor& display)>& operation) {
  if (polled_.port().IsOpened() == 0) {
    if (const std::optional<Failure> failure = polled_.Open(line_)) return FailedToOpen(*failure);
  }
  PollResult result = PollOnce(KindOf(SERDAT_MONITOR), 0, &polled_, OptionsOf(line_),
                               [&] { return static_cast<int>(operation(*display_)); });
  // A line that is gone is closed at once, so that its adapter gets the same name when it is plugged in again.
  if (result.failure) polled_.port().Close();
  return result;
}

}  // namespace fieldline
