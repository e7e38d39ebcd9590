#pragma once

#include <cstdint>

#include "fieldline/types.h"

namespace fieldline {

// Time-outs in ms; a negative one counts as 0.
struct SerialTimeouts {
  int read_per_byte;
  int read_constant;
  int write_per_byte;
  int write_constant;
};

enum class Parity : BYTE { kNone = 0, kOdd = 1, kEven = 2, kMark = 3, kSpace = 4 };

enum class StopBits : BYTE { kOne = 0, kOneAndHalf = 1, kTwo = 2 };

struct LineSettings {
  std::uint32_t baud = 9600;    // bit/s
  std::uint32_t data_bits = 8;  // 5 to 8
  Parity parity = Parity::kNone;
  StopBits stop_bits = StopBits::kOne;
};

// A serial line of the operating system, found by its device name (see device_name.h).
//
// A handle, not an owner: destroying the object leaves the line open, Close() releases it, and a copy stands for the
// same line. One thread at a time.
//
// Where a system lets its caller size the queues of a line, the backend asks for 2048 bytes each way and ignores the
// outcome.
class SerialDevice {
 public:
  enum class OpenResult {
    kOpened,
    kNoSuchDevice,  // nothing by that name, or the adapter is unplugged
    kInUse,         // open elsewhere, in this process or in another one
    kNotPermitted,
    kNotSerial,  // something by that name that is no serial line
    kFailed,
  };

  // Opens the line exclusively and makes it raw: from now on bytes 0x00 to 0xFF pass unchanged in both directions (no
  // echo, no translation, no flow-control characters, no signals, no parity marks), whatever the last user of the line
  // left. Speed, character format and all that raw transfer does not need keep the state in which they were found,
  // hardware flow control included.
  //
  // Exclusive holds against every other opener through this class, also when both run with all privileges, and against
  // unprivileged openers of any kind. The claim is made before any setting is touched. The line never becomes a
  // controlling terminal and is not inherited by child processes. The open itself never waits for a carrier.
  //
  // The object must not be open. On any result but kOpened it stays closed.
  OpenResult Open(const wchar_t* name);

  bool IsOpen() const { return handle_ != kInvalidHandle; }

  // Releases the line. Bytes that are still queued for sending may be lost. Does nothing when closed.
  void Close();

  // The time-outs of later reads and writes. False when closed.
  bool SetTimeouts(const SerialTimeouts& timeouts);

  // Reads the line's settings, changes speed, data bits, parity and stop bits, and writes them back; nothing else of
  // the line changes. False, with the line still open, when closed, for 0 bit/s, for data bits outside 5 to 8, and when
  // the hardware refuses the settings or takes a speed more than 2 % away from the one asked for; the line then keeps
  // the settings it had. Any other speed works, standard or not. One and a half stop bits exist in hardware with 5 data
  // bits only; with 6 to 8 the line gets two, which a receiver of one and a half accepts.
  bool SetLine(const LineSettings& settings);

  // Discards all bytes received and not read, and all bytes written and not sent. False when closed or refused.
  bool Purge();

  // Waits until `count` bytes have come, at most read_per_byte x count + read_constant ms, and returns how many came
  // (0 to `count`). Gathers bytes that dribble in and returns early only when all have come, or when the line is gone:
  // a hang-up or an unplugged adapter ends the wait at once with the bytes that came before it. With both time-outs 0
  // it takes what is there and returns. A signal that interrupts the wait is invisible. 0 when closed or `count` < 1.
  int Read(BYTE* data, int count);

  // Waits at most `wait_ms` for a byte and returns those that are there, up to `capacity`; 0 when none came, -1 when the
  // line is closed or gone. A signal that interrupts the wait is invisible.
  int ReadSome(BYTE* data, int capacity, int wait_ms);

  // Sends `count` bytes and returns when they have left for the wire, at most write_per_byte x count + write_constant
  // ms later. Returns `count`; fewer when the bound ran out (the rest is discarded and never sent); -1 when the line
  // is closed or gone. 0 for `count` < 1.
  int Write(const BYTE* data, int count);

 private:
  static constexpr std::intptr_t kInvalidHandle = -1;

  std::intptr_t handle_ = kInvalidHandle;
  SerialTimeouts timeouts_{};
};

}  // namespace fieldline
