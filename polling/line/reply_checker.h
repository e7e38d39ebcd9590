#pragma once

#include <chrono>
#include <optional>
#include <string>

#include "fieldline/platform/serial_device.h"
#include "polling/line/recorder.h"
#include "polling/protocol/protocol.h"
#include "polling/site/line_config.h"
#include "polling/text.h"

namespace fieldline {

// Options of one poll.
struct PollManner {
  const WireProtocol* protocol;
  ReadTimeout timeout;
  std::chrono::milliseconds pause{0};  // silence between the last byte of the last poll and this one
  bool any_address = false;            // accept a reply that carries another address
  bool quick_silence = false;          // give up when no byte is received within the time-out of one
};

// What was seen on the line during a poll, besides the replies that the driver got.
struct LineReport {
  Bytes stray;           // before a reply
  Bytes trailing;        // after it
  std::string mismatch;  // why the last foreign frame is not the reply: "device 1 answered a request to device 2"
  Bytes foreign;         // that frame
  std::optional<std::chrono::milliseconds> late;  // time from the request to a reply after the time-out
  bool noise = false;                             // the line did not become silent
};

// Reads and writes for a driver, and checks that each reply belongs to its request.
//
// The line is purged before each request, and must be silent before the second and later requests of a poll. In a
// protocol with frames, a frame of another device is dropped and the wait continues within the same time-out, as the
// Modbus serial line guide (V1.02, 2.4.1, "waiting for reply") requires. A frame is also found after stray bytes. A
// read ends as soon as a whole frame is received. Without a whole frame the driver gets all bytes and decides itself.
// After a failed poll the line is read until it is silent.
class ReplyChecker {
 public:
  using Clock = std::chrono::steady_clock;

  // `device` and `recorder` must outlive the checker.
  ReplyChecker(SerialDevice& device, Recorder& recorder) : device_(device), recorder_(recorder) {}

  // Duration of one character. The silence between frames is 3.5 characters.
  void SetCharacterTime(std::chrono::microseconds character) { character_ = character; }
  std::chrono::microseconds CharacterTime() const { return character_; }

  // Waits until the pause is over. Call it before the driver, and End() after.
  void Begin(const PollManner& manner);
  LineReport End(bool good);

  // As in ISerBase, on an open line.
  int Read(BYTE* data, int count);
  int Write(const BYTE* data, int count);

 private:
  // Waits for bytes, at most for the `longest` time. Returns whether more may be received before the deadline.
  bool Receive(Clock::time_point deadline, Clock::duration longest);
  void AwaitBytes(std::size_t count, Clock::time_point deadline);
  void AwaitFrame(Clock::time_point deadline);
  bool TakeFrame(bool no_more);
  bool AwaitSilence();  // whether it came
  void Drop(std::size_t count, Bytes& kept, std::string_view what);
  Clock::time_point DeadlineOf(int count) const;
  std::chrono::milliseconds Silence() const;
  // Reads until the line is silent. `first` gets the first bytes; returns whether the line became silent.
  bool DiscardUntilSilent(std::chrono::milliseconds silence, Bytes& first, Clock::time_point& first_at);

  SerialDevice& device_;
  Recorder& recorder_;
  std::chrono::microseconds character_{0};
  PollManner manner_{};
  LineReport report_;
  Bytes request_;
  Clock::time_point sent_at_;
  Clock::time_point silent_since_;  // after the last poll
  bool any_received_ = false;       // any byte received since the request
  bool gone_ = false;
  Bytes received_;  // not yet recognised as a reply or as something else
  Bytes ready_;     // for the driver
};

}  // namespace fieldline
