#pragma once

#include <cstdint>

#include "fieldline/types.h"

namespace fieldline {

// Time-outs in ms; a negative value counts as 0.
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

// A serial line of the operating system, opened by its device name (see device_name.h).
//
// A handle, not an owner: the destructor leaves the line open, Close() releases it, and a copy refers to the same line.
// Not thread-safe: one thread at a time.
//
// On systems where the queue sizes of a line can be set, the backend requests 2048 bytes each way and ignores the
// result.
class SerialDevice {
 public:
  enum class OpenResult {
    kOpened,
    kNoSuchDevice,  // no device of that name, or the adapter is unplugged
    kInUse,         // open elsewhere, in this process or in another one
    kNotPermitted,
    kNotSerial,  // the name exists, but it is not a serial line
    kFailed,
  };

  // Opens the line exclusively and puts it into raw mode: bytes 0x00 to 0xFF then pass unchanged in both directions (no
  // echo, no translation, no flow-control characters, no signals, no parity marks), whatever settings the last user
  // left. All settings that raw mode does not need stay as they were, such as speed, character format and hardware flow
  // control.
  //
  // Exclusive means that no other open through this class succeeds, even when both openers have all privileges, and no
  // open of any kind by an unprivileged program. The line is claimed before any setting is changed. It never becomes a
  // controlling terminal and is not inherited by child processes. Open never waits for a carrier.
  //
  // The object must not be open. It stays closed on any result but kOpened.
  OpenResult Open(const wchar_t* name);

  bool IsOpen() const { return handle_ != kInvalidHandle; }

  // Releases the line. Bytes still queued for sending may be lost. Does nothing when closed.
  void Close();

  // Sets the time-outs of later reads and writes. Returns false when closed.
  bool SetTimeouts(const SerialTimeouts& timeouts);

  // Sets speed, data bits, parity and stop bits, and keeps all other settings of the line. Any speed but 0 works,
  // standard or not. One and a half stop bits exist in hardware only with 5 data bits; with 6 to 8 the line gets two,
  // which a receiver of one and a half accepts.
  //
  // Returns false when closed, for 0 bit/s, for data bits outside 5 to 8, when the hardware refuses the settings, and
  // when its speed is more than 2 % off. The line then keeps the settings it had, and stays open.
  bool SetLine(const LineSettings& settings);

  // Discards all bytes received and not read, and all bytes written and not sent. Returns false when closed or refused.
  bool Purge();

  // Waits until `count` bytes are received, at most read_per_byte x count + read_constant ms. Returns how many were
  // received, 0 to `count`; 0 when closed and for `count` < 1. A pause between bytes does not end the wait, and neither
  // does a signal. Only a hang-up or an unplugged adapter ends it early; the bytes received before that are returned.
  // With both time-outs 0, returns the bytes that are already there.
  int Read(BYTE* data, int count);

  // Waits at most `wait_ms` for a byte and returns those that are there, up to `capacity`; 0 when none came, -1 when
  // the line is closed or gone. A signal that interrupts the wait is invisible.
  int ReadSome(BYTE* data, int capacity, int wait_ms);

  // Sends `count` bytes and returns when they have left for the wire, at most write_per_byte x count + write_constant
  // ms later. Returns `count`; fewer when the time ran out (the rest is discarded and never sent); -1 when the line is
  // closed or gone; 0 for `count` < 1.
  int Write(const BYTE* data, int count);

 private:
  static constexpr std::intptr_t kInvalidHandle = -1;

  bool IsTransmitterEmpty();

  std::intptr_t handle_ = kInvalidHandle;
  SerialTimeouts timeouts_{};
  bool reports_transmitter_ = true;  // until a backend that asks for it learns that the driver can't tell
};

}  // namespace fieldline
