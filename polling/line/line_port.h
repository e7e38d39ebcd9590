#pragma once

#include <utility>

#include "polling/line/reply_checker.h"

namespace fieldline {

// A port of the library that checks whether each reply belongs to its request. Observers see requests and replies; the
// recorder also sees the bytes that are dropped.
template <class Base>
class LinePort : public Base {
 public:
  template <typename... Arguments>
  explicit LinePort(Recorder& recorder, Arguments&&... arguments)
      : Base(std::forward<Arguments>(arguments)...), checker_(this->m_hCom, recorder) {
    this->InsertObserver(&recorder);
  }

  ReplyChecker& checker() { return checker_; }

  int Read(BYTE* data, int count) override {
    if (!this->m_hCom.IsOpen()) return -1;
    const int received = checker_.Read(data, count);
    if (received > 0) this->NotifyObservers(&ISerObserver::OnSerRead, data, received);
    return received;
  }

  int Write(const BYTE* data, int count) override {
    if (!this->m_hCom.IsOpen()) return -1;
    const int written = checker_.Write(data, count);
    if (written > 0) this->NotifyObservers(&ISerObserver::OnSerWrite, data, written);
    return written;
  }

 private:
  ReplyChecker checker_;
};

}  // namespace fieldline
