#include <algorithm>
#include <chrono>
#include <cmath>
#include <iostream>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "fieldline/kinds.h"
#include "fieldline/platform/console.h"
#include "polling/kind_name.h"
#include "polling/line/trace_output.h"
#include "polling/poller.h"
#include "polling/protocol/protocol.h"
#include "polling/text.h"
#include "tools/options/line_option.h"
#include "tools/options/number_option.h"
#include "tools/options/output_option.h"
#include "tools/output/alert.h"
#include "tools/output/progress.h"
#include "tools/output/report.h"
#include "tools/verbs/verbs.h"

namespace fieldline::tool {
namespace {

using nlohmann::ordered_json;
using Clock = std::chrono::steady_clock;

constexpr char kExamples[] =
    "A device is found when the driver of a kind accepts its reply; several kinds may accept one device.\n"
    "Without settings in --port each kind is scanned with its usual ones. Without --timeout a reply has to begin\n"
    "within 50 ms and the time of eleven characters.\n\n"
    "Examples:\n"
    "  fieldline scan --port /dev/ttyUSB0\n"
    "  fieldline scan envir onoff --port /dev/ttyUSB0:2400,n,8,1 --from 1 --to 32\n"
    "  fieldline scan battery --port /dev/ttyUSB0 --timeout 2,300 --json";

struct Arguments {
  std::vector<std::string> kinds;
  LineArguments line;
  PollArguments poll;
  std::optional<int> from;
  std::optional<int> to;
  OutputArguments output;
};

struct Probe {
  const Kind& kind;
  int address;
};

std::vector<const Kind*> ScannedKinds(const std::vector<std::string>& names) {
  std::vector<const Kind*> kinds;
  for (const std::string& name : names) {
    const Kind& kind = RequirePolledKind(name);
    if (!kind.HasAddress()) throw UsageError(name + " has no address to scan for; use fieldline poll");
    kinds.push_back(&kind);
  }
  if (!kinds.empty()) return kinds;
  for (const Kind& kind : kKinds) {
    if (kind.protocol == Protocol::kModbusRtu) kinds.push_back(&kind);
  }
  return kinds;
}

// All probes, address by address. Modbus devices have addresses 1 to 247.
std::vector<Probe> PlanProbes(const Arguments& arguments, const std::vector<const Kind*>& kinds) {
  std::vector<Probe> probes;
  for (int address = 0; address <= 255; ++address) {
    for (const Kind* const kind : kinds) {
      const bool modbus = kind->protocol == Protocol::kModbusRtu;
      const int first = arguments.from.value_or(modbus ? 1 : 0);
      const int last = arguments.to.value_or(modbus ? 247 : 255);
      if (address >= first && address <= last) probes.push_back({*kind, address});
    }
  }
  return probes;
}

// Allows 50 ms and ten characters until a reply begins; a character has up to 11 bits.
ReadTimeout ProbeTimeout(const LineConfig& line) {
  const int character = 1 + static_cast<int>(11'000 / line.settings.baud);  // ms
  return {character, 50 + 10 * character};
}

// The probes that use the same line settings.
struct Pass {
  LineConfig line;
  std::vector<Probe> probes;
};

// One pass with the given settings; without any, one pass for each of the kinds' usual settings.
std::vector<Pass> PlanPasses(const Arguments& arguments) {
  if (arguments.from && arguments.to && *arguments.from > *arguments.to) {
    throw UsageError("--from is above --to; the range is empty");
  }
  std::vector<std::pair<std::string, std::vector<const Kind*>>> groups;
  for (const Kind* const kind : ScannedKinds(arguments.kinds)) {
    const std::string settings = NamesSettings(arguments.line) ? "" : UsualSettings(*kind);
    auto group = std::ranges::find(groups, settings, [](const auto& g) { return g.first; });
    if (group == groups.end()) group = groups.insert(group, {settings, {}});
    group->second.push_back(kind);
  }
  std::vector<Pass> passes;
  for (const auto& [settings, kinds] : groups) {
    Pass pass = {WithOptions(ResolveLine(arguments.line, settings), arguments.poll), PlanProbes(arguments, kinds)};
    if (!pass.line.timeout) pass.line.timeout = ProbeTimeout(pass.line);
    if (!pass.probes.empty()) passes.push_back(std::move(pass));
  }
  if (passes.empty()) throw UsageError("no kind has an address in that range; Modbus devices have 1 to 247");
  return passes;
}

std::size_t ReplyBytes(const PollResult& result) {
  std::size_t bytes = 0;
  for (const Exchange& exchange : result.exchanges) bytes += exchange.reply.size();
  return bytes;
}

// Length of the reply according to the protocol's standard. Nothing when there is no standard.
std::optional<std::size_t> StandardBytes(const Probe& probe, const PollResult& result) {
  const WireProtocol& protocol = ProtocolOf(probe.kind, probe.address);
  std::size_t bytes = 0;
  for (const Exchange& exchange : result.exchanges) {
    const std::size_t length = protocol.standard_length(exchange.request);
    if (length == 0) return std::nullopt;
    bytes += length;
  }
  return bytes;
}

// The address in the last reply. Nothing when the protocol has none.
std::optional<int> ReplyAddress(const Probe& probe, const PollResult& result) {
  if (result.exchanges.empty()) return std::nullopt;
  return ProtocolOf(probe.kind, probe.address).reply_address(result.exchanges.back().reply);
}

void Show(const Probe& probe, const PollResult& result, const LineConfig& line, bool json) {
  const std::optional<int> carried = ReplyAddress(probe, result);
  const std::optional<std::size_t> standard = StandardBytes(probe, result);
  if (json) {
    ordered_json object;
    object["schema"] = kJsonSchema;
    object["time"] = IsoTime(result.time);
    object["port"] = line.shown;
    object["kind"] = probe.kind.name;
    object["address"] = probe.address;
    object["ok"] = !result.failure.has_value();
    object["duration_ms"] = std::round(result.duration.count() * 1000) / 1000;
    object["reply_address"] = carried ? ordered_json(*carried) : ordered_json();
    object["reply_bytes"] = ReplyBytes(result);
    object["standard_bytes"] = standard ? ordered_json(*standard) : ordered_json();
    if (result.warning) object["warning"] = WarningToJson(*result.warning);
    if (result.failure) object["error"] = FailureToJson(*result.failure);
    PrintJson(object);
    return;
  }
  std::cout << "address " << probe.address << ": ";
  if (result.failure) {
    std::cout << "the device answers, but as none of the kinds scanned; to " << probe.kind.name << ": "
              << result.failure->message;
  } else {
    std::cout << probe.kind.name << ", " << Fixed(result.duration.count(), 1) << " ms, " << ReplyBytes(result)
              << " bytes";
    if (standard && *standard != ReplyBytes(result)) std::cout << " (" << *standard << " by the standard)";
  }
  std::cout << std::endl;
  if (result.warning) ShowWarning(Subject(probe.kind, probe.address), *result.warning);
}

void Warn(const std::string& text) { std::cerr << "fieldline: " << Alert(text) << '\n'; }

// The results of the probes of one address.
struct AddressResult {
  bool accepted = false;
  std::optional<PollResult> refused;  // the first refused reply
  const Probe* refused_probe = nullptr;
};

class Scan {
 public:
  explicit Scan(const Arguments& arguments)
      : arguments_(arguments),
        passes_(PlanPasses(arguments)),
        trace_(arguments.output.trace),
        polled_(&trace_, {}, SER_COM),
        progress_(nullptr, arguments.output.ShowsProgress()) {
    for (const Pass& pass : passes_) probes_ += pass.probes.size();
  }

  ExitCode Run() {
    progress_.Begin("scan");
    bool found = false;
    bool refused = false;
    for (const Pass& pass : passes_) {
      if (const std::optional<Failure> failure = polled_.Open(pass.line)) {
        ShowNoLine(pass.line, *failure);
        return failure->exit;
      }
      counts_ = {};
      if (const std::optional<ExitCode> end = ProbeAll(pass)) return *end;
      Conclude(pass.line);
      found |= counts_.found > 0;
      refused |= counts_.refused > 0;
      if (Interrupted()) return ExitCode::kSomeFailed;
    }
    if (found) return ExitCode::kGood;
    return refused ? ExitCode::kRefusedReply : ExitCode::kNoAnswer;
  }

 private:
  struct Counts {
    int addresses = 0;  // probed
    int answered = 0;   // of these
    int refused = 0;
    int echoes = 0;
    int found = 0;  // addresses with a device
  };

  // Returns the exit code when the scan has to end early.
  std::optional<ExitCode> ProbeAll(const Pass& pass) {
    for (std::size_t i = 0; i < pass.probes.size() && !Interrupted(); ++i) {
      const Probe& probe = pass.probes[i];
      TellProgress(pass.line, probe.address);
      if (const std::optional<ExitCode> end = Ask(pass.line, probe)) return end;
      ++done_;
      const bool last = i + 1 == pass.probes.size() || pass.probes[i + 1].address != probe.address;
      if ((last || Interrupted()) && !EndAddress(pass.line)) return ExitCode::kRefusedReply;
    }
    return std::nullopt;
  }

  void TellProgress(const LineConfig& line, int address) {
    std::string text =
        line.shown + ", address " + std::to_string(address) + ", " + std::to_string(done_ * 100 / probes_) + " %";
    if (done_ > 0) {
      const auto left = (Clock::now() - began_) * static_cast<long>(probes_ - done_) / static_cast<long>(done_);
      const auto seconds = std::chrono::ceil<std::chrono::seconds>(left).count();
      text += ", " + std::to_string(seconds / 60) + " min " + std::to_string(seconds % 60) + " s left";
    }
    progress_.SetDetail(text);
  }

  std::optional<ExitCode> Ask(const LineConfig& line, const Probe& probe) {
    const std::unique_ptr<CSensorBase> driver = RequireDriver(probe.kind);
    PollOptions options = OptionsOf(line);
    options.quick_silence = true;
    const PollResult result = Poll(probe.kind, probe.address, *driver, &polled_, options);
    if (!result.failure) {
      progress_.Erase();
      Show(probe, result, line, arguments_.output.json);
      if (!std::exchange(here_.accepted, true)) ++counts_.found;
    } else if (result.failure->exit == ExitCode::kNoLine) {
      ShowNoLine(line, *result.failure);
      return ExitCode::kNoLine;
    } else if (result.failure->exit == ExitCode::kRefusedReply && !here_.refused) {
      here_.refused = result;
      here_.refused_probe = &probe;
    }
    return std::nullopt;
  }

  // Returns false when the line only echoes what is sent.
  bool EndAddress(const LineConfig& line) {
    constexpr int kEnoughEchoes = 3;
    const AddressResult here = std::exchange(here_, {});
    ++counts_.addresses;
    if (!here.accepted && !here.refused) return true;
    ++counts_.answered;
    if (here.accepted) return true;
    ++counts_.refused;
    progress_.Erase();
    Show(*here.refused_probe, *here.refused, line, arguments_.output.json);
    if (here.refused->failure->code == "echo" && ++counts_.echoes == kEnoughEchoes &&
        counts_.echoes == counts_.addresses) {
      Warn("every address echoes the request, so the scan ends; check the wiring, and switch off the adapter's echo");
      return false;
    }
    return true;
  }

  void Conclude(const LineConfig& line) {
    constexpr int kSuspicious = 8;
    progress_.Erase();
    if (counts_.addresses >= kSuspicious && counts_.answered == counts_.addresses) {
      Warn("every address answers; this is probably noise, or one device that answers to any address");
    }
    if (!arguments_.output.quiet) {
      std::cerr << (Interrupted() ? "interrupted: " : "") << counts_.addresses
                << (counts_.addresses == 1 ? " address" : " addresses") << " probed on " << line.shown << ", "
                << counts_.found << " found\n";
    }
  }

  void ShowNoLine(const LineConfig& line, const Failure& failure) {
    progress_.End();
    if (!arguments_.output.json) {
      ShowFailure("scan", failure);
      return;
    }
    ordered_json object;
    object["schema"] = kJsonSchema;
    object["port"] = line.shown;
    object["ok"] = false;
    object["error"] = FailureToJson(failure);
    PrintJson(object);
  }

  const Arguments& arguments_;
  const std::vector<Pass> passes_;
  TraceOutput trace_;
  PolledPort<CSerBase> polled_;
  Progress progress_;
  AddressResult here_;
  Counts counts_;  // of the pass
  std::size_t probes_ = 0;
  std::size_t done_ = 0;
  const Clock::time_point began_ = Clock::now();
};

}  // namespace

Verb AddScan(CLI::App& app) {
  const auto arguments = std::make_shared<Arguments>();
  CLI::App& command = *app.add_subcommand("scan", "Find devices on a line, address by address");
  command.footer(kExamples);
  command.add_option("KIND", arguments->kinds, "Kinds to find [all that use only Modbus RTU]")->type_name("");
  AddLineOptions(command, arguments->line, "as above");
  AddPollOptions(command, arguments->poll);
  AddNumber(command, "--from", 0, 255, "First address [1 for Modbus, else 0]",
            [arguments](int address) { arguments->from = address; });
  AddNumber(command, "--to", 0, 255, "Last address [247 for Modbus, else 255]",
            [arguments](int address) { arguments->to = address; });
  AddOutputOptions(command, arguments->output);
  return {&command, [arguments] { return Scan(*arguments).Run(); }};
}

}  // namespace fieldline::tool
