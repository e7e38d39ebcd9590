#include <chrono>
#include <cstddef>
#include <iostream>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <utility>

#include "fieldline/kinds.h"
#include "fieldline/platform/console.h"
#include "fieldline/platform/file.h"
#include "polling/alarm_board.h"
#include "polling/display_panel.h"
#include "polling/kind_name.h"
#include "polling/poller.h"
#include "polling/record/kind_fields.h"
#include "polling/snapshot.h"
#include "polling/text.h"
#include "sim/room.h"
#include "sim/scenario.h"
#include "sim/scratch_directory.h"
#include "tools/options/output_option.h"
#include "tools/output/picture_progress.h"
#include "tools/output/record_table.h"
#include "tools/output/report.h"
#include "tools/simulation/sim_report.h"
#include "tools/verbs/verbs.h"

namespace fieldline::tool {
namespace {

using nlohmann::ordered_json;
using std::chrono::milliseconds;
using std::chrono::steady_clock;

constexpr char kExamples[] =
    "No device is needed: a machine room is simulated, and its devices are polled through the library, as an\n"
    "application would poll them.\n\n"
    "Examples:\n"
    "  fieldline demo\n"
    "  fieldline demo --watch\n"
    "  fieldline demo --json --quiet | jq '{device, duration_ms}'";

struct Arguments {
  bool watch = false;
  OutputArguments output;
};

// The alarm board's answers, as a record.
struct BoardAnswers {
  DEVICE_STATUS status;
  BYTE sms_result;
};

constexpr RecordField kBoardFields[] = {
    {"status",     offsetof(BoardAnswers, status),     FieldType::kU8, 4, 0},
    {"sms_result", offsetof(BoardAnswers, sms_result), FieldType::kU8, 1, 0},
};

// Shortens long blocks in the middle.
std::string ShortHex(const Bytes& bytes) {
  constexpr std::size_t kHead = 32;
  constexpr std::size_t kTail = 8;
  const std::span all(bytes);
  if (all.size() <= kHead + kTail) return Hex(all);
  return Hex(all.first(kHead)) + " ... " + Hex(all.last(kTail)) + " (" + std::to_string(all.size()) + " bytes)";
}

// The unit as an application sees it: ports and drivers of the library, connected to a simulated room.
class Unit {
 public:
  // Pictures are stored below `flash_root`.
  Unit(const sim::Room& room, std::string flash_root, const Arguments& arguments)
      : room_(room), flash_root_(std::move(flash_root)), arguments_(arguments) {}

  // Polls a device and shows the result. Returns false when the poll failed.
  bool Poll(const sim::RoomDevice& device, const sim::RoomLine& line);

 private:
  PollResult PollDriver(const sim::RoomDevice& device, const LineConfig& line, std::optional<Snapshot>& snapshot);
  bool Show(const sim::RoomDevice& device, const PollResult& result, Fields fields,
            const std::optional<Snapshot>& snapshot) const;

  const sim::Room& room_;
  const std::string flash_root_;
  const Arguments& arguments_;
  TraceOutput trace_{arguments_.output.trace};
};

// Reads the board's status and sends an SMS.
PollResult UseBoard(const LineConfig& line, TraceOutput& trace) {
  BoardAnswers answers{};
  PollResult result = AlarmBoard(line, &trace).Run([&](IHubAlarm& board) {
    char number[] = "5550100";
    char text[] = "Water under the floor";
    const int failed = board.Alm_get_status(&answers.status);
    return failed != 0 ? failed : board.Alm_send_sms(number, text, &answers.sms_result);
  });
  const BYTE* const bytes = reinterpret_cast<const BYTE*>(&answers);
  if (!result.failure) result.record.assign(bytes, bytes + sizeof answers);
  return result;
}

PollResult UseDisplay(const LineConfig& line, TraceOutput& trace) {
  return DisplayPanel(line, &trace).Run([](CHubMonitor& display) {
    return display.diwen_set_data(0x1000, 235) == 1 ? display.diwen_set_display(1) : 0;
  });
}

bool Unit::Poll(const sim::RoomDevice& device, const sim::RoomLine& line) {
  const std::string name(line.name);
  LineArguments where = {.port = name, .maps = {name + '=' + room_.Path(line.name)}, .timeout = {}};
  ApplyMaps(where);
  const std::string settings = line.baud != 0 ? std::to_string(line.baud) + ",n,8,1" : "";
  if (!arguments_.output.json) {
    std::cout << device.name << ": " << Subject(*device.kind, device.address) << " on " << name << ':' << settings
              << " = " << room_.Path(line.name) << std::endl;
  }
  LineConfig opened;
  if (device.kind->HasLine()) {
    opened = ResolveLine(where, settings);
  }
  std::optional<Snapshot> snapshot;
  switch (device.kind->number) {
    case SERDAT_ALARM:
      return Show(device, UseBoard(opened, trace_), kBoardFields, snapshot);
    case SERDAT_MONITOR:
      return Show(device, UseDisplay(opened, trace_), {}, snapshot);
    default:
      const PollResult result = PollDriver(device, opened, snapshot);
      return Show(device, result, FieldsOf(*device.kind), snapshot);
  }
}

PollResult Unit::PollDriver(const sim::RoomDevice& device, const LineConfig& line, std::optional<Snapshot>& snapshot) {
  const std::unique_ptr<CSensorBase> driver = RequireDriver(*device.kind);
  PolledPort<CSerBase> polled(&trace_, {}, SER_COM);
  PolledLine* const used = device.kind->HasLine() ? &polled : nullptr;
  if (used != nullptr) {
    if (const std::optional<Failure> failure = polled.Open(line)) return FailedToOpen(*failure);
  }
  PictureProgress progress(&polled.port(), arguments_.output.ShowsProgress());
  progress.Begin(std::string(device.name));
  PollResult result = ::fieldline::Poll(*device.kind, device.address, *driver, used, OptionsOf(line));
  progress.End();
  if (IsCamera(*device.kind)) snapshot = FindSnapshot(*device.kind, flash_root_, driver->m_pData, &result);
  return result;
}

bool Unit::Show(const sim::RoomDevice& device, const PollResult& result, Fields fields,
                const std::optional<Snapshot>& snapshot) const {
  if (arguments_.output.json) {
    ordered_json json = PollHead(*device.kind, device.address, device.line, device.name, result);
    AddOutcome(json, result, fields);
    if (snapshot) AddSnapshot(json, *snapshot);
    PrintJson(json);
    return !result.failure;
  }
  for (const Exchange& exchange : result.exchanges) {
    std::cout << "  -> " << ShortHex(exchange.request) << '\n';
    if (!exchange.reply.empty()) std::cout << "  <- " << ShortHex(exchange.reply) << '\n';
  }
  if (result.failure) {
    std::cout << "  " << result.failure->message << '\n';
  } else {
    PrintRecord(std::cout, fields, result.record.data());
    if (snapshot) std::cout << "  " << snapshot->path << ", " << snapshot->size << " bytes\n";
  }
  std::cout << "  " << Fixed(result.duration.count(), 1) << " ms\n" << std::endl;
  return !result.failure;
}

ExitCode Run(const Arguments& arguments) {
  const sim::ScratchDirectory scratch;
  const std::string flash_root = scratch.Path().string();
  UseFlashRoot(flash_root);
  const sim::RoomLayout layout = sim::MachineRoom();
  sim::Room room(layout, scratch.Path());
  if (!room.Start()) {
    Complain(StartFailure(scratch.Path()));
    return ExitCode::kNoLine;
  }

  const sim::Scenario scenario = {.drift = true};
  sim::ScenarioPlayer player(scenario, room);
  Unit unit(room, flash_root, arguments);
  int good = 0;
  int polls = 0;
  const auto began = steady_clock::now();
  do {
    for (const sim::RoomDevice& device : layout.devices) {
      if (Interrupted()) break;
      if (arguments.watch) player.Advance(std::chrono::floor<milliseconds>(steady_clock::now() - began));
      if (unit.Poll(device, sim::LineOf(layout, device))) ++good;
      ++polls;
    }
  } while (arguments.watch && !Interrupted());
  const std::chrono::duration<double> duration = steady_clock::now() - began;
  if (!arguments.output.quiet || !arguments.output.json) {
    (arguments.output.json ? std::cerr : std::cout)
        << good << " of " << polls << " polls were good, in " << Fixed(duration.count(), 1) << " s" << std::endl;
  }
  SetFlashRoot(nullptr);
  const bool complete = arguments.watch || polls == static_cast<int>(layout.devices.size());
  return complete && good == polls ? ExitCode::kGood : ExitCode::kSomeFailed;
}

}  // namespace

Verb AddDemo(CLI::App& app) {
  const auto arguments = std::make_shared<Arguments>();
  CLI::App& command = *app.add_subcommand("demo", "Poll every device of a simulated machine room and show the bytes");
  command.footer(kExamples);
  command.add_flag("--watch", arguments->watch, "Repeat until Ctrl-C, with values that drift");
  AddOutputOptions(command, arguments->output);
  return {&command, [arguments] { return Run(*arguments); }};
}

}  // namespace fieldline::tool
