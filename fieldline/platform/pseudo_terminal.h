#pragma once

#include <cstdint>

#include "fieldline/types.h"

namespace fieldline {

// The far end of a serial line that exists in software only: what a simulated device holds while the near end is
// opened like any serial line by its path. Used by the simulator and by tests; not part of the library.
class PseudoTerminal {
 public:
  PseudoTerminal() = default;
  ~PseudoTerminal() { Close(); }
  PseudoTerminal(const PseudoTerminal&) = delete;
  PseudoTerminal& operator=(const PseudoTerminal&) = delete;

  // Makes a new line. False when the system has none left.
  bool Open();

  // Hangs up: whoever has the near end open sees what a pulled adapter shows. Does nothing when closed.
  void Close();

  bool IsOpen() const { return far_ != kInvalidHandle; }

  // Path of the near end; empty when closed.
  const char* Path() const { return path_; }

  // Waits at most `wait_ms` for bytes and returns those that are there, up to `capacity`; 0 when none came, -1 when
  // the line is closed or failed.
  int Read(BYTE* data, int capacity, int wait_ms);

  // Puts bytes on the line at once. Returns how many the line took, or -1.
  int Write(const BYTE* data, int count);

  // Speed that the near end has set, in bit/s, 0 when it can't be told. The near end's parity and character size do
  // not exist on a pseudo-terminal.
  std::uint32_t Baud() const;

 private:
  static constexpr std::intptr_t kInvalidHandle = -1;

  std::intptr_t far_ = kInvalidHandle;
  std::intptr_t near_ = kInvalidHandle;  // held open so that the far end survives users who come and go
  char path_[64] = {};
};

}  // namespace fieldline
