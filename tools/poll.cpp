#include "tools/poll.h"

#include <cmath>
#include <iostream>
#include <memory>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>

#include "fieldline/platform/console.h"
#include "fieldline/serial/hub_ser_factory.h"
#include "tools/duration.h"
#include "tools/kinds.h"
#include "tools/line_option.h"
#include "tools/number_option.h"
#include "tools/poller.h"
#include "tools/report.h"
#include "tools/statistics.h"
#include "tools/text.h"

namespace fieldline::tool {
namespace {

using nlohmann::ordered_json;

constexpr char kExamples[] =
    "Examples:\n"
    "  fieldline poll envir --port /dev/ttyUSB0\n"
    "  fieldline poll elec --port COM1:9600,e,8,1 --address 5 --map COM1=/dev/ttyUSB0\n"
    "  fieldline poll ups --port /dev/ttyUSB0 --count 0 --interval 5s --json >ups.jsonl\n"
    "  fieldline poll di --map EIO1=/dev/eio1";

struct Arguments {
  std::string kind;
  LineArguments line;
  std::optional<int> address;
  int count = 1;
  std::chrono::milliseconds interval{1000};
  bool json = false;
  bool trace = false;
};

std::chrono::milliseconds ParseInterval(const std::string& text) {
  const std::optional<std::chrono::milliseconds> interval = ParseDuration(text);
  if (interval) return *interval;
  throw CLI::ValidationError("--interval", "write " + std::string(kDurationForm) + "; not \"" + text + '"');
}

// What is polled, and where.
struct Target {
  const Kind& kind;
  int address;
  std::string port;  // as shown
};

ordered_json Head(const Target& target, Time time, bool ok) {
  return {
      {"schema",  kJsonSchema     },
      {"time",    IsoTime(time)   },
      {"kind",    target.kind.name},
      {"address", target.address  },
      {"port",    target.port     },
      {"ok",      ok              }
  };
}

// Where there are no addresses none is shown.
std::string Subject(const Target& target) {
  std::string text(target.kind.name);
  if (target.kind.address != 0) text += " at address " + std::to_string(target.address);
  return text;
}

void ShowPoll(const Target& target, const PollResult& result, const BYTE* record, bool json) {
  if (json) {
    ordered_json line = Head(target, result.time, !result.failure);
    line["duration_ms"] = std::round(result.duration.count() * 1000) / 1000;
    if (result.failure) {
      line["error"] = FailureToJson(*result.failure);
    } else {
      line["record"] = RecordToJson(target.kind.fields, record);
      const ordered_json physical = PhysicalToJson(target.kind.fields, record);
      if (!physical.empty()) line["physical"] = physical;
    }
    PrintJson(line);
  } else if (result.failure) {
    ShowFailure(Subject(target), *result.failure);
  } else {
    std::cout << Subject(target);
    if (!target.port.empty()) std::cout << " on " << target.port;
    std::cout << ", " << Fixed(result.duration.count(), 1) << " ms\n";
    PrintRecord(std::cout, target.kind.fields, record);
    std::cout << std::flush;
  }
}

ExitCode PollSeries(const Arguments& arguments, const Target& target, CSensorBase& driver, ISerBase* port,
                    Recorder& recorder) {
  Statistics statistics;
  auto next = std::chrono::steady_clock::now();
  for (int done = 0; !Interrupted();) {
    const PollResult result = PollOnce(target.kind, driver, port, target.address, recorder);
    statistics.Add(result);
    ShowPoll(target, result, driver.m_pData, arguments.json);
    if (result.failure && result.failure->exit == ExitCode::kNoLine) break;
    if (arguments.count != 0 && ++done == arguments.count) break;
    const auto now = std::chrono::steady_clock::now();
    next = std::max(next + arguments.interval, now);
    const auto wait = std::chrono::ceil<std::chrono::milliseconds>(next - now);
    if (wait.count() > 0) SleepUnlessInterrupted(static_cast<int>(wait.count()));
  }
  if (arguments.count != 1) statistics.Print(std::cerr);
  return statistics.Result();
}

ExitCode Run(const Arguments& arguments) {
  const Kind& kind = RequireKind(arguments.kind);
  Target target{kind, arguments.address.value_or(kind.address), {}};
  CSensorBase* const driver = DriverOf(kind);
  if (driver == nullptr) throw std::bad_alloc();
  Recorder recorder(arguments.trace);

  if (kind.protocol == Protocol::kLocal) {
    ApplyMaps(arguments.line);
    CatchInterrupts();
    return PollSeries(arguments, target, *driver, nullptr, recorder);
  }

  const Line line = ResolveLine(arguments.line, kind.UsualSettings());
  target.port = line.shown;
  CHubSerFactory* const ports = CHubSerFactory::GetInstance();
  ISerBase* const port = ports != nullptr ? ports->GetHubSer(SER_COM) : nullptr;
  if (port == nullptr) throw std::bad_alloc();
  OpenLine open_line(*port, recorder);
  if (const std::optional<Failure> failure = open_line.Open(line)) {
    if (arguments.json) {
      ordered_json json = Head(target, std::chrono::system_clock::now(), false);
      json["error"] = FailureToJson(*failure);
      PrintJson(json);
    } else {
      ShowFailure(Subject(target), *failure);
    }
    return failure->exit;
  }
  CatchInterrupts();
  return PollSeries(arguments, target, *driver, port, recorder);
}

}  // namespace

Verb AddPoll(CLI::App& app) {
  const auto arguments = std::make_shared<Arguments>();
  CLI::App& command = *app.add_subcommand("poll", "Poll a device and show its record");
  command.footer(kExamples);
  command.add_option("KIND", arguments->kind, "Kind of device")->required();
  AddLineOptions(command, arguments->line);
  AddNumber(command, "--address", 0, 255, "Bus address [usual one of the kind]",
            [arguments](int address) { arguments->address = address; });
  AddNumber(command, "--count", 0, 1'000'000'000, "Polls to make; 0: until Ctrl-C [1]",
            [arguments](int count) { arguments->count = count; });
  command
      .add_option_function<std::string>(
          "--interval", [arguments](const std::string& text) { arguments->interval = ParseInterval(text); },
          "From the start of a poll to the next, in ms, or as 250ms or 5s [1s]")
      ->type_name("TIME");
  command.add_flag("--json", arguments->json, "One JSON object a line");
  command.add_flag("--trace", arguments->trace, "Show every block of bytes on standard error; times are UTC");
  return {&command, [arguments] { return Run(*arguments); }};
}

}  // namespace fieldline::tool
