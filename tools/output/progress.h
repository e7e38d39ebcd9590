#pragma once

#include <chrono>
#include <condition_variable>
#include <mutex>
#include <string>
#include <thread>

#include "fieldline/serial/i_ser_base.h"

namespace fieldline::tool {

// Shows that something is under way, once it has lasted a second: what, for how long, and how far it is. On one line of
// standard error that is written over and erased in the end; on a terminal only.
class Progress : public ISerObserver {
 public:
  // Hears what passes through `port`, which may be null. Draws when `wanted`.
  Progress(ISerBase* port, bool wanted);
  ~Progress();
  Progress(const Progress&) = delete;
  Progress& operator=(const Progress&) = delete;

  // Something begins, and ends; nothing is on the line behind End().
  void Begin(const std::string& what);
  void End();

  // Makes room for something else to be printed. The line is drawn again.
  void Erase();

  // How far it is, such as "3 of 4096 bytes".
  void Tell(const std::string& detail);
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
  std::string what_;  // empty while nothing is under way
  std::string detail_;
  Clock::time_point began_;
  std::thread drawer_;
};

}  // namespace fieldline::tool
