#include "polling/poller.h"

#include <new>

#include "fieldline/platform/console.h"
#include "fieldline/sensor/make_driver.h"

namespace fieldline {
namespace {

std::string Hinted(std::string_view what, const Bytes& bytes, std::string_view advice) {
  constexpr std::size_t kMost = 16;
  const std::string_view count = bytes.size() == 1 ? "a stray byte " : "stray bytes ";
  return std::string(count) + Hex(bytes, kMost) + ' ' + std::string(what) + ": " + std::string(advice);
}

// Why a reply that the driver accepted must be refused: it belongs to another request, or its checksum is wrong, which
// some drivers do not check.
std::optional<Failure> FindMismatch(const WireProtocol& protocol, const std::vector<Exchange>& exchanges,
                                    bool any_address) {
  for (const Exchange& exchange : exchanges) {
    if (exchange.request.empty() || exchange.reply.empty()) continue;
    const std::string mismatch = protocol.mismatch(exchange.request, exchange.reply, any_address);
    Failure failure = {ExitCode::kRefusedReply, "other_device", mismatch, exchange.request, exchange.reply};
    if (!mismatch.empty()) return failure;
    if (protocol.is_sound(exchange.reply)) continue;
    const ReplyFault fault = FindReplyFault(protocol, exchange.request, exchange.reply);
    failure.code = fault.code;
    failure.message = fault.message;
    return failure;
  }
  return std::nullopt;
}

std::optional<Warning> FindWarning(const WireProtocol& protocol, const std::vector<Exchange>& exchanges,
                                   const LineReport& report) {
  for (const Exchange& exchange : exchanges) {
    const std::string mismatch = protocol.mismatch(exchange.request, exchange.reply, false);
    if (!mismatch.empty()) return Warning{"other_address", mismatch};
  }
  if (!report.mismatch.empty()) {
    return Warning{"foreign_frame",
                   report.mismatch + " before the right reply came: a late reply, or two masters on the line"};
  }
  if (!report.stray.empty() && report.stray == exchanges.back().request) {
    return Warning{"echo", "the request came back before the reply: the adapter echoes what it sends"};
  }
  if (!report.stray.empty()) {
    return Warning{"stray_bytes",
                   Hinted("before the reply", report.stray, "check the line's bias and the adapter's turn-around")};
  }
  if (!report.trailing.empty()) {
    return Warning{"trailing_bytes", Hinted("after the reply", report.trailing,
                                            "the device sends more than its reply, or the line is noisy")};
  }
  return std::nullopt;
}

// The failure for a reply that may begin at any of the received bytes.
Failure Unclear(const std::vector<Exchange>& exchanges, const LineReport& report) {
  Failure failure = {ExitCode::kRefusedReply, "trailing_bytes",
                     Hinted("after the reply", report.trailing, "nothing tells where the reply begins")};
  failure.request = exchanges.back().request;
  failure.reply = exchanges.back().reply;
  return failure;
}

bool IsUnanswered(const PollResult& result) {
  return result.failure && (result.failure->code == "no_answer" || result.failure->code == "late_reply");
}

}  // namespace

std::optional<Failure> PolledLine::Open(const LineConfig& line) {
  config_ = line;
  const PollOptions options = OptionsOf(line);
  port().SetTimeout(options.timeout.per_byte, options.timeout.constant);
  checker().SetCharacterTime(CharacterTime(line.settings));
  if (port().Open(line.definition.c_str()) != 0) return std::nullopt;
  return DiagnoseOpen(port(), line);
}

std::unique_ptr<CSensorBase> RequireDriver(const Kind& kind) {
  CSensorBase* const driver = MakeDriver(kind.number);
  if (driver == nullptr) throw std::bad_alloc();
  return std::unique_ptr<CSensorBase>(driver);
}

PollResult FailedToOpen(const Failure& failure) {
  PollResult result;
  result.time = std::chrono::system_clock::now();
  result.failure = failure;
  return result;
}

PollResult PollOnce(const Kind& kind, int address, PolledLine* line, const PollOptions& options,
                    const std::function<int()>& get_data) {
  PollResult result;
  if (line == nullptr) {
    result.time = std::chrono::system_clock::now();
    const auto began = std::chrono::steady_clock::now();
    if (get_data() == 0) result.failure = DiagnoseInputs();
    result.duration = std::chrono::steady_clock::now() - began;
    return result;
  }

  const WireProtocol& protocol = ProtocolOf(kind, address);
  line->recorder().Clear();
  line->checker().Begin({&protocol, options.timeout, options.pause, options.any_address, options.quick_silence});
  result.time = std::chrono::system_clock::now();
  const auto began = std::chrono::steady_clock::now();
  bool good = get_data() != 0;
  const auto ended = std::chrono::steady_clock::now();
  result.duration = ended - began;
  result.exchanges = line->recorder().Exchanges();
  if (good) {
    result.failure = FindMismatch(protocol, result.exchanges, options.any_address);
    good = !result.failure;
  }
  const LineReport report = line->checker().End(good);
  if (good && protocol.needs_clean_line && !report.trailing.empty()) {
    result.failure = Unclear(result.exchanges, report);
  } else if (good) {
    if (!result.exchanges.empty()) result.warning = FindWarning(protocol, result.exchanges, report);
  } else if (Interrupted()) {
    result.failure = Failure{ExitCode::kSomeFailed, "interrupted", "interrupted before it ended"};
  } else if (!result.failure) {
    result.failure = DiagnosePoll(kind, address, *line, report, ended);
  }
  return result;
}

PollResult Poll(const Kind& kind, int address, CSensorBase& driver, PolledLine* line, const PollOptions& options) {
  ISerBase* const port = line != nullptr ? &line->port() : nullptr;
  PollResult result;
  for (int attempt = 0; attempt <= options.retries; ++attempt) {
    result = PollOnce(kind, address, line, options, [&] { return driver.GetData(port, address); });
    if (!IsUnanswered(result) || Interrupted()) break;
  }
  if (!result.failure) result.record.assign(driver.m_pData, driver.m_pData + kind.record_size);
  return result;
}

}  // namespace fieldline
