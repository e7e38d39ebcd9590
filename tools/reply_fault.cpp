#include "tools/reply_fault.h"

#include <algorithm>
#include <optional>

#include "fieldline/alarm/alarm_link.h"
#include "fieldline/drivers/ascii/hex_frame.h"
#include "fieldline/sensor/modbus.h"
#include "tools/protocol_names.h"

namespace fieldline::tool {
namespace {

std::string Count(std::size_t number) { return std::to_string(number); }

ReplyFault ShortReply(std::size_t came, std::size_t expected) {
  return {"short_reply", Count(came) + " of " + Count(expected) + " bytes came"};
}

ReplyFault WrongLength(std::size_t came) {
  return {"reply_length", "a whole reply of " + Count(came) + " bytes came, but not what this kind of device sends"};
}

ReplyFault WrongChecksum(const std::string& came, const std::string& belongs) {
  return {"checksum", "the checksum is wrong: " + came + " came where " + belongs + " belongs"};
}

// CRC of the first `covered` bytes, as it goes on the wire behind them.
Bytes ModbusCrc(const Bytes& frame, std::size_t covered) {
  const WORD crc = CRC16(frame.data(), static_cast<BYTE>(covered & 0xFF));
  return {static_cast<BYTE>(crc & 0xFF), static_cast<BYTE>(crc >> 8)};
}

bool HasModbusCrc(const Bytes& frame, std::size_t length) {
  if (frame.size() < length) return false;
  const Bytes crc = ModbusCrc(frame, length - kModbusCrcLength);
  return std::equal(crc.begin(), crc.end(), frame.begin() + static_cast<std::ptrdiff_t>(length) - kModbusCrcLength);
}

// The length of a standard reply to a read request.
std::size_t ModbusReplyLength(const Bytes& request) {
  const int count = GetWordBE(request.data() + 4);
  const bool bits = request[1] == kReadCoils || request[1] == kReadDiscreteInputs;
  return static_cast<std::size_t>(bits ? BitReplyLength(count) : RegisterReplyLength(count));
}

ReplyFault FindModbusFault(const Bytes& request, const Bytes& reply) {
  constexpr std::size_t kExceptionLength = 5;
  const BYTE function = request[1];
  if (reply.size() >= kExceptionLength && reply[1] == (function | 0x80) && HasModbusCrc(reply, kExceptionLength)) {
    return {"modbus_exception", "the device refuses the request with exception " + Count(reply[2]) + " (" +
                                    std::string(ModbusExceptionName(reply[2])) + ")"};
  }

  // Some devices answer in fewer bytes than the standard; then their own byte count tells.
  std::size_t expected = ModbusReplyLength(request);
  if (reply.size() >= kModbusHeadLength && reply[1] == function) {
    const auto announced = static_cast<std::size_t>(kModbusHeadLength + reply[2] + kModbusCrcLength);
    if (HasModbusCrc(reply, announced)) return WrongLength(announced);
    expected = std::min(expected, announced);
  }
  if (reply.size() < expected) return ShortReply(reply.size(), expected);
  const std::size_t covered = reply.size() - kModbusCrcLength;
  return WrongChecksum(Hex(std::span(reply).subspan(covered)), Hex(ModbusCrc(reply, covered)));
}

ReplyFault FindHexAsciiFault(const Bytes& request, const Bytes& reply) {
  constexpr std::size_t kShortest = FrameLength(0);
  const std::size_t size = reply.size();
  if (reply.front() != request.front()) {
    return {"reply_start", "the reply begins with " + Hex(reply, 1) + " and not with " + Hex(request, 1)};
  }
  if (size < kShortest) return ShortReply(size, kShortest);

  const BYTE return_code = GetHexByte(reply.data() + kRtnPosition);
  if (return_code != 0) {
    return {"device_refused", "the device refuses the command with return code " + Hex({&return_code, 1}) + " (" +
                                  std::string(HexAsciiReturnName(return_code)) + ")"};
  }
  const int lenid = GetHexWord(reply.data() + kLengthPosition) & 0xFFF;
  const auto announced = static_cast<std::size_t>(FrameLength(lenid));
  if (size < announced) return ShortReply(size, announced);

  const WORD checksum = GetFrameChecksum(reply.data() + 1, static_cast<int>(size) - kTrailLength - 1);
  const BYTE bytes[] = {static_cast<BYTE>(checksum >> 8), static_cast<BYTE>(checksum & 0xFF)};
  const std::string belongs = {static_cast<char>(GetHexHigh(bytes[0])), static_cast<char>(GetHexLow(bytes[0])),
                               static_cast<char>(GetHexHigh(bytes[1])), static_cast<char>(GetHexLow(bytes[1]))};
  const auto trail = reply.end() - kTrailLength;
  const std::string came(trail, trail + 4);
  if (came != belongs) return WrongChecksum(came, belongs);
  return WrongLength(size);
}

ReplyFault FindQ1Fault(const Bytes& reply) {
  if (reply.back() != '\r') return {"short_reply", Count(reply.size()) + " bytes came without the carriage return"};
  return {"reply_format",
          "the reply is not what the command asks for: \"" + std::string(reply.begin(), reply.end() - 1) + "\""};
}

// 76, camera, command, status, length, data.
std::optional<ReplyFault> FindCameraFault(const Bytes& request, const Bytes& reply) {
  constexpr BYTE kReadFrame = 0x32;
  constexpr BYTE kGetLength = 0x34;
  constexpr std::size_t kStatusPosition = 3;
  constexpr std::size_t kLengthPosition = 5;
  constexpr std::size_t kShortestCommand = 4;
  if (request.size() < kShortestCommand) return std::nullopt;
  const BYTE command = request[2];
  const bool matches = reply.size() > kStatusPosition && reply[0] == 0x76 && reply[2] == command;
  if (!matches) return std::nullopt;

  if (const BYTE status = reply[kStatusPosition]; status != 0) {
    return ReplyFault{"device_refused", "the camera refuses the command \"" + std::string(CameraCommandName(command)) +
                                            "\" with status " + Count(status)};
  }
  if (command == kGetLength && reply.size() >= kLengthPosition + 4) {
    return ReplyFault{"picture_size", "the camera's picture has " + Count(GetDwordBE(reply.data() + kLengthPosition)) +
                                          " bytes; at most 65535 can be taken"};
  }
  if (command == kReadFrame && request.size() == 16) {
    constexpr std::size_t kHeadAndTrailer = 10;
    const std::size_t expected = GetWordBE(request.data() + 12) + kHeadAndTrailer;
    if (reply.size() < expected) return ShortReply(reply.size(), expected);
  }
  return std::nullopt;
}

// AA, length, command, payload, checksum, 55.
ReplyFault FindAlarmFault(const Bytes& request, const Bytes& reply) {
  constexpr std::size_t kFrameOverhead = 6;
  constexpr std::size_t kMostPayload = 29;
  const std::size_t size = reply.size();
  if (size < 3) return ShortReply(size, kFrameOverhead);
  const auto payload = static_cast<std::size_t>(GetWordBE(reply.data() + 1));
  if (payload > kMostPayload) return {"reply_length", "the reply announces " + Count(payload) + " bytes of payload"};
  if (size < payload + kFrameOverhead) return ShortReply(size, payload + kFrameOverhead);

  const BYTE command = reply[3];
  if (command != request[3]) {
    return {"reply_command", "the reply is to command " + Hex({&command, 1}) + " and not to " + Hex({&request[3], 1})};
  }
  const BYTE checksum = alm_xor_sum(reply.data() + 3, static_cast<std::int16_t>(payload + 1));
  if (reply[4 + payload] != checksum) return WrongChecksum(Hex({&reply[4 + payload], 1}), Hex({&checksum, 1}));
  const bool has_status = command == 0x12 || command == 0x14 || command == 0x15;
  if (has_status && payload > 0 && reply[4] != 0) {
    return {"device_refused", "the board refuses the MMS with status " + Count(reply[4])};
  }
  return WrongLength(size);
}

}  // namespace

ReplyFault FindReplyFault(const Kind& kind, int address, const Bytes& request, const Bytes& reply) {
  if (reply.size() >= request.size() && std::equal(request.begin(), request.end(), reply.begin())) {
    return {"echo",
            "the request came back as the reply: the adapter echoes what it sends, or receive is wired to transmit"};
  }
  const bool modbus = kind.protocol == Protocol::kModbus || (kind.protocol == Protocol::kDual && address % 2 == 0);
  if (modbus && request.size() == kModbusRequestLength) return FindModbusFault(request, reply);
  if (kind.protocol == Protocol::kHexAscii) return FindHexAsciiFault(request, reply);
  if (kind.protocol == Protocol::kAlarm) return FindAlarmFault(request, reply);
  if (kind.protocol == Protocol::kQ1) return FindQ1Fault(reply);
  if (kind.protocol == Protocol::kVc0706) {
    if (const std::optional<ReplyFault> fault = FindCameraFault(request, reply)) return *fault;
  }
  return {"reply_refused", "the reply was refused: " + Hex(reply, 32)};
}

}  // namespace fieldline::tool
