#include "tools/diagnosis.h"

#include <algorithm>

#include "fieldline/platform/serial_device.h"
#include "fieldline/sensor/modbus.h"
#include "tools/text.h"

namespace fieldline::tool {
namespace {

Failure LineFailure(std::string_view code, std::string message) {
  return {ExitCode::kNoLine, code, std::move(message)};
}

Failure Refused(std::string_view code, std::string message) {
  return {ExitCode::kRefusedReply, code, std::move(message)};
}

std::string_view ExceptionName(BYTE exception) {
  constexpr std::string_view kNames[] = {
      "",
      "illegal function",
      "illegal data address",
      "illegal data value",
      "device failure",
      "acknowledge",
      "device busy",
      "negative acknowledge",
      "memory parity error",
      "",
      "gateway path unavailable",
      "gateway target did not respond",
  };
  return exception < std::size(kNames) && !kNames[exception].empty() ? kNames[exception] : "unknown";
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

Failure DiagnoseModbus(const Bytes& request, const Bytes& reply) {
  constexpr std::size_t kExceptionLength = 5;
  const std::string came = std::to_string(reply.size());
  const BYTE function = request[1];
  if (reply.size() >= kExceptionLength && reply[1] == (function | 0x80) && HasModbusCrc(reply, kExceptionLength)) {
    return Refused("modbus_exception", "the device refuses the request with exception " + std::to_string(reply[2]) +
                                           " (" + std::string(ExceptionName(reply[2])) + ")");
  }

  // Some devices answer in fewer bytes than the standard; then their own byte count tells.
  std::size_t expected = ModbusReplyLength(request);
  if (reply.size() >= kModbusHeadLength && reply[1] == function) {
    const auto announced = static_cast<std::size_t>(kModbusHeadLength + reply[2] + kModbusCrcLength);
    if (HasModbusCrc(reply, announced)) {
      return Refused("reply_length", "a whole reply of " + std::to_string(announced) +
                                         " bytes came, which is not the length that this kind of device sends");
    }
    expected = std::min(expected, announced);
  }
  if (reply.size() < expected) {
    return Refused("short_reply", came + " of " + std::to_string(expected) + " bytes came");
  }
  const std::size_t covered = reply.size() - kModbusCrcLength;
  return Refused("checksum", "the checksum is wrong: " + Hex(std::span(reply).subspan(covered)) + " came, " +
                                 Hex(ModbusCrc(reply, covered)) + " belongs to the " + std::to_string(covered) +
                                 " bytes before it");
}

Failure DiagnoseReply(const Kind& kind, int address, const Bytes& request, const Bytes& reply) {
  if (reply.size() >= request.size() && std::equal(request.begin(), request.end(), reply.begin())) {
    return Refused("echo",
                   "the request came back as the reply: the adapter or the line echoes what is sent, "
                   "or receive is wired to transmit");
  }
  const bool modbus = kind.protocol == Protocol::kModbus || (kind.protocol == Protocol::kDual && address % 2 == 0);
  if (modbus && request.size() == kModbusRequestLength) return DiagnoseModbus(request, reply);
  return Refused("reply_refused", "the reply was refused: " + Hex(reply, 32));
}

std::string Milliseconds(std::chrono::steady_clock::duration time) {
  return std::to_string(std::chrono::round<std::chrono::milliseconds>(time).count()) + " ms";
}

}  // namespace

Failure DiagnoseOpen(ISerBase& port, const Line& line) {
  if (port.IsOpened() != 0) {
    return LineFailure("line_settings", line.shown + ": the line opens, but can't be set to this speed and format");
  }
  SerialDevice device;
  const SerialDevice::OpenResult result = device.Open(line.device.c_str());
  device.Close();
  switch (result) {
    case SerialDevice::OpenResult::kNoSuchDevice:
      return LineFailure("line_absent",
                         line.shown + ": there is no such device; is it plugged in, and its path right?");
    case SerialDevice::OpenResult::kInUse:
      return LineFailure("line_in_use", line.shown + ": another program has the line open");
    case SerialDevice::OpenResult::kNotPermitted:
      return LineFailure("line_not_permitted", line.shown + ": you may not open it; the group dialout usually may");
    case SerialDevice::OpenResult::kNotSerial:
      return LineFailure("line_not_serial", line.shown + ": this is no serial line");
    default:
      return LineFailure("line_failed", line.shown + ": the line can't be opened");
  }
}

Failure DiagnosePoll(const Kind& kind, int address, ISerBase* port, const std::vector<Exchange>& exchanges,
                     std::chrono::steady_clock::time_point ended) {
  if (kind.protocol == Protocol::kLocal) {
    return LineFailure("input_device", "the input device EIO1: can't be read; --map EIO1=PATH names another one");
  }
  const Exchange last = exchanges.empty() ? Exchange{} : exchanges.back();
  Failure failure;
  // What is left of a refused reply must not meet the next poll; a line that is gone can't be purged.
  if (port->Purge() == 0) {
    failure = LineFailure("line_gone", "the line vanished: was the adapter unplugged?");
  } else if (last.request.empty()) {
    failure = LineFailure("not_sent", "the request could not be sent");
  } else if (last.reply.empty()) {
    failure = {ExitCode::kNoAnswer, "no_answer", "nothing answered within " + Milliseconds(ended - last.sent_at)};
  } else {
    failure = DiagnoseReply(kind, address, last.request, last.reply);
  }
  failure.request = last.request;
  failure.reply = last.reply;
  return failure;
}

}  // namespace fieldline::tool
