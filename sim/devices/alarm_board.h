#pragma once

#include <atomic>
#include <cstdint>
#include <functional>
#include <mutex>
#include <string>
#include <vector>

#include "sim/device.h"

namespace fieldline::sim {

// What left the building through an alarm board.
struct AlarmMessage {
  enum class Type { kSms, kMms, kCall, kSpeech, kRelay };

  Type type;
  std::string first{};   // SMS: first text; call: number
  std::string text{};    // SMS: second text; MMS: text; call and speech: what is spoken
  Bytes data{};          // MMS
  BYTE relay = 0;        // relay: its number
  BYTE relay_state = 0;  // relay: its new state
};

// One line of text. MMS data show as their size and CRC-32, as the crc32 command prints it.
std::string ToText(const AlarmMessage& message);

// Alarm board: frames AA, length, command, payload, XOR checksum, 55. Damaged frames and unknown commands are not
// answered.
class AlarmBoard : public Device {
 public:
  AlarmBoard();

  // Is told of each message on the line's own thread. Before the line starts.
  void SetListener(std::function<void(const AlarmMessage&)> listener) { listener_ = std::move(listener); }

  // The latest messages, oldest first. May be called from any thread.
  std::vector<AlarmMessage> Outbox() const;

  // Frames that came where no undisturbed client sends them: a step of an MMS transfer without the step before it,
  // anything else in the middle of a transfer, a call or speech whose text was not set by the frame before. May be
  // called from any thread.
  unsigned OutOfSequence() const { return out_of_sequence_; }

  std::size_t Hear(std::span<const BYTE> received, bool silent, std::vector<Reply>& replies) override;

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
  std::string speech_;  // the text that is set
  Bytes mms_data_;      // of the transfer under way
};

}  // namespace fieldline::sim
