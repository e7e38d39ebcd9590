#include "sim/devices/imaging/camera.h"

namespace fieldline::sim {
namespace {

constexpr BYTE kCommandMark = 0x56;
constexpr BYTE kReplyMark = 0x76;
constexpr BYTE kNumber = 0x00;
constexpr std::size_t kHeadLength = 4;

constexpr BYTE kReset = 0x26;
constexpr BYTE kWriteRegister = 0x31;
constexpr BYTE kReadFrame = 0x32;
constexpr BYTE kGetLength = 0x34;
constexpr BYTE kControlFrame = 0x36;

constexpr BYTE kUnknownCommand = 1;
constexpr BYTE kWrongLength = 2;
constexpr BYTE kWrongData = 3;
constexpr BYTE kNotNow = 4;

Bytes Head(BYTE command, BYTE status) { return {kReplyMark, kNumber, command, status, 0}; }

std::size_t Number(std::span<const BYTE> bytes) {
  std::size_t number = 0;
  for (const BYTE byte : bytes) number = number << 8 | byte;
  return number;
}

}  // namespace

Camera::Camera() { values().Add({.name = "compression", .maximum = 255, .number = 0x36, .read_only = true}); }

std::size_t Camera::Receive(std::span<const BYTE> received, bool, std::vector<Reply>& replies) {
  if (received.size() < kHeadLength || received[0] != kCommandMark || received[1] != kNumber) return 0;
  const std::size_t length = kHeadLength + received[3];
  if (received.size() < length) return 0;
  replies.push_back({Answer(received[2], received.subspan(kHeadLength, received[3]))});
  return length;
}

Bytes Camera::Answer(BYTE command, std::span<const BYTE> data) {
  switch (command) {
    case kReset:
      frame_.clear();
      return {kReplyMark, kNumber, kReset, 0};
    case kControlFrame:
      return ControlFrame(data);
    case kWriteRegister:
      return WriteRegister(data);
    case kGetLength:
      return FrameLength(data);
    case kReadFrame:
      return ReadFrame(data);
    default:
      return Head(command, kUnknownCommand);
  }
}

// 0: freeze the frame; 3: resume updates.
Bytes Camera::ControlFrame(std::span<const BYTE> data) {
  if (data.size() != 1) return Head(kControlFrame, kWrongLength);
  if (data[0] == 0) {
    frame_ = TakePicture();
  } else if (data[0] == 3) {
    frame_.clear();
  } else {
    return Head(kControlFrame, kWrongData);
  }
  return Head(kControlFrame, 0);
}

// Writes one byte to register 0x1204.
Bytes Camera::WriteRegister(std::span<const BYTE> data) {
  if (data.size() != 5) return Head(kWriteRegister, kWrongLength);
  if (Number(data.first(4)) != 0x01011204) return Head(kWriteRegister, kWrongData);
  values().PutNumber("compression", data[4]);
  return Head(kWriteRegister, 0);
}

Bytes Camera::FrameLength(std::span<const BYTE> data) const {
  if (data.size() != 1) return Head(kGetLength, kWrongLength);
  if (data[0] != 0) return Head(kGetLength, kWrongData);
  if (frame_.empty()) return Head(kGetLength, kNotNow);
  return {kReplyMark,
          kNumber,
          kGetLength,
          0,
          4,
          0,
          0,
          static_cast<BYTE>(frame_.size() >> 8),
          static_cast<BYTE>(frame_.size() & 0xFF)};
}

// The data: frame 0, transfer mode 0A, first byte, number of bytes, and the pause before them in 0.01 ms, which is
// ignored.
Bytes Camera::ReadFrame(std::span<const BYTE> data) const {
  if (data.size() != 12) return Head(kReadFrame, kWrongLength);
  if (frame_.empty()) return Head(kReadFrame, kNotNow);
  const std::size_t first = Number(data.subspan(2, 4));
  const std::size_t count = Number(data.subspan(6, 4));
  if (data[0] != 0 || data[1] != 0x0A || first > frame_.size() || count > frame_.size() - first) {
    return Head(kReadFrame, kWrongData);
  }
  Bytes reply = Head(kReadFrame, 0);
  const auto picture = std::span(frame_).subspan(first, count);
  reply.insert(reply.end(), picture.begin(), picture.end());
  const Bytes trailer = Head(kReadFrame, 0);
  reply.insert(reply.end(), trailer.begin(), trailer.end());
  return reply;
}

}  // namespace fieldline::sim
