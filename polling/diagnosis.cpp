#include "polling/diagnosis.h"

#include <algorithm>
#include <utility>

#include "fieldline/platform/device_path.h"
#include "fieldline/platform/serial_device.h"
#include "polling/poller.h"

namespace fieldline {
namespace {

Failure LineFailure(std::string_view code, std::string message) {
  return {ExitCode::kNoLine, code, std::move(message)};
}

std::string Milliseconds(std::chrono::steady_clock::duration time) {
  return std::to_string(std::chrono::round<std::chrono::milliseconds>(time).count()) + " ms";
}

// "process 1234", or "another program" when the process is unknown.
std::string Holder(const LineConfig& line) {
  const int process = ProcessThatHolds(line.path.c_str());
  return process != 0 ? "process " + std::to_string(process) : "another program";
}

// A hint for damaged and incomplete replies. Empty when no other process has the line open.
std::string OtherReader(const LineConfig& line) {
  const int process = ProcessThatHolds(line.path.c_str());
  if (process == 0) return {};
  return "; process " + std::to_string(process) + " has the line open too and takes some of its bytes";
}

// "answered 1 of 3: status yes, identification no"
std::string Progress(const Kind& kind, const WireProtocol& protocol, const std::vector<Exchange>& exchanges) {
  std::size_t answered = 0;
  std::string steps;
  for (const Exchange& exchange : exchanges) {
    const bool came = !exchange.reply.empty();
    if (came) ++answered;
    if (!steps.empty()) steps += ", ";
    steps += protocol.step_name(exchange.request) + (came ? " yes" : " no");
  }
  const std::size_t all = std::max<std::size_t>(exchanges.size(), static_cast<std::size_t>(kind.requests));
  return "answered " + std::to_string(answered) + " of " + std::to_string(all) + ": " + steps;
}

}  // namespace

bool IsLineFailure(std::string_view code) {
  return code == "not_sent" || code == "input_device" || (code.starts_with("line_") && code != "line_noise");
}

Failure DiagnoseOpen(ISerBase& port, const LineConfig& line) {
  if (port.IsOpened() != 0) {
    return LineFailure("line_settings", line.shown + ": the line opens, but can't be set to this speed and format");
  }
  SerialDevice device;
  const SerialDevice::OpenResult result = device.Open(line.device.c_str());
  device.Close();
  switch (result) {
    case SerialDevice::OpenResult::kNoSuchDevice:
      return LineFailure("line_absent", line.shown + ": there is no such device; check its path and its plug");
    case SerialDevice::OpenResult::kInUse:
      return LineFailure("line_in_use", line.shown + ": " + Holder(line) + " has the line open");
    case SerialDevice::OpenResult::kNotPermitted:
      return LineFailure("line_not_permitted", line.shown + ": you may not open it; the group dialout usually may");
    case SerialDevice::OpenResult::kNotSerial:
      return LineFailure("line_not_serial", line.shown + ": this is no serial line");
    default:
      return LineFailure("line_failed", line.shown + ": the line can't be opened");
  }
}

Failure DiagnosePoll(const Kind& kind, int address, PolledLine& line, const LineReport& report,
                     std::chrono::steady_clock::time_point ended) {
  const std::vector<Exchange>& exchanges = line.recorder().Exchanges();
  const WireProtocol& protocol = ProtocolOf(kind, address);
  const Exchange last = exchanges.empty() ? Exchange{} : exchanges.back();
  const std::string& shown = line.config().shown;
  Failure failure;
  if (line.port().Purge() == 0) {
    failure = LineFailure("line_gone", shown + ": the line is gone; was the adapter unplugged?");
  } else if (last.request.empty() || kind.protocol == Protocol::kDgus) {
    failure = LineFailure("not_sent", shown + ": the request could not be sent");
  } else if (report.noise) {
    failure = {ExitCode::kRefusedReply, "line_noise",
               shown + ": the line does not fall silent; check bias, termination and earth, and the speed"};
  } else if (!report.mismatch.empty()) {
    failure = {ExitCode::kRefusedReply, "other_device", report.mismatch};
  } else if (!last.reply.empty()) {
    ReplyFault fault = FindReplyFault(protocol, last.request, last.reply);
    failure = {ExitCode::kRefusedReply, fault.code, std::move(fault.message)};
    if (fault.code == "checksum" || fault.code == "short_reply") failure.message += OtherReader(line.config());
  } else if (report.late) {
    failure = {ExitCode::kNoAnswer, "late_reply",
               "the reply came " + std::to_string(report.late->count()) +
                   " ms after the request, after the time-out of " + Milliseconds(ended - last.sent_at) +
                   "; a longer --timeout, or \"timeout\" in the site file, waits for it"};
  } else if (exchanges.size() > 1) {
    failure = {ExitCode::kRefusedReply, "partly_answered", Progress(kind, protocol, exchanges)};
  } else {
    failure = {ExitCode::kNoAnswer, "no_answer", "nothing answered within " + Milliseconds(ended - last.sent_at)};
  }
  failure.request = last.request;
  failure.reply = last.reply.empty() ? report.foreign : last.reply;
  return failure;
}

Failure DiagnoseInputs() {
  return LineFailure("input_device", "the input device EIO1: can't be read (it is " + Escaped(DevicePath(L"EIO1:")) +
                                         "); --map EIO1=PATH, or \"path\" in the site file, names another");
}

}  // namespace fieldline
