#include <iostream>
#include <memory>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>

#include "fieldline/kinds.h"
#include "fieldline/platform/console.h"
#include "polling/kind_name.h"
#include "polling/line/trace_output.h"
#include "polling/poller.h"
#include "polling/record/kind_fields.h"
#include "polling/snapshot.h"
#include "polling/text.h"
#include "polling/watch/statistics.h"
#include "tools/options/duration_option.h"
#include "tools/options/flash_root_option.h"
#include "tools/options/line_option.h"
#include "tools/options/number_option.h"
#include "tools/options/output_option.h"
#include "tools/output/picture_progress.h"
#include "tools/output/poll_csv.h"
#include "tools/output/poll_log.h"
#include "tools/output/record_table.h"
#include "tools/output/report.h"
#include "tools/verbs/verbs.h"

namespace fieldline::tool {
namespace {

using nlohmann::ordered_json;

constexpr char kExamples[] =
    "Examples:\n"
    "  fieldline poll envir --port /dev/ttyUSB0\n"
    "  fieldline poll elec --port COM1:9600,e,8,1 --address 5 --map COM1=/dev/ttyUSB0\n"
    "  fieldline poll ups --port /dev/ttyUSB0 --count 0 --interval 5s --json >ups.jsonl\n"
    "  fieldline poll camera --port /dev/ttyUSB0 --flash-root . --until-good 3\n"
    "  fieldline poll di --map EIO1=/dev/eio1";

struct Arguments {
  std::string kind;
  LineArguments line;
  PollArguments poll;
  std::optional<int> address;
  int count = 1;
  int until_good = 0;
  std::chrono::milliseconds interval{1000};
  OutputArguments output;
  std::string log;
  bool csv = false;
  std::string flash_root;
};

// The device to poll, and its line.
struct Target {
  const Kind& kind;
  int address;
  std::string port;  // for people
};

std::string SubjectOf(const Target& target) { return Subject(target.kind, target.address); }

// Shows polls in the requested form, and logs them.
class Reporter {
 public:
  Reporter(const Arguments& arguments, const Target& target)
      : arguments_(arguments), target_(target), log_(arguments.log) {
    if (arguments.csv) std::cout << CsvHeadings(FieldsOf(target.kind)) << std::flush;
  }

  void Show(const PollResult& result, const std::optional<Snapshot>& snapshot) {
    if (arguments_.output.json || log_.IsWanted()) {
      ordered_json line = PollHead(target_.kind, target_.address, target_.port, result);
      AddOutcome(line, result, FieldsOf(target_.kind));
      if (snapshot) AddSnapshot(line, *snapshot);
      log_.Append(line);
      if (arguments_.output.json) PrintJson(line);
    }
    if (arguments_.output.json) return;
    if (arguments_.csv) std::cout << CsvRow(FieldsOf(target_.kind), result) << std::flush;
    if (result.failure) {
      ShowFailure(SubjectOf(target_), *result.failure);
    } else if (!arguments_.csv) {
      ShowRecord(result, snapshot);
    }
    if (result.warning) ShowWarning(SubjectOf(target_), *result.warning);
  }

 private:
  void ShowRecord(const PollResult& result, const std::optional<Snapshot>& snapshot) const {
    std::cout << SubjectOf(target_);
    if (!target_.port.empty()) std::cout << " on " << target_.port;
    std::cout << ", " << Fixed(result.duration.count(), 1) << " ms\n";
    PrintRecord(std::cout, FieldsOf(target_.kind), result.record.data());
    if (snapshot) std::cout << "  " << snapshot->path << ", " << snapshot->size << " bytes\n";
    std::cout << std::flush;
  }

  const Arguments& arguments_;
  const Target& target_;
  PollLog log_;
};

ExitCode PollSeries(const Arguments& arguments, const Target& target, Reporter& reporter, PolledLine* line) {
  const std::unique_ptr<CSensorBase> driver = RequireDriver(target.kind);
  const PollOptions options = line != nullptr ? OptionsOf(line->config()) : PollOptions{};
  const bool camera = IsCamera(target.kind);
  PictureProgress progress(line != nullptr ? &line->port() : nullptr, arguments.output.ShowsProgress());
  const int most = arguments.until_good != 0 ? arguments.until_good : arguments.count;
  Statistics statistics;
  std::optional<Failure> last_failure;
  auto next = std::chrono::steady_clock::now();
  for (int done = 0; !Interrupted();) {
    progress.Begin(SubjectOf(target));
    PollResult result = Poll(target.kind, target.address, *driver, line, options);
    std::optional<Snapshot> snapshot;
    if (camera) snapshot = FindSnapshot(target.kind, arguments.flash_root, driver->m_pData, &result);
    progress.End();
    statistics.Add(result);
    reporter.Show(result, snapshot);
    last_failure = result.failure;
    if (result.failure && result.failure->exit == ExitCode::kNoLine) break;
    if (arguments.until_good != 0 && !result.failure) break;
    if (most != 0 && ++done == most) break;
    const auto now = std::chrono::steady_clock::now();
    next = std::max(next + arguments.interval, now);
    const auto wait = std::chrono::ceil<std::chrono::milliseconds>(next - now);
    if (wait.count() > 0) SleepUnlessInterrupted(static_cast<int>(wait.count()));
  }
  if (most != 1 && !arguments.output.quiet) statistics.Print(std::cerr);
  return arguments.until_good != 0 && !last_failure ? ExitCode::kGood : statistics.Result();
}

ExitCode Run(const Arguments& arguments) {
  const Kind& kind = RequirePolledKind(arguments.kind);
  if (arguments.address && !kind.HasAddress()) {
    throw UsageError(arguments.kind + " has no address; leave out --address");
  }
  Target target{kind, arguments.address.value_or(kind.address), {}};
  if (!arguments.flash_root.empty()) {
    if (!IsCamera(kind)) throw UsageError("--flash-root is for cameras; leave it out");
    UseFlashRoot(arguments.flash_root);
  }
  if (!kind.HasLine()) {
    ApplyMaps(arguments.line);
    Reporter reporter(arguments, target);
    return PollSeries(arguments, target, reporter, nullptr);
  }

  TraceOutput trace(arguments.output.trace);
  const LineConfig line = WithOptions(ResolveLine(arguments.line, UsualSettings(kind)), arguments.poll);
  target.port = line.shown;
  PolledPort<CSerBase> polled(&trace, {}, SER_COM);
  Reporter reporter(arguments, target);
  if (const std::optional<Failure> failure = polled.Open(line)) {
    reporter.Show(FailedToOpen(*failure), {});
    return failure->exit;
  }
  return PollSeries(arguments, target, reporter, &polled);
}

}  // namespace

Verb AddPoll(CLI::App& app) {
  const auto arguments = std::make_shared<Arguments>();
  CLI::App& command = *app.add_subcommand("poll", "Poll a device and show its record");
  command.footer(kExamples);
  command.add_option("KIND", arguments->kind, "Kind of device")->type_name("")->required();
  AddLineOptions(command, arguments->line);
  AddPollOptions(command, arguments->poll);
  AddNumber(command, "--address", 0, 255, "Bus address [usual one of the kind]",
            [arguments](int address) { arguments->address = address; });
  CLI::Option* const count = AddNumber(command, "--count", 0, 1'000'000'000, "Number of polls; 0: until Ctrl-C [1]",
                                       [arguments](int polls) { arguments->count = polls; });
  AddNumber(command, "--until-good", 1, 1'000'000'000, "Poll until one is good, at most so many times",
            [arguments](int polls) { arguments->until_good = polls; })
      ->excludes(count);
  AddDuration(command, "--interval", "Time from the start of a poll to the next: ms, 250ms or 5s [1s]",
              [arguments](std::chrono::milliseconds interval) { arguments->interval = interval; });
  AddFlashRoot(command, arguments->flash_root);
  AddOutputOptions(command, arguments->output);
  command.add_flag("--csv", arguments->csv, "Comma-separated values: a row of headings, then a row per poll")
      ->excludes("--json");
  AddLogOption(command, arguments->log);
  return {&command, [arguments] { return Run(*arguments); }};
}

}  // namespace fieldline::tool
