#include "tools/dissect.h"

#include <algorithm>
#include <optional>
#include <string_view>

#include "fieldline/alarm/alarm_link.h"
#include "fieldline/drivers/ascii/hex_frame.h"
#include "fieldline/sensor/modbus.h"
#include "tools/protocol_names.h"
#include "tools/text.h"

namespace fieldline::tool {
namespace {

using ByteSpan = std::span<const BYTE>;

enum class Format { kUnknown, kModbus, kDualFrame, kQ1, kHexAscii, kCamera, kCamera3ge, kAlarm, kDisplay };

std::string Hex(BYTE byte) { return tool::Hex({&byte, 1}); }

std::string Hex(WORD word) { return Hex(static_cast<BYTE>(word >> 8)) + Hex(static_cast<BYTE>(word & 0xFF)); }

std::string Count(std::size_t number, std::string_view what) {
  return std::to_string(number) + ' ' + std::string(what) + (number == 1 ? "" : "s");
}

std::string Verdict(std::string_view checksum, bool good) {
  return ", " + std::string(checksum) + (good ? " good" : " BAD");
}

std::string Quoted(ByteSpan text) {
  std::string quoted = "\"";
  for (const BYTE c : text) quoted += c >= 0x20 && c < 0x7F ? static_cast<char>(c) : '.';
  return quoted + '"';
}

bool Equals(ByteSpan bytes, std::string_view text) {
  return std::equal(bytes.begin(), bytes.end(), text.begin(), text.end());
}

// Modbus RTU. Nothing when the frame is longer than the library's CRC covers.
std::optional<bool> HasCrc(ByteSpan frame) {
  constexpr std::size_t kMostCovered = 255;
  if (frame.size() < 4 || frame.size() - 2 > kMostCovered) return std::nullopt;
  return CRC16(frame.data(), static_cast<BYTE>(frame.size() - 2)) == GetWordLE(frame.data() + frame.size() - 2);
}

std::string CrcVerdict(ByteSpan frame) {
  const std::optional<bool> good = HasCrc(frame);
  return good ? Verdict("CRC", *good) : "";
}

std::string Function(BYTE function) {
  return "function " + std::to_string(function) + " (" + std::string(ModbusFunctionName(function)) + ")";
}

std::string ModbusRequest(ByteSpan request) {
  std::string text = "device " + std::to_string(request[0]) + ": " + Function(request[1]);
  if (request.size() == 8 && request[1] >= kReadCoils && request[1] <= kReadInputRegisters) {
    text += " from " + std::to_string(GetWordBE(&request[2])) + ", count " + std::to_string(GetWordBE(&request[4]));
  }
  return text + CrcVerdict(request);
}

std::string ModbusReply(ByteSpan request, ByteSpan reply) {
  constexpr BYTE kException = 0x80;
  constexpr std::size_t kExceptionLength = 5;
  if (reply.size() < kExceptionLength) return {};
  if (std::equal(request.begin(), request.end(), reply.begin(), reply.end())) return "the request again";
  const std::string device = "device " + std::to_string(reply[0]) + ": ";
  const BYTE function = reply[1];
  if ((function & kException) != 0) {
    return device + Function(static_cast<BYTE>(function & ~kException)) + ", exception " + std::to_string(reply[2]) +
           " (" + std::string(ModbusExceptionName(reply[2])) + ")" + CrcVerdict(reply.first(kExceptionLength));
  }
  if (function < kReadCoils || function > kReadInputRegisters) return device + Function(function) + CrcVerdict(reply);
  const std::size_t announced = kModbusHeadLength + reply[2] + std::size_t{kModbusCrcLength};
  if (reply.size() < announced) return {};
  std::string text = device + Function(function) + ", " + Count(reply[2], "byte") + CrcVerdict(reply.first(announced));
  if (reply.size() > announced) text += ", then " + Count(reply.size() - announced, "more byte");
  return text;
}

// Odd addresses of the dual-protocol unit.
std::string DualFrameRequest(ByteSpan request) {
  const int sum = request[0] + request[1] + request[2];
  return "unit " + std::to_string(request[0]) + ": all values" +
         Verdict("checksum", GetWordLE(&request[3]) == (-sum & 0xFFFF));
}

std::string DualFrameReply(ByteSpan reply) {
  constexpr std::size_t kHead = 3;
  if (reply.size() < kHead || reply.size() < kHead + reply[2]) return {};
  return "unit: " + Count(reply[2], "byte") + " of values";
}

std::string Q1Request(ByteSpan request) {
  const std::string_view name = request[0] == 'Q' ? "status" : request[0] == 'I' ? "identification" : "ratings";
  return Quoted(request.first(request.size() - 1)) + ": " + std::string(name);
}

std::string TextLine(ByteSpan reply) {
  return reply.back() == '\r' ? Quoted(reply.first(reply.size() - 1)) : std::string();
}

// `cid2` tells a request's command code from a reply's return code.
std::string HexAscii(ByteSpan frame, bool request) {
  const std::size_t size = frame.size();
  if (size < static_cast<std::size_t>(FrameLength(0)) || frame.back() != kEoi) return {};
  const auto byte_at = [&](int position) { return GetHexByte(frame.data() + position); };
  const BYTE code = byte_at(kRtnPosition);
  const WORD length = GetHexWord(frame.data() + kLengthPosition);
  const WORD lenid = length & 0xFFF;
  const std::size_t checksum_position = size - kTrailLength;
  const WORD checksum = GetFrameChecksum(&frame[1], static_cast<int>(checksum_position) - 1);
  return "device " + std::to_string(byte_at(3)) + ": VER " + Hex(byte_at(1)) + ", CID1 " + Hex(byte_at(5)) +
         (request ? ", CID2 " : ", RTN ") + Hex(code) + " (" +
         std::string(request ? HexAsciiCommandName(code) : HexAsciiReturnName(code)) + "), LENID " +
         std::to_string(lenid) + (GetLengthWord(lenid) == length ? "" : " with a BAD check nibble") +
         Verdict("CHKSUM", GetHexWord(&frame[checksum_position]) == checksum);
}

std::string CameraRequest(ByteSpan request) {
  const BYTE command = request[2];
  std::string text(CameraCommandName(command));
  if (command == 0x36 && request.size() >= 5) text += request[4] == 3 ? ": resume" : ": freeze";
  if (command == 0x31 && request.size() >= 9) {
    text += " " + Hex(GetWordBE(&request[6])) + " = " + Hex(request[8]);
  }
  if (command == 0x32 && request.size() >= 14) text += ", " + Count(GetWordBE(&request[12]), "byte");
  return text;
}

std::string CameraReply(ByteSpan reply) {
  if (reply.size() < 4 || reply[0] != 0x76) return {};
  std::string text = std::string(CameraCommandName(reply[2])) + ": ";
  if (reply[3] != 0) return text + "refused with status " + std::to_string(reply[3]);
  if (reply[2] == 0x34 && reply.size() >= 9) return text + Count(GetDwordBE(&reply[5]), "byte");
  if (reply[2] == 0x32) return text + Count(reply.size(), "byte") + " with head and trailer";
  return text + "done";
}

std::string Camera3geReply(ByteSpan reply) {
  constexpr std::size_t kAcknowledged = 3;
  constexpr std::size_t kAnnounced = 7;
  if (reply.size() == kAcknowledged) return Quoted(reply) + ": acknowledged";
  if (reply.size() != kAnnounced) return {};
  return Quoted(reply.subspan(kAcknowledged, 2)) + ": a picture of " + Count(GetWordLE(&reply[5]), "byte");
}

// AA, length, command, payload, checksum, 55; the same in both directions.
std::string Alarm(ByteSpan frame) {
  constexpr std::size_t kOverhead = 6;
  if (frame.size() < kOverhead) return {};
  const std::size_t payload = GetWordBE(&frame[1]);
  if (frame.size() < payload + kOverhead) return {};
  const BYTE checksum = alm_xor_sum(&frame[3], static_cast<std::int16_t>(payload + 1));
  return "command " + Hex(frame[3]) + " (" + std::string(AlarmCommandName(frame[3])) + "), " + Count(payload, "byte") +
         Verdict("checksum", frame[4 + payload] == checksum);
}

std::string Display(ByteSpan request) {
  if (request.size() == 8 && request[3] == 0x82) {
    return "variable " + Hex(GetWordBE(&request[4])) + " = " + std::to_string(GetWordBE(&request[6]));
  }
  if (request.size() == 7 && request[4] == 0x03) return "page " + std::to_string(GetWordBE(&request[5]));
  if (request.size() == 13 && request[4] == 0x1F) {
    const std::string clock = tool::Hex(request.subspan(6));
    return "clock " + clock;
  }
  return "command " + Hex(request[3]);
}

// A right checksum decides before a start mark, which may be a device's address.
Format Recognise(ByteSpan request) {
  const std::size_t size = request.size();
  if (HasCrc(request).value_or(false)) return Format::kModbus;
  if (Equals(request, "Q1\r") || Equals(request, "I\r") || Equals(request, "F\r")) return Format::kQ1;
  if (Equals(request, "UG3#")) return Format::kCamera3ge;
  if (size == 5 && request[1] == 1 && request[2] == 2) return Format::kDualFrame;
  if (size >= 18 && (request[0] == '~' || request[0] == 0x7F) && request[size - 1] == kEoi) return Format::kHexAscii;
  if (size >= 6 && request[0] == 0xAA && request[size - 1] == 0x55) return Format::kAlarm;
  if (size >= 4 && request[0] == 0xA5 && request[1] == 0x5A) return Format::kDisplay;
  if (size >= 4 && request[0] == 0x56) return Format::kCamera;
  if (size == kModbusRequestLength && request[1] >= kReadCoils && request[1] <= kReadInputRegisters) {
    return Format::kModbus;
  }
  return Format::kUnknown;
}

}  // namespace

std::string DescribeRequest(ByteSpan request) {
  switch (Recognise(request)) {
    case Format::kModbus:
      return ModbusRequest(request);
    case Format::kDualFrame:
      return DualFrameRequest(request);
    case Format::kQ1:
      return Q1Request(request);
    case Format::kHexAscii:
      return HexAscii(request, true);
    case Format::kCamera:
      return CameraRequest(request);
    case Format::kCamera3ge:
      return "\"UG3#\": take a picture";
    case Format::kAlarm:
      return Alarm(request);
    case Format::kDisplay:
      return Display(request);
    case Format::kUnknown:
      return {};
  }
  return {};
}

std::string DescribeReply(ByteSpan request, ByteSpan reply) {
  if (reply.empty()) return {};
  switch (Recognise(request)) {
    case Format::kModbus:
      return ModbusReply(request, reply);
    case Format::kDualFrame:
      return DualFrameReply(reply);
    case Format::kQ1:
      return TextLine(reply);
    case Format::kHexAscii:
      return HexAscii(reply, false);
    case Format::kCamera:
      return CameraReply(reply);
    case Format::kCamera3ge:
      return Camera3geReply(reply);
    case Format::kAlarm:
      return Alarm(reply);
    case Format::kDisplay:
    case Format::kUnknown:
      return {};
  }
  return {};
}

}  // namespace fieldline::tool
