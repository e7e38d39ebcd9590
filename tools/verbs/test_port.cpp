#include <iostream>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "fieldline/kinds.h"
#include "fieldline/serial/hub_ser_test.h"
#include "polling/kind_name.h"
#include "polling/line/trace_output.h"
#include "polling/poller.h"
#include "polling/record/kind_fields.h"
#include "polling/snapshot.h"
#include "polling/text.h"
#include "polling/watch/statistics.h"
#include "tools/options/flash_root_option.h"
#include "tools/options/line_option.h"
#include "tools/options/output_option.h"
#include "tools/output/picture_progress.h"
#include "tools/output/record_table.h"
#include "tools/output/report.h"
#include "tools/verbs/verbs.h"

namespace fieldline::tool {
namespace {

using nlohmann::ordered_json;

constexpr char kExamples[] =
    "The test port is part of the library. It gets each driver from the sensor factory, polls with it, and\n"
    "keeps the records of envir, leak, elec, onoff, battery, airc, ups and camera.\n\n"
    "Examples:\n"
    "  fieldline test-port envir --port /dev/ttyUSB0\n"
    "  fieldline test-port envir@1 leak@4 elec@5 --port /dev/ttyUSB0:9600,n,8,1";

struct Arguments {
  std::vector<std::string> kinds;
  LineArguments line;
  PollArguments poll;
  std::string flash_root;
  OutputArguments output;
};

struct Target {
  const Kind& kind;
  int address;
};

// "elec" or "elec@5".
Target ParseTarget(const std::string& text) {
  const std::size_t at = text.find('@');
  const Kind& kind = RequirePolledKind(text.substr(0, at));
  if (kind.number == SERDAT_CARD_K || kind.number == SERDAT_CAMERA_3GE) {
    throw UsageError(std::string(kind.name) + ": the test port has no driver for it; use fieldline poll");
  }
  if (at == std::string::npos) return {kind, kind.address};
  if (!kind.HasAddress()) throw UsageError(std::string(kind.name) + " has no address; write it without @");
  const std::optional<long> address = ParseInteger(text.substr(at + 1));
  if (!address || *address < 0 || *address > 255) {
    throw UsageError('"' + text + "\": the address is a number from 0 to 255, such as " + std::string(kind.name) +
                     "@1");
  }
  return {kind, static_cast<int>(*address)};
}

// The port's copy of a kind's record. Null when it keeps none.
const BYTE* CopyOf(const CHubSerTest& port, ENUM_SERDATKIND kind) {
  const auto bytes = [](const auto& record) { return reinterpret_cast<const BYTE*>(&record); };
  switch (kind) {
    case SERDAT_ENVIR:
      return bytes(port.m_datEnvir);
    case SERDAT_LEAK:
      return bytes(port.m_datLeak);
    case SERDAT_ELEC:
      return bytes(port.m_datElec);
    case SERDAT_ONOFF:
      return bytes(port.m_datOnoff);
    case SERDAT_BATTERY:
      return bytes(port.m_datBattery);
    case SERDAT_AIRC:
      return bytes(port.m_datAirc);
    case SERDAT_UPS:
      return bytes(port.m_datUps);
    case SERDAT_CAMERA:
      return bytes(port.m_datCamera);
    default:
      return nullptr;
  }
}

void Show(const Target& target, const PollResult& result, const std::string& line, bool json) {
  if (json) {
    ordered_json object = PollHead(target.kind, target.address, line, result);
    AddOutcome(object, result, FieldsOf(target.kind));
    PrintJson(object);
    return;
  }
  const std::string subject = Subject(target.kind, target.address);
  if (result.failure) {
    ShowFailure(subject, *result.failure);
    return;
  }
  std::cout << subject << ", " << Fixed(result.duration.count(), 1) << " ms\n";
  if (!result.record.empty()) {
    PrintRecord(std::cout, FieldsOf(target.kind), result.record.data());
  } else {
    std::cout << "  answered; the test port keeps no record of this kind\n";
  }
  std::cout << std::flush;
  if (result.warning) ShowWarning(subject, *result.warning);
}

ExitCode Run(const Arguments& arguments) {
  std::vector<Target> targets;
  for (const std::string& kind : arguments.kinds) targets.push_back(ParseTarget(kind));
  if (!arguments.flash_root.empty()) UseFlashRoot(arguments.flash_root);
  TraceOutput trace(arguments.output.trace);
  const LineConfig line = WithOptions(ResolveLine(arguments.line, UsualSettings(targets.front().kind)), arguments.poll);
  const PollOptions options = OptionsOf(line);
  PolledPort<CHubSerTest> polled(&trace, {});
  CHubSerTest& port = polled.own_port();
  if (const std::optional<Failure> failure = polled.Open(line)) {
    Show(targets.front(), FailedToOpen(*failure), line.shown, arguments.output.json);
    return failure->exit;
  }

  Statistics statistics;
  PictureProgress progress(&port, arguments.output.ShowsProgress());
  for (const Target& target : targets) {
    progress.Begin(Subject(target.kind, target.address));
    PolledLine* const used = target.kind.HasLine() ? &polled : nullptr;
    PollResult result = PollOnce(target.kind, target.address, used, options,
                                 [&] { return port.GetData(target.kind.number, target.address); });
    const BYTE* const copy = CopyOf(port, target.kind.number);
    if (!result.failure && copy != nullptr) result.record.assign(copy, copy + target.kind.record_size);
    progress.End();
    statistics.Add(result);
    Show(target, result, line.shown, arguments.output.json);
    if (result.failure && result.failure->exit == ExitCode::kNoLine) break;
  }
  return statistics.Result();
}

}  // namespace

Verb AddTestPort(CLI::App& app) {
  const auto arguments = std::make_shared<Arguments>();
  CLI::App& command = *app.add_subcommand("test-port", "Poll devices on one line through the library's test port");
  command.footer(kExamples);
  command.add_option("KIND", arguments->kinds, "Kinds of devices; KIND@ADDRESS for another than the usual address")
      ->required();
  AddLineOptions(command, arguments->line);
  AddPollOptions(command, arguments->poll);
  AddFlashRoot(command, arguments->flash_root);
  AddOutputOptions(command, arguments->output);
  return {&command, [arguments] { return Run(*arguments); }};
}

}  // namespace fieldline::tool
