#include "tools/demo.h"

#include <chrono>
#include <functional>
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
#include "tools/poller.h"
#include "tools/scratch_directory.h"
#include "tools/snapshot.h"
#include "tools/text.h"

namespace fieldline::tool {
namespace {

using std::chrono::milliseconds;
using std::chrono::steady_clock;

constexpr char kExamples[] =
    "Nothing needs to be attached: a machine room is simulated, and its devices are polled through the library as an\n"
    "application would poll them.\n\n"
    "Examples:\n"
    "  fieldline demo\n"
    "  fieldline demo --watch";

constexpr Kind kBoard = {"alarm", "alarm board", SERDAT_ALARM, "CHubAlarm", Protocol::kAlarm, 115200, 0, 0, {}};

// Long ones are shortened in the middle.
std::string ShortHex(const Bytes& bytes) {
  constexpr std::size_t kHead = 32;
  constexpr std::size_t kTail = 8;
  const std::span all(bytes);
  if (all.size() <= kHead + kTail) return Hex(all);
  return Hex(all.first(kHead)) + " ... " + Hex(all.last(kTail)) + " (" + std::to_string(all.size()) + " bytes)";
}

// The unit as an application sees it: the ports and drivers of the library, with a simulated room behind them.
class Unit {
 public:
  // Pictures go below `flash_root`.
  Unit(const sim::Room& room, std::string flash_root) : room_(room), flash_root_(std::move(flash_root)) {}

  // Polls a device and shows what came. False when it did not answer as it should.
  bool Poll(const sim::RoomDevice& device, const sim::RoomLine& line);

 private:
  bool PollDriver(const Kind& kind, const sim::RoomDevice& device, ISerBase* port);
  bool UseBoard(ISerBase& port);
  bool UseDisplay(ISerBase& port);
  bool Show(const PollResult& result, const std::function<void()>& show_values);

  const sim::Room& room_;
  const std::string flash_root_;
  Recorder recorder_;
};

ISerBase& PortOf(std::string_view line) {
  const int number = line.back() - '0';
  const ENUM_SERTYPE type = line.starts_with("ESL") ? static_cast<ENUM_SERTYPE>(number) : SER_COM;
  CHubSerFactory* const ports = CHubSerFactory::GetInstance();
  ISerBase* const port = ports != nullptr ? ports->GetHubSer(type) : nullptr;
  if (port == nullptr) throw std::bad_alloc();
  return *port;
}

bool Unit::Poll(const sim::RoomDevice& device, const sim::RoomLine& line) {
  const std::string path = room_.Path(line.name);
  const std::wstring name = std::wstring(line.name.begin(), line.name.end()) + L':';
  MapDevice(name.c_str(), path.c_str());
  std::cout << device.name << ": " << device.kind;
  if (device.address != 0) std::cout << " at address " << device.address;
  const std::string settings = line.baud != 0 ? std::to_string(line.baud) + ",n,8,1" : "";
  std::cout << " on " << line.name << ':' << settings << " = " << path << '\n';
  if (device.kind == sim::kInputsKind) return PollDriver(RequireKind("di"), device, nullptr);

  // Time-outs in ms, more generous than a line needs: the devices share the processor with the polls.
  const int per_byte = static_cast<int>(10'000 / line.baud) + 2;
  constexpr int kConstant = 500;
  ISerBase& port = PortOf(line.name);
  port.SetTimeout(per_byte, kConstant);
  OpenLine open_line(port, recorder_);
  if (device.kind == "alarm" || device.kind == "display") {
    port.SetPort(line.name.back() - '0' + 1);  // COM3: is port 4
    port.SetBaud(static_cast<int>(line.baud));
    return device.kind == "alarm" ? UseBoard(port) : UseDisplay(port);
  }
  const Line opened = {.shown = std::string(line.name) + ':' + settings,
                       .device = name,
                       .definition = name + std::wstring(settings.begin(), settings.end()),
                       .timeout = {}};
  if (const std::optional<Failure> failure = open_line.Open(opened)) {
    std::cout << "  " << failure->message << "\n\n";
    return false;
  }
  return PollDriver(RequireKind(device.kind), device, &port);
}

bool Unit::PollDriver(const Kind& kind, const sim::RoomDevice& device, ISerBase* port) {
  CSensorBase* const driver = DriverOf(kind);
  if (driver == nullptr) throw std::bad_alloc();
  PollResult result = PollOnce(kind, *driver, port, device.address, recorder_);
  std::optional<Snapshot> snapshot;
  if (IsCamera(kind)) snapshot = FindSnapshot(kind, flash_root_, driver->m_pData, &result);
  return Show(result, [&] {
    PrintRecord(std::cout, kind.fields, driver->m_pData);
    if (snapshot) std::cout << "  " << snapshot->path << ", " << snapshot->size << " bytes\n";
  });
}

bool Unit::UseBoard(ISerBase& port) {
  CHubAlarm* const board = CHubAlarm::GetInstance();
  if (board == nullptr) throw std::bad_alloc();
  DEVICE_STATUS status{};
  BYTE verdict = 0;
  board->InitHandler(&port);
  const PollResult result = PollOnce(kBoard, &port, 0, recorder_, [&] {
    char number[] = "5550100";
    char text[] = "Water under the floor";
    const bool good = board->Alm_ctrl_init() == 1 && board->Alm_get_status(&status) == 0 &&
                      board->Alm_send_sms(number, text, &verdict) == 0;
    return good ? 1 : 0;
  });
  const bool good = Show(result, [&] {
    std::cout << "  status      " << Hex(status.bytes) << "\n  sms_result  " << static_cast<int>(verdict) << '\n';
  });
  board->InitHandler(nullptr);
  CHubAlarm::FreeInstance();
  return good;
}

bool Unit::UseDisplay(ISerBase& port) {
  CHubMonitor* const display = CHubMonitor::GetInstance();
  if (display == nullptr) throw std::bad_alloc();
  CHubMonitor::InitHandler(&port);
  recorder_.Clear();
  PollResult result;
  const auto began = steady_clock::now();
  display->diwen_init();
  if (display->diwen_set_data(0x1000, 235) == 0 || display->diwen_set_display(1) == 0) {
    result.failure = Failure{ExitCode::kNoLine, "not_sent", "the frame could not be sent"};
  }
  result.duration = steady_clock::now() - began;
  result.exchanges = recorder_.Exchanges();
  CHubMonitor::InitHandler(nullptr);
  CHubMonitor::FreeInstance();
  return Show(result, [] {});
}

bool Unit::Show(const PollResult& result, const std::function<void()>& show_values) {
  for (const Exchange& exchange : result.exchanges) {
    std::cout << "  -> " << ShortHex(exchange.request) << '\n';
    if (!exchange.reply.empty()) std::cout << "  <- " << ShortHex(exchange.reply) << '\n';
  }
  if (result.failure) {
    std::cout << "  " << result.failure->message << '\n';
  } else {
    show_values();
  }
  std::cout << "  " << Fixed(result.duration.count(), 1) << " ms\n" << std::endl;
  return !result.failure;
}

ExitCode Run(bool watch) {
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
  Unit unit(room, flash_root);
  int good = 0;
  int polls = 0;
  const auto began = steady_clock::now();
  do {
    for (const sim::RoomDevice& device : layout.devices) {
      if (Interrupted()) break;
      if (watch) player.Advance(std::chrono::floor<milliseconds>(steady_clock::now() - began));
      if (unit.Poll(device, sim::LineOf(layout, device))) ++good;
      ++polls;
    }
  } while (watch && !Interrupted());
  const std::chrono::duration<double> duration = steady_clock::now() - began;
  std::cout << good << " of " << polls << " polls were answered as they should be, in " << Fixed(duration.count(), 1)
            << " s" << std::endl;
  SetFlashRoot(nullptr);
  const bool complete = watch || polls == static_cast<int>(layout.devices.size());
  return complete && good == polls ? ExitCode::kGood : ExitCode::kSomeFailed;
}

}  // namespace

Verb AddDemo(CLI::App& app) {
  const auto watch = std::make_shared<bool>(false);
  CLI::App& command =
      *app.add_subcommand("demo", "Poll every device of a simulated machine room, and show what passes");
  command.footer(kExamples);
  command.add_flag("--watch", *watch, "Over and over, with values that wander, until Ctrl-C");
  return {&command, [watch] { return Run(*watch); }};
}

}  // namespace fieldline::tool
