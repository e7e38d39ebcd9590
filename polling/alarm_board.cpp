#include "polling/alarm_board.h"

#include <new>

namespace fieldline {

AlarmBoard::AlarmBoard(const LineConfig& line, TraceOutput* trace)
    : line_(line), polled_(trace, {}, line.definition), board_(CHubAlarm::GetInstance()) {
  if (board_ == nullptr) throw std::bad_alloc();
  board_->InitHandler(&polled_.port());
}

AlarmBoard::~AlarmBoard() {
  board_->InitHandler(nullptr);
  CHubAlarm::FreeInstance();
}

PollResult AlarmBoard::Run(const std::function<int(IHubAlarm& board)>& operation) {
  if (polled_.port().IsOpened() == 0) {
    if (const std::optional<Failure> failure = polled_.Open(line_)) return FailedToOpen(*failure);
  }
  return PollOnce(KindOf(SERDAT_ALARM), 0, &polled_, OptionsOf(line_), [&] { return operation(*board_) == 0 ? 1 : 0; });
}

}  // namespace fieldline
