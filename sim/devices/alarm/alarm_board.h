#pragma once

#include <atomic>
#include <cstdint>
#include <functional>
#include <mutex>
#include <string>
#include <vector>

#include "sim/device.h"

namespace fieldline::sim {

// An action of the alarm board: a message, a call, speech or a relay change.
struct AlarmMessage {
  enum class Type { kSms, kMms, kCall, kSpeech, kRelay };

  Type type;
  std::string first{};   // SMS: first text; call: number
  std::string text{};    // SMS: second text; MMS: text; call and speech: what is spoken
  Bytes data{};          // MMS
  BYTE relay = 0;        // relay: its number
  BYTE relay_state = 0;  // relay: its new state
};

// The message in one line of text. MMS data are shown as size and CRC-32, in the format of the crc32 command.
std::string ToText(const AlarmMessage& message);

// Alarm board: frames AA, length, command, payload, XOR checksum, 55. Damaged frames and unknown commands are not
// answered.
class AlarmBoard : public Device {
 public:
  AlarmBoard();

  // Sets a function that is called for each message, on the line's own thread. Call it before the line starts.
  void SetListener(std::function<void(const AlarmMessage&)> listener) { listener_ = std::move(listener); }

  // The latest messages, oldest first. Thread-safe.
  std::vector<AlarmMessage> Outbox() const;

  // Number of frames out of sequence: a step of an MMS transfer without the step before it, any other frame during a
  // transfer, or a call or speech without a text set by the frame before. An undisturbed client never sends them.
  // Thread-safe.
  unsigned OutOfSequence() const { return out_of_sequence_; }

  std::size_t Receive(std::span<const BYTE> received, bool silent, std::vector<Reply>& replies) override;

 private:
  struct Request;

  bool Follows(BYTE command) const;
  bool Answer(const Request& request, Bytes* payload);
  BYTE MmsStatus(bool follows);
  void Post(AlarmMessage message);
  BYTE Byte(std::string_view name);

  std::function<void(const AlarmMessage&)> listener_;
  mutable std::mutex outbox_mutex_;
  std::vector<AlarmMessage> outbox_;
  std::atomic<unsigned> out_of_sequence_ = 0;
  BYTE last_command_ = 0;
  std::string speech_;  // the text set last
  Bytes mms_data_;      // data of the current MMS transfer
};

}  // namespace fieldline::sim
