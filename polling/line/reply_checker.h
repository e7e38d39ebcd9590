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

// How one poll is made.
struct PollManner {
  const WireProtocol* protocol;
  ReadTimeout timeout;
  std::chrono::milliseconds pause{0};  // silence before it, from the end of the poll before
  bool any_address = false;            // accept a reply that carries another address
  bool quick_silence = false;          // give up when nothing has begun within the time-out of one byte
};

// What the line showed during a poll, besides the replies that the driver got.
struct LineReport {
  Bytes stray;     // before a reply
  Bytes trailing;  // after it
  std::string
      mismatch;   // of the last frame that was no reply to the request: "device 1 answered a request to device 2"
  Bytes foreign;  // that frame
  std::optional<std::chrono::milliseconds> late;  // after the request: bytes that came when the time-out was over
  bool noise = false;                             // the line did not fall silent
};

// Stands between a driver and the line, and sees that each reply belongs to its request.
//
// The line is purged before each request, and silent before a poll's second and later ones. Where the protocol has
// frames, a frame of another device is dropped and the wait goes on within the same time-out, as the Modbus serial line
// guide (V1.02, 2.4.1, "waiting for reply") asks, and a frame is found after stray bytes. Reads end as soon as a whole
// frame has come. When none comes, the driver gets the bytes as they came, and judges them itself. After a failed poll
// the line is read until it is silent.
class ReplyChecker {
 public:
  using Clock = std::chrono::steady_clock;

  // `device` and `recorder` outlive this.
  ReplyChecker(SerialDevice& device, Recorder& recorder) : device_(device), recorder_(recorder) {}

  // For the silence between frames, 3.5 characters.
  void SetCharacterTime(std::chrono::microseconds character) { character_ = character; }
  std::chrono::microseconds CharacterTime() const { return character_; }

  // Waits for the pause to end. Then the driver is called, and End() after it.
  void Begin(const PollManner& manner);
  LineReport End(bool good);

  // As ISerBase has them, on an open line.
  int Read(BYTE* data, int count);
  int Write(const BYTE* data, int count);

 private:
  // Whether more bytes may come before the deadline.
  bool Receive(Clock::time_point deadline);
  void AwaitBytes(std::size_t count, Clock::time_point deadline);
  void AwaitFrame(Clock::time_point deadline);
  bool TakeFrame(bool no_more);
  void AwaitSilence();
  void Drop(std::size_t count, Bytes& kept, std::string_view what);
  Clock::time_point DeadlineOf(int count) const;
  std::chrono::milliseconds Silence() const;
  // Reads until the line is silent. The bytes that came first, and whether it fell silent.
  bool DiscardUntilSilent(std::chrono::milliseconds silence, Bytes& first, Clock::time_point& first_at);

  SerialDevice& device_;
  Recorder& recorder_;
  std::chrono::microseconds character_{0};
  PollManner manner_{};
  LineReport report_;
  Bytes request_;
  Clock::time_point sent_at_;
  Clock::time_point ended_;  // of the last poll
  bool heard_ = false;       // anything since the request
  bool gone_ = false;
  Bytes received_;  // and not yet told to be a reply, or none
  Bytes ready_;     // for the driver
};

}  // namespace fieldline
