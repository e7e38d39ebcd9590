#include "tools/demo.h"

#include <chrono>
#include <cstddef>
#include <iostream>
#include <memory>
#include <new>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <utility>

#include "fieldline/alarm/hub_alarm.h"
#include "fieldline/display/hub_monitor.h"
#include "fieldline/platform/console.h"
#include "fieldline/platform/device_name.h"
#include "fieldline/platform/file.h"
#include "fieldline/serial/hub_ser_factory.h"
#include "sim/room.h"
#include "sim/scenario.h"
#include "tools/kinds.h"
#include "tools/output_option.h"
#include "tools/picture_progress.h"
#include "tools/poller.h"
#include "tools/report.h"
#include "tools/scratch_directory.h"
#include "tools/snapshot.h"
#include "tools/text.h"

namespace fieldline::tool {
namespace {

using nlohmann::ordered_json;
using std::chrono::milliseconds;
using std::chrono::steady_clock;

constexpr char kExamples[] =
    "Nothing needs to be attached: a machine room is simulated, and its devices are polled through the library as an\n"
    "application would poll them.\n\n"
    "Examples:\n"
    "  fieldline demo\n"
    "  fieldline demo --watch\n"
    "  fieldline demo --json --quiet | jq '{device, duration_ms}'";

struct Arguments {
  bool watch = false;
  OutputArguments output;
};

// What is asked of the alarm board, as a record.
struct BoardAnswers {
  DEVICE_STATUS status;
  BYTE sms_result;
};

constexpr Field kBoardFields[] = {
    {"status",     offsetof(BoardAnswers, status),     FieldType::kU8, 4, 0},
    {"sms_result", offsetof(BoardAnswers, sms_result), FieldType::kU8, 1, 0},
};

// Long ones are shortened in the middle.
std::string ShortHex(const Bytes& bytes) {
  constexpr std::size_t kHead = 32;
  constexpr std::size_t kTail = 8;
  const std::span all(bytes);
  if (all.size() <= kHead + kTail) return Hex(all);
  return Hex(all.first(kHead)) + " ... " + Hex(all.last(kTail)) + " (" + std::to_string(all.size()) + " bytes)";
}

// A device of the simulated room, as it is polled.
struct Target {
  const Kind& kind;
  const sim::RoomDevice& device;
};

// The unit as an application sees it: the ports and drivers of the library, with a simulated room behind them.
class Unit {
 public:
  // Pictures go below `flash_root`.
  Unit(const sim::Room& room, std::string flash_root, const Arguments& arguments)
      : room_(room), flash_root_(std::move(flash_root)), arguments_(arguments) {}

  // Polls a device and shows what came. False when it did not answer as it should.
  bool Poll(const sim::RoomDevice& device, const sim::RoomLine& line);

 private:
  bool PollDriver(const Target& target, ISerBase* port);
  bool UseBoard(const Target& target, ISerBase& port);
  bool UseDisplay(const Target& target, ISerBase& port);
  bool Show(const Target& target, const PollResult& result, Fields fields, const BYTE* record,
            const std::optional<Snapshot>& snapshot = {}) const;

  const sim::Room& room_;
  const std::string flash_root_;
  const Arguments& arguments_;
  TraceOutput trace_{arguments_.output.trace};
  Recorder recorder_{&trace_};
};

ISerBase& PortOf(std::string_view line) {
  const int number = line.back() - '0';
  const ENUM_SERTYPE type = line.starts_with("ESL") ? static_cast<ENUM_SERTYPE>(number) : SER_COM;
  CHubSerFactory* const ports = CHubSerFactory::GetInstance();
  ISerBase* const port = ports != nullptr ? ports->GetHubSer(type) : nullptr;
  if (port == nullptr) throw std::bad_alloc();
  return *port;
}

const Kind& KindOf(const sim::RoomDevice& device) {
  if (device.kind == sim::kInputsKind) return RequireKind("di");
  if (device.kind == kAlarmBoard.name) return kAlarmBoard;
  if (device.kind == kDisplay.name) return kDisplay;
  return RequireKind(device.kind);
}

bool Unit::Poll(const sim::RoomDevice& device, const sim::RoomLine& line) {
  const std::string path = room_.Path(line.name);
  const std::wstring name = std::wstring(line.name.begin(), line.name.end()) + L':';
  MapDevice(name.c_str(), path.c_str());
  const std::string settings = line.baud != 0 ? std::to_string(line.baud) + ",n,8,1" : "";
  const std::string shown = std::string(line.name) + ':' + settings;
  const Target target = {KindOf(device), device};
  if (!arguments_.output.json) {
    std::cout << device.name << ": " << Subject(target.kind, device.address) << " on " << shown << " = " << path
              << std::endl;
  }
  if (device.kind == sim::kInputsKind) return PollDriver(target, nullptr);

  // Time-outs in ms, more generous than a line needs: the devices share the processor with the polls.
  const int per_byte = static_cast<int>(10'000 / line.baud) + 2;
  constexpr int kConstant = 500;
  ISerBase& port = PortOf(line.name);
  port.SetTimeout(per_byte, kConstant);
  OpenLine open_line(port, recorder_);
  if (&target.kind == &kAlarmBoard || &target.kind == &kDisplay) {
    port.SetPort(line.name.back() - '0' + 1);  // COM3: is port 4
    port.SetBaud(static_cast<int>(line.baud));
    return &target.kind == &kAlarmBoard ? UseBoard(target, port) : UseDisplay(target, port);
  }
  const Line opened = {.shown = shown,
                       .device = name,
                       .definition = name + std::wstring(settings.begin(), settings.end()),
                       .timeout = {}};
  if (const std::optional<Failure> failure = open_line.Open(opened)) {
    return Show(target, FailedToOpen(*failure), {}, nullptr);
  }
  return PollDriver(target, &port);
}

bool Unit::PollDriver(const Target& target, ISerBase* port) {
  CSensorBase* const driver = DriverOf(target.kind);
  if (driver == nullptr) throw std::bad_alloc();
  PictureProgress progress(port, arguments_.output.ShowsProgress());
  progress.Begin(std::string(target.device.name));
  PollResult result = PollOnce(target.kind, *driver, port, target.device.address, recorder_);
  progress.End();
  std::optional<Snapshot> snapshot;
  if (IsCamera(target.kind)) snapshot = FindSnapshot(target.kind, flash_root_, driver->m_pData, &result);
  return Show(target, result, target.kind.fields, driver->m_pData, snapshot);
}

bool Unit::UseBoard(const Target& target, ISerBase& port) {
  CHubAlarm* const board = CHubAlarm::GetInstance();
  if (board == nullptr) throw std::bad_alloc();
  BoardAnswers answers{};
  board->InitHandler(&port);
  const PollResult result = PollOnce(kAlarmBoard, &port, 0, recorder_, [&] {
    char number[] = "5550100";
    char text[] = "Water under the floor";
    const bool good = board->Alm_ctrl_init() == 1 && board->Alm_get_status(&answers.status) == 0 &&
                      board->Alm_send_sms(number, text, &answers.sms_result) == 0;
    return good ? 1 : 0;
  });
  board->InitHandler(nullptr);
  CHubAlarm::FreeInstance();
  return Show(target, result, kBoardFields, reinterpret_cast<const BYTE*>(&answers));
}

// A display never answers: all that can fail is the sending.
bool Unit::UseDisplay(const Target& target, ISerBase& port) {
  CHubMonitor* const display = CHubMonitor::GetInstance();
  if (display == nullptr) throw std::bad_alloc();
  CHubMonitor::InitHandler(&port);
  recorder_.Clear();
  PollResult result;
  result.time = std::chrono::system_clock::now();
  const auto began = steady_clock::now();
  display->diwen_init();
  if (display->diwen_set_data(0x1000, 235) == 0 || display->diwen_set_display(1) == 0) {
    result.failure = Failure{ExitCode::kNoLine, "not_sent", "the frame could not be sent"};
  }
  result.duration = steady_clock::now() - began;
  result.exchanges = recorder_.Exchanges();
  CHubMonitor::InitHandler(nullptr);
  CHubMonitor::FreeInstance();
  return Show(target, result, {}, nullptr);
}

bool Unit::Show(const Target& target, const PollResult& result, Fields fields, const BYTE* record,
                const std::optional<Snapshot>& snapshot) const {
  if (arguments_.output.json) {
    ordered_json json = PollHead(target.kind, target.device.address, target.device.line, target.device.name, result);
    AddOutcome(json, result, fields, record);
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
    PrintRecord(std::cout, fields, record);
    if (snapshot) std::cout << "  " << snapshot->path << ", " << snapshot->size << " bytes\n";
  }
  std::cout << "  " << Fixed(result.duration.count(), 1) << " ms\n" << std::endl;
  return !result.failure;
}

ExitCode Run(const Arguments& arguments) {
  CatchInterrupts();
  const ScratchDirectory scratch;
  const std::string flash_root = scratch.Path().string();
  UseFlashRoot(flash_root);
  const sim::RoomLayout layout = sim::MachineRoom();
  sim::Room room(layout, scratch.Path());
  if (!room.Start()) {
    std::cerr << "fieldline: " << Alert("the system has no pseudo-terminal left") << '\n';
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
        << good << " of " << polls << " polls were answered as they should be, in " << Fixed(duration.count(), 1)
        << " s" << std::endl;
  }
  SetFlashRoot(nullptr);
  const bool complete = arguments.watch || polls == static_cast<int>(layout.devices.size());
  return complete && good == polls ? ExitCode::kGood : ExitCode::kSomeFailed;
}

}  // namespace

Verb AddDemo(CLI::App& app) {
  const auto arguments = std::make_shared<Arguments>();
  CLI::App& command =
      *app.add_subcommand("demo", "Poll every device of a simulated machine room, and show what passes");
  command.footer(kExamples);
  command.add_flag("--watch", arguments->watch, "Over and over, with values that wander, until Ctrl-C");
  AddOutputOptions(command, arguments->output);
  return {&command, [arguments] { return Run(*arguments); }};
}

}  // namespace fieldline::tool
