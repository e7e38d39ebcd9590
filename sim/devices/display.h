#pragma once

#include <functional>
#include <map>
#include <mutex>
#include <string>

#include "sim/device.h"

namespace fieldline::sim {

// Serial display with DGUS frames (A5 5A, length, command, data); it only listens. What it shows is kept as text: its
// read-only values page and clock, and its variables.
class Display : public Device {
 public:
  Display();

  // The variables that were written, by address. May be called from any thread.
  std::map<WORD, WORD> Variables() const;

  // The display drawn as text, some lines of 40 characters. May be called from any thread.
  std::string Screen();

  // Is told, on the line's own thread, when something has changed. Before the line starts.
  void SetListener(std::function<void(Display&)> listener) { listener_ = std::move(listener); }

  std::size_t Hear(std::span<const BYTE> received, bool silent, std::vector<Reply>& replies) override;

 private:
  bool WriteVariables(std::span<const BYTE> data);
  bool WriteRegisters(std::span<const BYTE> data);

  std::function<void(Display&)> listener_;
  mutable std::mutex variables_mutex_;
  std::map<WORD, WORD> variables_;
};

}  // namespace fieldline::sim
