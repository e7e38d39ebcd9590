#include "polling/diagnosis.h"

#include <utility>

#include "fieldline/platform/serial_device.h"
#include "polling/protocol/protocol.h"

namespace fieldline {
namespace {

Failure LineFailure(std::string_view code, std::string message) {
  return {ExitCode::kNoLine, code, std::move(message)};
}

std::string Milliseconds(std::chrono::steady_clock::duration time) {
  return std::to_string(std::chrono::round<std::chrono::milliseconds>(time).count()) + " ms";
}

}  // namespace

Failure DiagnoseOpen(ISerBase& port, const LineConfig& line) {
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
  if (kind.protocol == Protocol::kInputs) {
    return LineFailure("input_device", "the input device EIO1: can't be read; --map EIO1=PATH names another one");
  }
  const Exchange last = exchanges.empty() ? Exchange{} : exchanges.back();
  Failure failure;
  // What is left of a refused reply must not meet the next poll; a line that is gone can't be purged.
  if (port->Purge() == 0) {
    failure = LineFailure("line_gone", "the line vanished: was the adapter unplugged?");
  } else if (last.request.empty() || kind.protocol == Protocol::kDgus) {
    failure = LineFailure("not_sent", "the request could not be sent");
  } else if (last.reply.empty()) {
    failure = {ExitCode::kNoAnswer, "no_answer", "nothing answered within " + Milliseconds(ended - last.sent_at)};
  } else {
    ReplyFault fault = FindReplyFault(ProtocolOf(kind, address), last.request, last.reply);
    failure = {ExitCode::kRefusedReply, fault.code, std::move(fault.message)};
  }
  failure.request = last.request;
  failure.reply = last.reply;
  return failure;
}

}  // namespace fieldline
