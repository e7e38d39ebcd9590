#include "polling/alarm_board.h"

#include <new>

namespace fieldline {

AlarmBoard::AlarmBoard(const LineConfig& line, TraceOutput* trace)
    : line_(line),
      recorder_(trace),
      port_(line.definition),
      open_line_(port_, recorder_),
      board_(CHubAlarm::GetInstance()) {
  if (board_ == nullptr) throw std::bad_alloc();
  board_->InitHandler(&port_);
}

AlarmBoard::~AlarmBoard() {
  board_->InitHandler(nullptr);
  CHubAlarm::FreeInstance();
}

PollResult AlarmBoard::Run(const std::function<int(IHubAlarm& board)>& operation) {
  if (port_.IsOpened() == 0) {
    if (const std::optional<Failure> failure = open_line_.Open(line_)) return FailedToOpen(*failure);
  }
  return PollOnce(KindOf(SERDAT_ALARM), &port_, 0, recorder_, [&] { return operation(*board_) == 0 ? 1 : 0; });
}

}  // namespace fieldline
