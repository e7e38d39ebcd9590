#include "sim/devices/alarm/alarm_board.h"

#include <algorithm>
#include <cstdio>
#include <numeric>
#include <utility>

namespace fieldline::sim {
namespace {

enum Command : BYTE {
  kDeviceId = 0x01,
  kStatus = 0x02,
  kClearText = 0x03,
  kSetText = 0x04,
  kSnapshot = 0x05,
  kSignalQuality = 0x06,
  kRemoteRequests = 0x07,
  kResetGsm = 0x10,
  kSms = 0x11,
  kMmsBegin = 0x12,
  kMmsBlock = 0x13,
  kMmsEnd = 0x14,
  kMmsSend = 0x15,
  kResetPstn = 0x20,
  kDial = 0x21,
  kSpeak = 0x31,
  kRelay = 0x32,
  kInputs = 0x33,
};

constexpr std::size_t kFrameLength = 6;  // without payload
constexpr std::size_t kLongestPayload = 506;
constexpr std::size_t kOutboxSize = 1000;
constexpr BYTE kRefused = 1;

BYTE Xor(std::span<const BYTE> bytes) {
  return std::accumulate(bytes.begin(), bytes.end(), BYTE{0},
                         [](BYTE sum, BYTE byte) { return static_cast<BYTE>(sum ^ byte); });
}

// Returns the text before the terminating zero. The span then starts after that zero.
std::string TakeText(std::span<const BYTE>* payload) {
  const auto end = std::find(payload->begin(), payload->end(), BYTE{0});
  std::string text(payload->begin(), end);
  *payload = payload->subspan(std::min(payload->size(), text.size() + 1));
  return text;
}

std::uint32_t Crc32(std::span<const BYTE> bytes) {
  std::uint32_t crc = 0xFFFFFFFF;
  for (const BYTE byte : bytes) {
    crc ^= byte;
    for (int bit = 0; bit < 8; ++bit) crc = (crc & 1) != 0 ? (crc >> 1) ^ 0xEDB88320 : crc >> 1;
  }
  return ~crc;
}

}  // namespace

struct AlarmBoard::Request {
  BYTE command;
  std::span<const BYTE> payload;
  bool follows;  // in sequence after the previous command
};

std::string ToText(const AlarmMessage& message) {
  using Type = AlarmMessage::Type;
  switch (message.type) {
    case Type::kSms:
      return "SMS \"" + message.first + "\" \"" + message.text + '"';
    case Type::kMms: {
      char digest[16];
      std::snprintf(digest, sizeof digest, "%08x", Crc32(message.data));
      return "MMS \"" + message.text + "\", " + std::to_string(message.data.size()) + " bytes, CRC-32 " + digest;
    }
    case Type::kCall:
      return "call to " + message.first + ": \"" + message.text + '"';
    case Type::kSpeech:
      return "speech: \"" + message.text + '"';
    case Type::kRelay:
      return "relay " + std::to_string(message.relay) + " set to " + std::to_string(message.relay_state);
  }
  return {};
}

AlarmBoard::AlarmBoard() {
  values().Add({.name = "id", .max_length = 4, .text = "AB01"});
  for (int i = 0; i < 4; ++i) values().Add({.name = "status_" + std::to_string(i), .maximum = 255});
  values().Add({.name = "signal_quality", .maximum = 255, .number = 20, .drift = 3});
  values().Add({.name = "requests", .max_length = 20});
  values().Add({.name = "inputs", .maximum = 0xFFFFFFFF});
  values().Add({.name = "sms_result", .maximum = 255});
  values().Add({.name = "mms_status", .maximum = 255});
}

std::vector<AlarmMessage> AlarmBoard::Outbox() const {
  const std::lock_guard lock(outbox_mutex_);
  return outbox_;
}

std::size_t AlarmBoard::Receive(std::span<const BYTE> received, bool, std::vector<Reply>& replies) {
  if (received.size() < kFrameLength || received[0] != 0xAA) return 0;
  const std::size_t length = received[1] * 256u + received[2];
  if (length > kLongestPayload || received.size() < length + kFrameLength) return 0;

  const std::span frame = received.first(length + kFrameLength);
  const std::span summed = frame.subspan(3, length + 1);
  if (frame[length + 4] != Xor(summed) || frame[length + 5] != 0x55) return frame.size();

  const Request request = {frame[3], frame.subspan(4, length), Follows(frame[3])};
  if (!request.follows) ++out_of_sequence_;
  last_command_ = request.command;

  Bytes payload;
  if (!Answer(request, &payload)) return frame.size();
  const auto payload_length = static_cast<BYTE>(payload.size());
  Bytes reply = {0xAA, 0, payload_length, request.command};
  reply.insert(reply.end(), payload.begin(), payload.end());
  reply.push_back(Xor(std::span(reply).subspan(3)));
  reply.push_back(0x55);
  replies.push_back({std::move(reply)});
  return frame.size();
}

bool AlarmBoard::Follows(BYTE command) const {
  const bool data_may_come = last_command_ == kMmsBegin || last_command_ == kMmsBlock;
  switch (command) {
    case kMmsBlock:
    case kMmsEnd:
      return data_may_come;
    case kMmsSend:
      return last_command_ == kMmsEnd;
    case kDial:
    case kSpeak:
      return last_command_ == kSetText;
    default:
      return !data_may_come && last_command_ != kMmsEnd;
  }
}

// Returns false when the board does not answer.
bool AlarmBoard::Answer(const Request& request, Bytes* payload) {
  std::span<const BYTE> rest = request.payload;
  switch (request.command) {
    case kDeviceId:
    case kRemoteRequests: {
      const bool id = request.command == kDeviceId;
      const std::string text = values().Text(id ? "id" : "requests");
      payload->assign(text.begin(), text.end());
      payload->resize(id ? 4 : 20);
      return true;
    }
    case kStatus:
      for (int i = 0; i < 4; ++i) payload->push_back(Byte("status_" + std::to_string(i)));
      return true;
    case kSignalQuality:
      payload->push_back(Byte("signal_quality"));
      return true;
    case kInputs: {
      const auto inputs = static_cast<std::uint32_t>(values().Scaled("inputs", 1));
      for (int shift = 0; shift < 32; shift += 8) payload->push_back(static_cast<BYTE>(inputs >> shift & 0xFF));
      return true;
    }
    case kClearText:
      speech_.clear();
      return true;
    case kSetText:
      speech_ = TakeText(&rest);
      return true;
    case kSnapshot:
    case kResetGsm:
    case kResetPstn:
      return true;
    case kSms: {
      const std::string first = TakeText(&rest);
      Post({.type = AlarmMessage::Type::kSms, .first = first, .text = TakeText(&rest)});
      payload->push_back(Byte("sms_result"));
      return true;
    }
    case kMmsBegin:
      mms_data_.clear();
      payload->push_back(MmsStatus(true));
      return true;
    case kMmsBlock:
      mms_data_.insert(mms_data_.end(), rest.begin(), rest.end());
      // A block in sequence is acknowledged without payload; a reply with payload is a refusal.
      if (!request.follows) payload->push_back(MmsStatus(false));
      return true;
    case kMmsEnd:
      payload->push_back(MmsStatus(request.follows));
      return true;
    case kMmsSend: {
      const BYTE status = MmsStatus(request.follows);
      if (status == 0) {
        Post({.type = AlarmMessage::Type::kMms, .text = TakeText(&rest), .data = std::exchange(mms_data_, {})});
      }
      payload->push_back(status);
      return true;
    }
    case kDial:
      Post({.type = AlarmMessage::Type::kCall, .first = TakeText(&rest), .text = speech_});
      return true;
    case kSpeak:
      Post({.type = AlarmMessage::Type::kSpeech, .text = speech_});
      return true;
    case kRelay:
      if (rest.size() != 2) return false;
      Post({.type = AlarmMessage::Type::kRelay, .relay = rest[0], .relay_state = rest[1]});
      return true;
    default:
      return false;
  }
}

// The board's status for a step of a transfer. A refused step ends the transfer.
BYTE AlarmBoard::MmsStatus(bool follows) {
  const BYTE status = follows ? Byte("mms_status") : kRefused;
  if (status != 0) last_command_ = 0;
  return status;
}

void AlarmBoard::Post(AlarmMessage message) {
  if (listener_) listener_(message);
  const std::lock_guard lock(outbox_mutex_);
  if (outbox_.size() == kOutboxSize) outbox_.erase(outbox_.begin());
  outbox_.push_back(std::move(message));
}

BYTE AlarmBoard::Byte(std::string_view name) { return static_cast<BYTE>(values().Scaled(name, 1)); }

}  // namespace fieldline::sim
