#pragma once

#include <chrono>
#include <condition_variable>
#include <mutex>
#include <string>
#include <thread>

#include "fieldline/serial/i_ser_base.h"

namespace fieldline::tool {

// Shows work that lasts longer than a second: what it is, for how long, and how far. Uses one line of standard error,
// which is overwritten and finally erased. Only on a terminal.
class Progress : public ISerObserver {
 public:
  // Observes `port`, which may be null. Draws only when `wanted`.
  Progress(ISerBase* port, bool wanted);
  ~Progress();
  Progress(const Progress&) = delete;
  Progress& operator=(const Progress&) = delete;

  // Start and end of a piece of work. After End() the line is empty.
  void Begin(const std::string& what);
  void End();

  // Clears the line so that something else can be printed. It is drawn again later.
  void Erase();

  // Sets the detail, such as "3 of 4096 bytes".
  void SetDetail(const std::string& detail);
  std::string Detail() const;

  void OnSerRead(const BYTE*, int) override {}
  void OnSerWrite(const BYTE*, int) override {}

 private:
  using Clock = std::chrono::steady_clock;

  void Run();
  void Draw();
  void EraseLocked();

  ISerBase* const port_;
  mutable std::mutex mutex_;  // of all below
  std::condition_variable changed_;
  bool ending_ = false;
  bool drawn_ = false;
  std::string what_;  // empty between two pieces of work
  std::string detail_;
  Clock::time_point began_;
  std::thread drawer_;
};

}  // namespace fieldline::tool
