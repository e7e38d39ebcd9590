#include <algorithm>
#include <atomic>
#include <chrono>
#include <deque>
#include <iostream>
#include <memory>
#include <mutex>
#include <new>
#include <optional>
#include <sstream>
#include <string>
#include <system_error>
#include <thread>
#include <vector>

#include "fieldline/platform/console.h"
#include "polling/site/site.h"
#include "polling/text.h"
#include "polling/watch/line_worker.h"
#include "polling/watch/statistics.h"
#include "tools/options/duration_option.h"
#include "tools/options/number_option.h"
#include "tools/options/output_option.h"
#include "tools/output/alert.h"
#include "tools/output/poll_log.h"
#include "tools/output/report.h"
#include "tools/output/table.h"
#include "tools/output/watch_table.h"
#include "tools/verbs/verbs.h"

namespace fieldline::tool {
namespace {

using nlohmann::ordered_json;

constexpr char kExamples[] =
    "On a terminal the devices are shown in a table. Otherwise, and with --json or a trace on standard error, every\n"
    "poll is printed as a JSON object on one line. The whole file is checked; the alarm board, the display and "
    "cameras\n"
    "in it are not used: fieldlined takes the pictures.\n\n"
    "Examples:\n"
    "  fieldline watch examples/site.json\n"
    "  fieldline watch site.json --json --duration 3600s >night.jsonl\n"
    "  fieldline watch site.json --count 1 --quiet | jq 'select(.ok | not)'";

struct Arguments {
  std::string file;
  int count = 0;
  std::optional<std::chrono::milliseconds> duration;
  OutputArguments output;
  std::string log;
};

// The state of all devices of a site. The lines' threads report each poll to it.
class Watched {
 public:
  // `site` must outlive this.
  Watched(const Site& site, bool json, PollLog& log) : json_(json), log_(log) {
    for (const SiteLine& line : site.lines) {
      for (const SiteDevice& device : line.devices) devices_.push_back({line, device, DeviceView(line, device), {}});
    }
  }

  void Add(const SiteDevice& polled, const PollResult& result) {
    const std::lock_guard lock(mutex_);
    Device& device = *std::ranges::find(devices_, &polled, [](const Device& d) { return &d.device; });
    device.statistics.Add(result);
    all_.Add(result);
    device.view.Add(result, DeviceView::Clock::now());
    if (json_ || log_.IsWanted()) Report(device, result);
  }

  // Redraws the screen.
  void Draw() {
    const auto now = DeviceView::Clock::now();
    const TerminalSize size = SizeOfTerminal(Stream::kOutput);
    std::vector<TableRow> rows = {DeviceView::Headings()};
    std::size_t bad = 0;
    {
      const std::lock_guard lock(mutex_);
      // Devices with a problem come first.
      for (const bool wanted : {true, false}) {
        for (const Device& device : devices_) {
          if (device.view.IsBad() == wanted) rows.push_back(device.view.Row(now));
        }
        if (wanted) bad = rows.size() - 1;
      }
    }
    FitTable(rows, size.columns, {"last readings", "kind", "line", "age"});
    std::stringstream table;
    PrintTable(table, rows);
    std::vector<std::string> lines;
    for (std::string line; std::getline(table, line);) {
      const bool is_bad = !lines.empty() && lines.size() <= bad;
      lines.push_back(is_bad ? Alert(Clipped(line, size.columns), Stream::kOutput) : Clipped(line, size.columns));
    }
    constexpr char kHome[] = "\033[H";
    constexpr char kClearLine[] = "\033[K";
    constexpr char kClearBelow[] = "\033[J";
    std::string screen = kHome;
    const auto watched = std::chrono::floor<std::chrono::seconds>(now - began_);
    for (const std::string& line : OnePage(lines, size.rows, watched)) screen += line + kClearLine + '\n';
    std::cout << screen << kClearBelow << std::flush;
  }

  void PrintStatistics(std::ostream& out) const {
    for (const Device& device : devices_) {
      out << Escaped(device.device.name) << ": ";
      device.statistics.Print(out);
    }
  }

  ExitCode Result() const { return all_.Result(); }

 private:
  struct Device {
    const SiteLine& line;
    const SiteDevice& device;
    DeviceView view;
    Statistics statistics;
  };

  void Report(const Device& device, const PollResult& result) {
    ordered_json json =
        PollHead(*device.device.kind, device.device.address, device.line.name, device.device.name, result);
    AddOutcome(json, result, device.device.fields);
    log_.Append(json);
    if (json_) PrintJson(json);
  }

  const bool json_;
  PollLog& log_;
  const DeviceView::Clock::time_point began_ = DeviceView::Clock::now();
  std::mutex mutex_;
  std::deque<Device> devices_;
  Statistics all_;
};

ExitCode Run(const Arguments& arguments) {
  const Site site = ReadSite(arguments.file);
  const bool table = !arguments.output.json && arguments.output.trace != "-" && IsTerminal(Stream::kOutput);
  TraceOutput trace(arguments.output.trace);
  PollLog log(arguments.log);
  Watched watched(site, !table, log);
  WatchLimits limits{.polls = arguments.count};
  if (arguments.duration) limits.end = Schedule::Clock::now() + *arguments.duration;

  std::deque<LineWorker> workers;
  for (const SiteLine& line : site.lines) {
    workers.emplace_back(line, limits, trace, [&watched](const SiteDevice& device, const PollResult& result) {
      watched.Add(device, result);
    });
  }
  std::atomic<std::size_t> running = workers.size();
  std::vector<std::jthread> threads;
  threads.reserve(workers.size());
  try {
    for (LineWorker& worker : workers) {
      threads.emplace_back([&] {
        worker.Run();
        --running;
      });
    }
  } catch (const std::system_error& error) {
    Interrupt();
    Complain("no thread can be created for line " + Escaped(site.lines[threads.size()].name) + ": " + error.what());
    return ExitCode::kSomeFailed;
  }
  if (table) {
    constexpr int kRedraw = 500;  // ms
    std::cout << "\033[2J";
    do {
      watched.Draw();
    } while (running > 0 && SleepUnlessInterrupted(kRedraw));
  }
  threads.clear();
  if (table) watched.Draw();
  if (!arguments.output.quiet) watched.PrintStatistics(std::cerr);
  return watched.Result();
}

}  // namespace

Verb AddWatch(CLI::App& app) {
  const auto arguments = std::make_shared<Arguments>();
  CLI::App& command = *app.add_subcommand("watch", "Poll all devices of a site until Ctrl-C");
  command.footer(kExamples);
  command.add_option("FILE", arguments->file, "Site file, see docs/commissioning.md")->type_name("")->required();
  AddNumber(command, "--count", 0, 1'000'000'000, "Number of polls of each device; 0: until Ctrl-C [0]",
            [arguments](int count) { arguments->count = count; });
  AddDuration(
      command, "--duration", "How long to poll [until Ctrl-C]",
      [arguments](std::chrono::milliseconds duration) { arguments->duration = duration; }, kTenYears);
  AddOutputOptions(command, arguments->output);
  AddLogOption(command, arguments->log);
  return {&command, [arguments] { return Run(*arguments); }};
}

}  // namespace fieldline::tool
