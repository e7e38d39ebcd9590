#include "tools/sim.h"

#include <iostream>
#include <memory>
#include <mutex>
#include <optional>
#include <random>
#include <string>
#include <string_view>
#include <vector>

#include "fieldline/platform/console.h"
#include "sim/catalog.h"
#include "sim/line.h"
#include "tools/fault_option.h"
#include "tools/kinds.h"
#include "tools/number_option.h"
#include "tools/text.h"

namespace fieldline::tool {
namespace {

constexpr char kExamples[] =
    "Examples:\n"
    "  fieldline sim --list\n"
    "  fieldline sim envir --set temperature=31.5 --set humidity=80\n"
    "  fieldline sim envir elec --one-line --baud 9600 --drift\n"
    "  fieldline sim ups --fault corrupt:every=3 --fault delay:p=0.1,ms=800 --seed 7";

struct Arguments {
  std::vector<std::string> kinds;
  std::optional<int> address;
  std::vector<std::string> values;
  std::vector<std::string> faults;
  std::optional<int> baud;
  std::optional<int> seed;
  bool drift = false;
  bool one_line = false;
  bool trace = false;
  bool list = false;
};

struct SimulatedDevice {
  const sim::Kind* kind;
  int address;
  std::unique_ptr<sim::Device> made;  // until a line takes it
  sim::Values* values;
};

const sim::Kind& RequireSimulated(const std::string& name) {
  if (const sim::Kind* const kind = sim::FindKind(name)) return *kind;
  std::vector<std::string> names;
  for (const sim::Kind& kind : sim::Catalog()) names.emplace_back(kind.name);
  throw UsageError("no device of the kind \"" + name + "\" can be simulated; there are " + Join(names));
}

void ListKinds() {
  for (const sim::Kind& kind : sim::Catalog()) {
    std::cout << kind.name << ": " << kind.description << ", " << kind.baud << " bit/s\n";
    const std::unique_ptr<sim::Device> device = kind.make(static_cast<BYTE>(kind.address));
    for (const sim::Value& value : device->values().List()) {
      std::cout << "  " << value.name << " = " << sim::ToText(value);
      if (!value.unit.empty()) std::cout << ' ' << value.unit;
      if (value.read_only) {
        std::cout << " (read only)";
      } else if (value.max_length > 0) {
        std::cout << " (text of up to " << value.max_length << " bytes)";
      } else {
        std::cout << " (" << Fixed(value.minimum, value.decimals) << " to " << Fixed(value.maximum, value.decimals)
                  << ')';
      }
      std::cout << '\n';
    }
  }
}

// Devices that share a line stand at addresses in a row.
std::vector<SimulatedDevice> MakeDevices(const Arguments& arguments) {
  constexpr int kMostAddress = 255;
  std::vector<SimulatedDevice> devices;
  for (const std::string& name : arguments.kinds) {
    const sim::Kind& kind = RequireSimulated(name);
    int address = arguments.address.value_or(kind.address);
    if (arguments.one_line) {
      if (kind.address == 0)
        throw UsageError(name + " has no address and needs a line to itself; leave out --one-line");
      address = arguments.address.value_or(devices.empty() ? kind.address : devices.front().address) +
                static_cast<int>(devices.size());
    }
    if (address > kMostAddress) throw UsageError("the last device's address would be above 255; begin lower");
    std::unique_ptr<sim::Device> device = kind.make(static_cast<BYTE>(address));
    sim::Values* const values = &device->values();
    devices.push_back({&kind, address, std::move(device), values});
  }
  return devices;
}

// NAME=VALUE sets the value in every device that has it, KIND.NAME=VALUE in those of the kind alone.
void SetValue(const std::string& setting, const std::vector<SimulatedDevice>& devices) {
  const std::size_t equals = setting.find('=');
  if (equals == std::string::npos) {
    throw UsageError("--set \"" + setting + "\": write NAME=VALUE, such as temperature=21.5");
  }
  std::string name = setting.substr(0, equals);
  const std::string text = setting.substr(equals + 1);
  std::string kind;
  if (const std::size_t dot = name.find('.'); dot != std::string::npos) {
    kind = name.substr(0, dot);
    name.erase(0, dot + 1);
  }
  bool found = false;
  std::vector<std::string> names;
  for (const SimulatedDevice& device : devices) {
    if (!kind.empty() && device.kind->name != kind) continue;
    for (const sim::Value& value : device.values->List()) {
      names.push_back(value.name);
      if (value.name != name) continue;
      found = true;
      std::string error;
      if (!device.values->Set(name, text, &error)) throw UsageError("--set \"" + setting + "\": " + error);
    }
  }
  if (!found) throw UsageError("--set \"" + setting + "\": there is no such value; there are " + Join(names));
}

std::string_view TrafficMark(sim::Traffic traffic) {
  switch (traffic) {
    case sim::Traffic::kRequest:
      return " -> ";
    case sim::Traffic::kUnclaimed:
      return " -> (nobody's) ";
    case sim::Traffic::kGarbled:
      return " -> (wrong speed) ";
    default:
      return " <- ";
  }
}

// Called on the lines' own threads.
void Trace(const std::string& path, sim::Traffic traffic, std::span<const BYTE> bytes) {
  static std::mutex mutex;
  const std::lock_guard lock(mutex);
  std::cerr << ClockTime(std::chrono::system_clock::now()) << ' ' << path << TrafficMark(traffic) << Hex(bytes) << '\n';
}

void Announce(const SimulatedDevice& device, const std::string& path, std::uint32_t baud) {
  std::cout << device.kind->name;
  if (device.kind->address != 0) std::cout << " at address " << device.address;
  std::cout << " on " << path << ", " << baud << " bit/s" << std::endl;
  if (FindKind(device.kind->name) == nullptr) return;
  std::cout << "  fieldline poll " << device.kind->name;
  if (device.kind->address != 0) std::cout << " --address " << device.address;
  std::cout << " --port " << path << ':' << baud << ",n,8,1" << std::endl;
}

ExitCode Run(const Arguments& arguments) {
  if (arguments.list) {
    ListKinds();
    return ExitCode::kGood;
  }
  if (arguments.kinds.empty()) throw UsageError("which devices? write their kinds, or --list to see them");
  std::vector<SimulatedDevice> devices = MakeDevices(arguments);
  const int seed = arguments.seed.value_or(static_cast<int>(std::random_device()() >> 1));
  for (const std::string& setting : arguments.values) SetValue(setting, devices);
  std::vector<sim::FaultRule> rules;
  for (const std::string& fault : arguments.faults) rules.push_back(ParseFault(fault));

  CatchInterrupts();
  std::cout << "seed " << seed << '\n';
  std::vector<std::unique_ptr<sim::Line>> lines;
  std::vector<std::string> paths;  // as the lines' listeners see them; filled before the lines are used
  const std::size_t line_count = arguments.one_line ? 1 : devices.size();
  paths.resize(line_count);
  for (std::size_t i = 0; i < line_count; ++i) {
    const auto first = devices.begin() + static_cast<std::ptrdiff_t>(i);
    const auto last = arguments.one_line ? devices.end() : first + 1;
    const std::uint32_t baud = arguments.baud ? static_cast<std::uint32_t>(*arguments.baud) : first->kind->baud;
    sim::Line& line = *lines.emplace_back(std::make_unique<sim::Line>(sim::LineOptions{.baud = baud}));
    for (auto device = first; device != last; ++device) {
      device->values->SeedDrift(static_cast<std::uint32_t>(seed));
      line.Add(std::move(device->made));
    }
    line.SetFaults(sim::Faults(static_cast<std::uint32_t>(seed), rules));
    if (arguments.trace) {
      line.SetListener(
          [&path = paths[i]](sim::Traffic traffic, std::span<const BYTE> bytes) { Trace(path, traffic, bytes); });
    }
    if (!line.Start()) {
      std::cerr << "fieldline: " << Alert("the system has no pseudo-terminal left") << '\n';
      return ExitCode::kNoLine;
    }
    paths[i] = line.Path();
    for (auto device = first; device != last; ++device) Announce(*device, paths[i], baud);
  }

  constexpr int kStep = 1000;  // ms
  std::cerr << "Ctrl-C ends the simulation\n";
  while (SleepUnlessInterrupted(kStep)) {
    if (!arguments.drift) continue;
    for (const SimulatedDevice& device : devices) device.values->Drift(kStep / 1000.0);
  }
  return ExitCode::kGood;
}

}  // namespace

Verb AddSim(CLI::App& app) {
  const auto arguments = std::make_shared<Arguments>();
  CLI::App& command = *app.add_subcommand("sim", "Simulate devices, each on a line of its own, until Ctrl-C");
  command.footer(kExamples);
  command.add_option("KIND", arguments->kinds, "Kinds of devices");
  AddNumber(command, "--address", 1, 255, "Bus address; of the first device with --one-line [usual one of the kind]",
            [arguments](int address) { arguments->address = address; });
  command.add_option("--set", arguments->values, "Value of a device; KIND.NAME=VALUE for one kind alone")
      ->type_name("NAME=VALUE")
      ->allow_extra_args(false);
  command.add_option("--fault", arguments->faults, kFaultForm)->type_name("FAULT")->allow_extra_args(false);
  AddNumber(command, "--baud", 50, 4'000'000, "Speed of the devices, bit/s [usual one of the kind]",
            [arguments](int baud) { arguments->baud = baud; });
  AddNumber(command, "--seed", 0, 2'147'483'647, "Of faults and drift; the same seed repeats a run [random]",
            [arguments](int seed) { arguments->seed = seed; });
  command.add_flag("--drift", arguments->drift, "Let the values wander");
  command.add_flag("--one-line", arguments->one_line, "All devices on one line, at addresses in a row");
  command.add_flag("--trace", arguments->trace, "Show requests and replies on standard error; times are UTC");
  command.add_flag("--list", arguments->list, "List the kinds and their values, and end");
  return {&command, [arguments] { return Run(*arguments); }};
}

}  // namespace fieldline::tool
