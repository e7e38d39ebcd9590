#include "polling/protocol/modbus_rtu.h"

#include <algorithm>

#include "fieldline/sensor/modbus.h"
#include "polling/protocol/wording.h"
#include "polling/text.h"

namespace fieldline {
namespace {

constexpr BYTE kException = 0x80;  // set in the function of a reply that refuses the request
constexpr std::size_t kExceptionLength = 5;
constexpr std::size_t kCountPosition = 4;  // of a request

constexpr CodeName kFunctions[] = {
    {1,  "read coils"              },
    {2,  "read discrete inputs"    },
    {3,  "read holding registers"  },
    {4,  "read input registers"    },
    {5,  "write single coil"       },
    {6,  "write single register"   },
    {15, "write multiple coils"    },
    {16, "write multiple registers"},
};

constexpr CodeName kExceptions[] = {
    {1,  "illegal function"              },
    {2,  "illegal data address"          },
    {3,  "illegal data value"            },
    {4,  "device failure"                },
    {5,  "acknowledge"                   },
    {6,  "device busy"                   },
    {7,  "negative acknowledge"          },
    {8,  "memory parity error"           },
    {10, "gateway path unavailable"      },
    {11, "gateway target did not respond"},
};

bool IsRead(BYTE function) { return function >= kReadCoils && function <= kReadInputRegisters; }

// Reply length according to its byte count. Three bytes must be there.
std::size_t AnnouncedLength(ByteSpan reply) { return std::size_t{reply[2]} + kModbusHeadLength + kModbusCrcLength; }

bool IsRequest(ByteSpan request) { return request.size() == kModbusRequestLength && IsRead(request[1]); }

std::size_t StandardLength(ByteSpan request) {
  if (!IsRequest(request)) return 0;
  const int count = GetWordBE(&request[kCountPosition]);
  const bool registers = request[1] >= kReadHoldingRegisters;
  return static_cast<std::size_t>(registers ? RegisterReplyLength(count) : BitReplyLength(count));
}

std::string CrcVerdict(ByteSpan frame) {
  const std::optional<bool> good = HasModbusCrc(frame);
  return good ? Verdict("CRC", *good) : "";
}

std::string Function(BYTE function) {
  return "function " + std::to_string(function) + " (" + std::string(NameOf(kFunctions, function)) + ")";
}

std::string ExceptionText(BYTE exception) {
  return std::to_string(exception) + " (" + std::string(NameOf(kExceptions, exception)) + ")";
}

std::string DescribeModbusRequest(ByteSpan request) {
  std::string text = "device " + std::to_string(request[0]) + ": " + Function(request[1]);
  if (IsRequest(request)) {
    text += " from " + std::to_string(GetWordBE(&request[2])) + ", count " +
            std::to_string(GetWordBE(&request[kCountPosition]));
  }
  return text + CrcVerdict(request);
}

std::string DescribeModbusReply(ByteSpan request, ByteSpan reply) {
  if (reply.size() < kExceptionLength) return {};
  if (std::equal(request.begin(), request.end(), reply.begin(), reply.end())) return "the request again";
  const std::string device = "device " + std::to_string(reply[0]) + ": ";
  const BYTE function = reply[1];
  if ((function & kException) != 0) {
    return device + Function(static_cast<BYTE>(function & ~kException)) + ", exception " + ExceptionText(reply[2]) +
           CrcVerdict(reply.first(kExceptionLength));
  }
  if (!IsRead(function)) return device + Function(function) + CrcVerdict(reply);
  const std::size_t announced = AnnouncedLength(reply);
  if (reply.size() < announced) return {};
  std::string text =
      device + Function(function) + ", " + Counted(reply[2], "byte") + CrcVerdict(reply.first(announced));
  if (reply.size() > announced) text += ", then " + Counted(reply.size() - announced, "more byte");
  return text;
}

// The correct CRC over all but the last two bytes, in the order of the wire.
std::string CrcThatBelongs(ByteSpan frame) {
  const WORD crc = CRC16(frame.data(), static_cast<BYTE>((frame.size() - kModbusCrcLength) & 0xFF));
  return HexOf(static_cast<BYTE>(crc & 0xFF)) + ' ' + HexOf(static_cast<BYTE>(crc >> 8));
}

ReplyFault FindFault(ByteSpan request, ByteSpan reply) {
  if (request.size() != kModbusRequestLength) return Refused(reply);
  const auto is_sound = [&](std::size_t length) {
    return reply.size() >= length && HasModbusCrc(reply.first(length)).value_or(false);
  };
  const BYTE function = request[1];
  if (reply.size() >= kExceptionLength && reply[1] == (function | kException) && is_sound(kExceptionLength)) {
    return {"modbus_exception", "the device refuses the request with exception " + ExceptionText(reply[2])};
  }

  // Some devices answer with fewer bytes than the standard requires. Then their byte count gives the length.
  std::size_t expected = StandardLength(request);
  if (reply.size() >= kModbusHeadLength && reply[1] == function) {
    const std::size_t announced = AnnouncedLength(reply);
    if (is_sound(announced)) return WrongLength(announced);
    expected = std::min(expected, announced);
  }
  if (reply.size() < expected) return ShortReply(reply.size(), expected);
  return WrongChecksum(Hex(reply.last(kModbusCrcLength)), CrcThatBelongs(reply));
}

// Length of the reply that begins here, 0 when none does. Three bytes must be there.
std::size_t LengthOfReplyAt(ByteSpan bytes) {
  if (!IsRead(static_cast<BYTE>(bytes[1] & ~kException))) return 0;
  return (bytes[1] & kException) != 0 ? kExceptionLength : AnnouncedLength(bytes);
}

std::optional<FoundFrame> FindFrame(ByteSpan request, ByteSpan received, bool no_more) {
  for (std::size_t begin = 0; begin + kModbusHeadLength <= received.size(); ++begin) {
    const ByteSpan rest = received.subspan(begin);
    const std::size_t length = LengthOfReplyAt(rest);
    if (length == 0) continue;
    if (rest.size() >= length) {
      if (HasModbusCrc(rest.first(length)).value_or(false)) return FoundFrame{begin, length};
    } else if (!no_more && (begin == 0 || rest[0] == request[0])) {
      return std::nullopt;
    }
  }
  return std::nullopt;
}

std::string Mismatch(ByteSpan request, ByteSpan reply, bool any_address) {
  if (request.size() < 2 || reply.size() < 2) return {};
  if (!any_address && reply[0] != request[0]) return OtherDevice(reply[0], request[0]);
  const auto function = static_cast<BYTE>(reply[1] & ~kException);
  if (function == request[1]) return {};
  return "device " + std::to_string(reply[0]) + " answered " + Function(function) + ", not " + Function(request[1]);
}

// Whether the CRC is correct, either right after the data announced by the byte count or at the end.
bool IsSound(ByteSpan reply) {
  if (HasModbusCrc(reply).value_or(false)) return true;
  if (reply.size() < kModbusHeadLength) return false;
  const std::size_t length = LengthOfReplyAt(reply);
  return length != 0 && reply.size() >= length && HasModbusCrc(reply.first(length)).value_or(false);
}

std::string StepName(ByteSpan request) {
  if (!IsRequest(request)) return "request";
  return std::string(NameOf(kFunctions, request[1])).substr(std::string_view("read ").size()) + " from " +
         std::to_string(GetWordBE(&request[2]));
}

std::optional<int> ReplyAddress(ByteSpan reply) { return reply.empty() ? std::nullopt : std::optional<int>(reply[0]); }

}  // namespace

std::optional<bool> HasModbusCrc(ByteSpan frame) {
  constexpr std::size_t kMostCovered = 255;
  const std::size_t least = 2 + kModbusCrcLength;
  if (frame.size() < least || frame.size() - kModbusCrcLength > kMostCovered) return std::nullopt;
  const std::size_t covered = frame.size() - kModbusCrcLength;
  return CRC16(frame.data(), static_cast<BYTE>(covered)) == GetWordLE(&frame[covered]);
}

const WireProtocol kModbusRtu = {
    .is_request = IsRequest,
    .describe_request = DescribeModbusRequest,
    .describe_reply = DescribeModbusReply,
    .find_fault = FindFault,
    .find_frame = FindFrame,
    .mismatch = Mismatch,
    .is_sound = IsSound,
    .step_name = StepName,
    .reply_address = ReplyAddress,
    .needs_clean_line = false,
    .standard_length = StandardLength,
};

}  // namespace fieldline
