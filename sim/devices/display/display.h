#pragma once

#include <functional>
#include <map>
#include <mutex>
#include <string>

#include "sim/device.h"

namespace fieldline::sim {

// Serial display with DGUS frames (A5 5A, length, command, data). It never answers. It keeps what it shows: page and
// clock as read-only values, and its variables.
class Display : public Device {
 public:
  Display();

  // The variables that were written, by address. Thread-safe.
  std::map<WORD, WORD> Variables() const;

  // The display as text, in lines of 40 characters. Thread-safe.
  std::string Screen();

  // Sets a function that is called after each change, on the line's own thread. Call it before the line starts.
  void SetListener(std::function<void(Display&)> listener) { listener_ = std::move(listener); }

  std::size_t Receive(std::span<const BYTE> received, bool silent, std::vector<Reply>& replies) override;

 private:
  bool WriteVariables(std::span<const BYTE> data);
  bool WriteRegisters(std::span<const BYTE> data);

  std::function<void(Display&)> listener_;
  mutable std::mutex variables_mutex_;
  std::map<WORD, WORD> variables_;
};

}  // namespace fieldline::sim
