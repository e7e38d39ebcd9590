#pragma once

#include <cstdint>

#include "fieldline/types.h"

namespace fieldline {

// The far end of a serial line in software. A simulated device uses the far end; the near end is opened by its path
// like any serial line. Used by the simulator and by tests; not part of the library.
class PseudoTerminal {
 public:
  PseudoTerminal() = default;
  ~PseudoTerminal() { Close(); }
  PseudoTerminal(const PseudoTerminal&) = delete;
  PseudoTerminal& operator=(const PseudoTerminal&) = delete;

  // Whether this system has any.
  static bool IsSupported();

  // Creates a new line. Returns false when the system has none left.
  bool Open();

  // Hangs up: a program that has the near end open sees the same as when an adapter is pulled. Does nothing when
  // closed.
  void Close();

  bool IsOpen() const { return far_ != kInvalidHandle; }

  // Path of the near end; empty when closed.
  const char* Path() const { return path_; }

  // Waits at most `wait_ms` ms for bytes. Returns the number of bytes read, up to `capacity`; 0 when there are none; -1
  // when the line is closed or failed.
  int Read(BYTE* data, int capacity, int wait_ms);

  // Writes bytes without waiting. Returns how many the line took, or -1.
  int Write(const BYTE* data, int count);

  // Speed set at the near end, in bit/s; 0 when unknown. A pseudo-terminal has no parity and no character size.
  std::uint32_t Baud() const;

 private:
  static constexpr std::intptr_t kInvalidHandle = -1;

  std::intptr_t far_ = kInvalidHandle;
  std::intptr_t near_ =
      kInvalidHandle;  // kept open, so that the far end still works after users of the near end close it
  char path_[64] = {};
};

}  // namespace fieldline
