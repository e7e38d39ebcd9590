#include "tools/scan.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <iostream>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "fieldline/drivers/ascii/hex_frame.h"
#include "fieldline/platform/console.h"
#include "fieldline/sensor/modbus.h"
#include "fieldline/serial/port_definition.h"
#include "tools/kinds.h"
#include "tools/line_option.h"
#include "tools/number_option.h"
#include "tools/poller.h"
#include "tools/probe_port.h"
#include "tools/report.h"
#include "tools/text.h"
#include "tools/trace_option.h"

namespace fieldline::tool {
namespace {

using nlohmann::ordered_json;
using Clock = std::chrono::steady_clock;

constexpr char kExamples[] =
    "A device is found when the driver of a kind accepts what it answers; several kinds may accept one device. "
    "Without\n"
    "--timeout an answer has to begin within 50 ms and the time of eleven characters.\n\n"
    "Examples:\n"
    "  fieldline scan --port /dev/ttyUSB0:9600,n,8,1\n"
    "  fieldline scan envir onoff --port /dev/ttyUSB0:2400,n,8,1 --from 1 --to 32\n"
    "  fieldline scan battery --port /dev/ttyUSB0 --timeout 2,300 --json";

struct Arguments {
  std::vector<std::string> kinds;
  LineArguments line;
  std::optional<int> from;
  std::optional<int> to;
  bool json = false;
  bool quiet = false;
  std::string trace;
};

struct Probe {
  const Kind& kind;
  int address;
};

bool IsModbus(const Probe& probe) {
  return probe.kind.protocol == Protocol::kModbus || (probe.kind.protocol == Protocol::kDual && probe.address % 2 == 0);
}

std::vector<const Kind*> ScannedKinds(const std::vector<std::string>& names) {
  std::vector<const Kind*> kinds;
  for (const std::string& name : names) {
    const Kind& kind = RequireKind(name);
    if (kind.address == 0) throw UsageError(name + " has no address to look for; use fieldline poll");
    kinds.push_back(&kind);
  }
  if (!kinds.empty()) return kinds;
  for (const Kind& kind : Kinds()) {
    if (kind.protocol == Protocol::kModbus) kinds.push_back(&kind);
  }
  return kinds;
}

// Address by address. Modbus devices have 1 to 247.
std::vector<Probe> PlanProbes(const Arguments& arguments) {
  if (arguments.from && arguments.to && *arguments.from > *arguments.to) {
    throw UsageError("--from is above --to; nothing lies between them");
  }
  const std::vector<const Kind*> kinds = ScannedKinds(arguments.kinds);
  std::vector<Probe> probes;
  for (int address = 0; address <= 255; ++address) {
    for (const Kind* const kind : kinds) {
      const bool modbus = kind->protocol == Protocol::kModbus;
      const int first = arguments.from.value_or(modbus ? 1 : 0);
      const int last = arguments.to.value_or(modbus ? 247 : 255);
      if (address >= first && address <= last) probes.push_back({*kind, address});
    }
  }
  return probes;
}

// What most of the kinds are usually set to.
std::string UsualSettings(const std::vector<Probe>& probes) {
  const auto same = [&](const Probe& probe) { return probe.kind.baud == probes.front().kind.baud; };
  return std::all_of(probes.begin(), probes.end(), same) ? probes.front().kind.UsualSettings() : "9600,n,8,1";
}

// A device begins to answer after 50 ms and ten characters at the latest; characters have up to 11 bits.
ReadTimeout ProbeTimeout(const Line& line) {
  LineSettings settings;
  ParseLineSettings(line.definition.c_str(), &settings);
  const int character = 1 + static_cast<int>(11'000 / settings.baud);  // ms
  return {character, 50 + 10 * character};
}

std::size_t ReplyBytes(const PollResult& result) {
  std::size_t bytes = 0;
  for (const Exchange& exchange : result.exchanges) bytes += exchange.reply.size();
  return bytes;
}

// What a Modbus device that keeps to the standard would have answered.
std::optional<std::size_t> StandardBytes(const Probe& probe, const PollResult& result) {
  if (!IsModbus(probe)) return std::nullopt;
  std::size_t bytes = 0;
  for (const Exchange& exchange : result.exchanges) {
    if (exchange.request.size() != kModbusRequestLength) return std::nullopt;
    const int count = GetWordBE(&exchange.request[4]);
    const bool registers = exchange.request[1] >= kReadHoldingRegisters;
    bytes += static_cast<std::size_t>(registers ? RegisterReplyLength(count) : BitReplyLength(count));
  }
  return bytes;
}

// The address that the last reply carries, where its protocol has one.
std::optional<int> ReplyAddress(const Probe& probe, const PollResult& result) {
  if (result.exchanges.empty()) return std::nullopt;
  const Bytes& reply = result.exchanges.back().reply;
  if (IsModbus(probe) && !reply.empty()) return reply[0];
  if (probe.kind.protocol == Protocol::kHexAscii && reply.size() >= 5) return GetHexByte(&reply[3]);
  return std::nullopt;
}

// One line on standard error, drawn over and over, when that is a terminal.
class Progress {
 public:
  Progress(std::size_t probes, bool quiet) : probes_(probes), drawing_(!quiet && IsTerminal(Stream::kError)) {}

  void Draw(std::size_t done, int address, int found) {
    const Clock::time_point now = Clock::now();
    if (!drawing_ || now - drawn_ < std::chrono::milliseconds(200)) return;
    drawn_ = now;
    std::cerr << "\r\033[Kaddress " << address << ", " << done * 100 / probes_ << " %, " << found << " found";
    if (done > 0) {
      const auto left = (now - began_) * static_cast<long>(probes_ - done) / static_cast<long>(done);
      const auto seconds = std::chrono::ceil<std::chrono::seconds>(left).count();
      std::cerr << ", " << seconds / 60 << " min " << seconds % 60 << " s left";
    }
    std::cerr << std::flush;
  }

  void Clear() const {
    if (drawing_) std::cerr << "\r\033[K" << std::flush;
  }

 private:
  const std::size_t probes_;
  const bool drawing_;
  const Clock::time_point began_ = Clock::now();
  Clock::time_point drawn_{};
};

void Show(const Probe& probe, const PollResult& result, const Line& line, bool json) {
  const std::optional<int> carried = ReplyAddress(probe, result);
  const std::optional<std::size_t> standard = StandardBytes(probe, result);
  if (json) {
    ordered_json object = {
        {"schema",         kJsonSchema                                        },
        {"time",           IsoTime(result.time)                               },
        {"port",           line.shown                                         },
        {"kind",           probe.kind.name                                    },
        {"address",        probe.address                                      },
        {"ok",             !result.failure.has_value()                        },
        {"duration_ms",    std::round(result.duration.count() * 1000) / 1000  },
        {"reply_address",  carried ? ordered_json(*carried) : ordered_json()  },
        {"reply_bytes",    ReplyBytes(result)                                 },
        {"standard_bytes", standard ? ordered_json(*standard) : ordered_json()}
    };
    if (result.failure) object["error"] = FailureToJson(*result.failure);
    PrintJson(object);
    return;
  }
  std::cout << "address " << probe.address << ": ";
  if (result.failure) {
    std::cout << "something answers, not as any kind that was looked for; to " << probe.kind.name << ": "
              << result.failure->message;
  } else {
    std::cout << probe.kind.name << ", " << Fixed(result.duration.count(), 1) << " ms, " << ReplyBytes(result)
              << " bytes";
    if (standard && *standard != ReplyBytes(result)) std::cout << " (" << *standard << " by the standard)";
  }
  std::cout << std::endl;
  if (carried && *carried != probe.address) {
    std::cerr << "  "
              << Alert("the reply carries address " + std::to_string(*carried) +
                       ": a late reply, or a device "
                       "that answers to any address")
              << '\n';
  }
}

void Warn(const std::string& text) { std::cerr << "fieldline: " << Alert(text) << '\n'; }

// What the probes of one address came to.
struct AddressResult {
  bool accepted = false;
  std::optional<PollResult> refused;  // the first answer that was refused
  const Probe* refused_probe = nullptr;
};

class Scan {
 public:
  Scan(const Arguments& arguments, const Line& line, ISerBase& port, Recorder& recorder, std::vector<Probe> probes)
      : arguments_(arguments),
        line_(line),
        port_(port),
        recorder_(recorder),
        probes_(std::move(probes)),
        progress_(probes_.size(), arguments.quiet) {}

  ExitCode Run() {
    for (std::size_t i = 0; i < probes_.size() && !Interrupted(); ++i) {
      const Probe& probe = probes_[i];
      progress_.Draw(i, probe.address, found_);
      if (const std::optional<ExitCode> end = Ask(probe)) return *end;
      const bool last = i + 1 == probes_.size() || probes_[i + 1].address != probe.address;
      if (last || Interrupted()) {
        if (!EndAddress()) return ExitCode::kRefusedReply;
      }
    }
    progress_.Clear();
    return Conclude();
  }

 private:
  // Probes; a value ends the scan.
  std::optional<ExitCode> Ask(const Probe& probe) {
    CSensorBase* const driver = DriverOf(probe.kind);
    if (driver == nullptr) throw std::bad_alloc();
    const PollResult result = PollOnce(probe.kind, *driver, &port_, probe.address, recorder_);
    if (!result.failure) {
      progress_.Clear();
      Show(probe, result, line_, arguments_.json);
      ++found_;
      here_.accepted = true;
    } else if (result.failure->exit == ExitCode::kNoLine) {
      progress_.Clear();
      ShowFailure(line_.shown, *result.failure);
      return ExitCode::kNoLine;
    } else if (result.failure->exit == ExitCode::kRefusedReply && !here_.refused) {
      here_.refused = result;
      here_.refused_probe = &probe;
    }
    return std::nullopt;
  }

  // False when the line only gives back what is sent.
  bool EndAddress() {
    constexpr int kEnoughEchoes = 3;
    const AddressResult here = std::exchange(here_, {});
    ++addresses_;
    if (!here.accepted && !here.refused) return true;
    ++answered_;
    if (here.accepted) return true;
    ++refused_;
    progress_.Clear();
    Show(*here.refused_probe, *here.refused, line_, arguments_.json);
    if (here.refused->failure->code == "echo" && ++echoes_ == kEnoughEchoes && echoes_ == addresses_) {
      Warn("every address gives the request back; the scan ends, see to the wiring or the adapter's echo first");
      return false;
    }
    return true;
  }

  ExitCode Conclude() const {
    constexpr int kSuspicious = 8;
    if (addresses_ >= kSuspicious && answered_ == addresses_) {
      Warn("every address answers: one device that answers to all of them, or noise, is likelier than so many devices");
    }
    if (!arguments_.quiet) {
      std::cerr << (Interrupted() ? "interrupted: " : "") << addresses_ << (addresses_ == 1 ? " address" : " addresses")
                << " probed on " << line_.shown << ", " << found_ << " found\n";
    }
    if (found_ > 0) return ExitCode::kGood;
    return refused_ > 0 ? ExitCode::kRefusedReply : ExitCode::kNoAnswer;
  }

  const Arguments& arguments_;
  const Line& line_;
  ISerBase& port_;
  Recorder& recorder_;
  const std::vector<Probe> probes_;
  Progress progress_;
  AddressResult here_;
  int addresses_ = 0;  // probed
  int answered_ = 0;   // of these
  int refused_ = 0;
  int echoes_ = 0;
  int found_ = 0;  // a device that two kinds accept counts twice
};

ExitCode Run(const Arguments& arguments) {
  std::vector<Probe> probes = PlanProbes(arguments);
  if (probes.empty()) throw UsageError("no kind has an address in that range; Modbus devices have 1 to 247");
  Line line = ResolveLine(arguments.line, UsualSettings(probes));
  if (!line.timeout) line.timeout = ProbeTimeout(line);
  Recorder recorder(arguments.trace);
  ProbePort port;
  OpenLine open_line(port, recorder);
  if (const std::optional<Failure> failure = open_line.Open(line)) {
    if (arguments.json) {
      PrintJson({
          {"schema", kJsonSchema            },
          {"port",   line.shown             },
          {"ok",     false                  },
          {"error",  FailureToJson(*failure)}
      });
    } else {
      ShowFailure("scan", *failure);
    }
    return failure->exit;
  }
  CatchInterrupts();
  return Scan(arguments, line, port, recorder, std::move(probes)).Run();
}

}  // namespace

Verb AddScan(CLI::App& app) {
  const auto arguments = std::make_shared<Arguments>();
  CLI::App& command = *app.add_subcommand("scan", "Look for devices on a line, address by address");
  command.footer(kExamples);
  command.add_option("KIND", arguments->kinds, "Kinds to look for [all with Modbus RTU alone]")->type_name("");
  AddLineOptions(command, arguments->line);
  AddNumber(command, "--from", 0, 255, "First address [1 for Modbus, else 0]",
            [arguments](int address) { arguments->from = address; });
  AddNumber(command, "--to", 0, 255, "Last address [247 for Modbus, else 255]",
            [arguments](int address) { arguments->to = address; });
  command.add_flag("--json", arguments->json, "One JSON object a line for each answer");
  command.add_flag("--quiet", arguments->quiet, "No progress and no summary on standard error");
  AddTraceOption(command, arguments->trace);
  return {&command, [arguments] { return Run(*arguments); }};
}

}  // namespace fieldline::tool
