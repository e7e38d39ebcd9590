#include <algorithm>
#include <chrono>
#include <deque>
#include <filesystem>
#include <iostream>
#include <memory>
#include <optional>
#include <random>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "fieldline/platform/console.h"
#include "polling/line/trace_output.h"
#include "polling/read_file.h"
#include "polling/text.h"
#include "sim/devices/imaging/picture_device.h"
#include "sim/fault_text.h"
#include "sim/room.h"
#include "sim/scenario.h"
#include "sim/scratch_directory.h"
#include "tools/options/number_option.h"
#include "tools/options/output_option.h"
#include "tools/output/report.h"
#include "tools/simulation/link_directory.h"
#include "tools/simulation/scenario_file.h"
#include "tools/simulation/sim_report.h"
#include "tools/verbs/verbs.h"

namespace fieldline::tool {
namespace {

using nlohmann::ordered_json;
using std::chrono::milliseconds;

constexpr char kExamples[] =
    "Without KIND, or with --all, simulates a whole machine room.\n\n"
    "Examples:\n"
    "  fieldline sim --all --links /tmp/room --scenario examples/scenarios/bad-night.json\n"
    "  fieldline sim --list\n"
    "  fieldline sim envir --set temperature=31.5 --set humidity=80\n"
    "  fieldline sim envir elec --one-line --baud 9600 --drift\n"
    "  fieldline sim ups --fault corrupt:every=3 --fault delay:p=0.1,ms=800 --seed 7";

struct Arguments {
  std::vector<std::string> kinds;
  bool all = false;
  std::optional<int> address;
  std::vector<std::string> values;
  std::vector<std::string> faults;
  std::optional<int> baud;
  std::optional<int> seed;
  std::string scenario;
  std::string links;
  std::string image;
  bool drift = false;
  bool one_line = false;
  OutputArguments output;
  bool list = false;
};

// A layout for the kinds that were given.
struct OwnLayout {
  std::deque<std::string> names;  // the layout points into these
  std::vector<sim::RoomLine> lines;
  std::vector<sim::RoomDevice> devices;
};

const Kind& RequireSimulated(const std::string& name) {
  if (const Kind* const kind = FindKind(name)) return *kind;
  std::vector<std::string> names;
  for (const Kind& kind : kKinds) names.emplace_back(kind.name);
  const std::string guess = DidYouMean(name, names);
  throw UsageError("no device of the kind \"" + name + "\" can be simulated" +
                   (guess.empty() ? "; there are " + Join(names) : guess));
}

// A device is named after its kind, and a line after its first device: envir, the second one envir-2. Devices that
// share a line have consecutive addresses.
OwnLayout LayOut(const Arguments& arguments) {
  constexpr int kMostAddress = 255;
  OwnLayout layout;
  for (const std::string& name : arguments.kinds) {
    const Kind& kind = RequireSimulated(name);
    int address = arguments.address.value_or(kind.address);
    if (arguments.one_line) {
      if (kind.address == 0) {
        throw UsageError(name + " has no address and needs a line to itself; leave out --one-line");
      }
      address = arguments.address.value_or(layout.devices.empty() ? kind.address : layout.devices.front().address) +
                static_cast<int>(layout.devices.size());
    }
    if (address > kMostAddress) throw UsageError("the last device's address would be above 255; start lower");
    if (kind.address == 0) address = 0;

    const auto twins = std::ranges::count(layout.devices, &kind, &sim::RoomDevice::kind);
    const std::string& device = layout.names.emplace_back(twins == 0 ? name : name + '-' + std::to_string(twins + 1));
    if (layout.lines.empty() || !arguments.one_line) {
      const std::uint32_t baud = static_cast<std::uint32_t>(kind.HasLine() ? arguments.baud.value_or(kind.baud) : 0);
      layout.lines.push_back({device, baud});
    }
    layout.devices.push_back({device, layout.lines.back().name, &kind, address});
  }
  return layout;
}

// NAME=VALUE sets the value in every device that has it. WHICH.NAME=VALUE sets it only in devices of that kind or name.
void SetValue(const std::string& setting, const sim::RoomLayout& layout, sim::Room& room) {
  const std::size_t equals = setting.find('=');
  if (equals == std::string::npos) {
    throw UsageError("--set \"" + setting + "\": write NAME=VALUE, such as temperature=21.5");
  }
  std::string name = setting.substr(0, equals);
  const std::string text = setting.substr(equals + 1);
  std::string which;
  if (const std::size_t dot = name.find('.'); dot != std::string::npos) {
    which = name.substr(0, dot);
    name.erase(0, dot + 1);
  }
  bool found = false;
  std::vector<std::string> names;
  for (const sim::RoomDevice& device : layout.devices) {
    if (!which.empty() && device.kind->name != which && device.name != which) continue;
    for (const sim::Value& value : room.FindValues(device.name)->List()) {
      if (std::ranges::find(names, value.name) == names.end()) names.push_back(value.name);
      if (value.name != name) continue;
      found = true;
      std::string error;
      if (!room.Set(device.name, name, text, &error)) throw UsageError("--set \"" + setting + "\": " + error);
    }
  }
  if (!found) throw UsageError("--set \"" + setting + "\": there is no such value; there are " + Join(names));
}

// Makes every camera of the room show the picture in the file.
void ShowPicture(const std::string& path, const sim::RoomLayout& layout, sim::Room& room) {
  constexpr std::size_t kMost = 65535;
  const std::string content = ReadFile(path, kMost);
  const sim::Bytes picture(content.begin(), content.end());
  bool found = false;
  for (const sim::RoomDevice& device : layout.devices) {
    auto* const camera = dynamic_cast<sim::PictureDevice*>(room.FindDevice(device.name));
    if (camera == nullptr) continue;
    found = true;
    if (!camera->Show(picture)) throw UsageError("--image " + path + ": a JPEG file of at most 65535 bytes is needed");
  }
  if (!found) throw UsageError("--image is for camera and camera-3ge");
}

sim::FaultRule RequireFault(const std::string& text) {
  std::string error;
  if (const std::optional<sim::FaultRule> rule = sim::ParseFault(text, &error)) return *rule;
  throw UsageError("--fault \"" + text + "\": " + error);
}

void RefuseWithRoom(bool given, const char* option) {
  if (given) throw UsageError(std::string(option) + " needs a KIND; the machine room has a fixed layout");
}

// Prints an event, and updates the links.
void Report(const sim::ScenarioEvent& event, const sim::Room& room, LinkDirectory* links, bool json) {
  ordered_json object;
  object["schema"] = kJsonSchema;
  object["time"] = IsoTime(std::chrono::system_clock::now());
  object["at_ms"] = event.at.count();
  object["event"] = event.note;
  object["paths"] = ordered_json::object();
  std::string text;
  if (event.at.count() > 0) {
    text = Fixed(static_cast<double>(event.at.count()) / 1000, 1) + " s  " + ForTerminal(event.note) + '\n';
  }
  for (const auto* lines : {&event.unplugged, &event.replugged}) {
    for (const std::string& line : *lines) {
      const std::string path = room.Path(line);
      if (links != nullptr && !links->Point(line, path)) {
        Complain("\"" + links->Path(line) + "\" was replaced by someone else; it stays unchanged");
      }
      text += "  " + line + (path.empty() ? " is unplugged" : " is " + path) + '\n';
      object["paths"][line] = path.empty() ? ordered_json() : ordered_json(path);
    }
  }
  if (json) {
    PrintJson(object);
  } else {
    std::cout << text << std::flush;
  }
}

ExitCode Run(const Arguments& arguments) {
  if (arguments.list) {
    arguments.output.json ? ListSimulatedAsJson() : ListSimulated();
    return ExitCode::kGood;
  }
  const bool whole_room = arguments.kinds.empty();
  if (arguments.all && !whole_room) throw UsageError("--all includes every kind; leave out the kinds, or --all");
  if (whole_room) {
    RefuseWithRoom(arguments.address.has_value(), "--address");
    RefuseWithRoom(arguments.baud.has_value(), "--baud");
    RefuseWithRoom(arguments.one_line, "--one-line");
  }
  const OwnLayout own = LayOut(arguments);
  const sim::RoomLayout layout = whole_room ? sim::MachineRoom() : sim::RoomLayout{own.lines, own.devices};

  sim::Scenario scenario;
  if (!arguments.scenario.empty()) scenario = ReadScenario(arguments.scenario, layout);
  scenario.drift |= arguments.drift;
  std::uint32_t seed = scenario.seed.value_or(std::random_device()() >> 1);
  if (arguments.seed) seed = static_cast<std::uint32_t>(*arguments.seed);
  std::vector<sim::FaultRule> rules;
  for (const std::string& fault : arguments.faults) rules.push_back(RequireFault(fault));
  std::optional<LinkDirectory> links;
  if (!arguments.links.empty()) {
    links.emplace(arguments.links);
    for (const sim::RoomLine& line : layout.lines) links->RequireFree(line.name);
  }

  TraceOutput trace(arguments.output.trace);
  // The unit's own inputs are simulated by a file.
  std::optional<sim::ScratchDirectory> scratch;
  if (!std::ranges::all_of(layout.devices, [](const sim::RoomDevice& device) { return device.kind->HasLine(); })) {
    scratch.emplace();
  }
  const std::filesystem::path scratch_path = scratch ? scratch->Path() : std::filesystem::path();
  sim::Room room(layout, scratch_path);
  room.Seed(seed);
  for (const sim::RoomLine& line : layout.lines) {
    sim::Line* const serial = room.FindLine(line.name);
    if (serial == nullptr) continue;
    room.SetFaults(line.name, rules);
    if (trace.IsWanted()) TraceLine(line.name, *serial, trace);
  }
  for (const sim::RoomDevice& device : layout.devices) {
    if (sim::Device* const on_line = room.FindDevice(device.name)) {
      ShowWhatArrives(device.name, *on_line, arguments.output.json);
    }
  }
  if (!arguments.image.empty()) ShowPicture(arguments.image, layout, room);
  if (!room.Start()) {
    Complain(StartFailure(scratch_path));
    return ExitCode::kNoLine;
  }

  sim::ScenarioPlayer player(scenario, room);
  player.Advance(milliseconds(0));
  for (const std::string& setting : arguments.values) SetValue(setting, layout, room);  // after the scenario's
  if (links) {
    for (const sim::RoomLine& line : layout.lines) {
      if (links->Point(line.name, room.Path(line.name))) continue;
      throw std::runtime_error("the link \"" + links->Path(line.name) + "\" can't be created");
    }
  }
  const PathOf path_of = [&](std::string_view line) { return links ? links->Path(line) : room.Path(line); };
  if (arguments.output.json) {
    ordered_json object;
    object["schema"] = kJsonSchema;
    object["seed"] = seed;
    PrintJson(object);
    PrintRoomAsJson(layout, path_of);
  } else {
    std::cout << "seed " << seed << '\n';
    (whole_room ? PrintRoom : PrintDevices)(layout, path_of);
  }
  if (!arguments.output.quiet) std::cerr << "Ctrl-C ends the simulation\n";

  constexpr int kStep = 100;  // ms
  const auto began = std::chrono::steady_clock::now();
  while (SleepUnlessInterrupted(kStep) && !IsUnread(Stream::kOutput)) {
    const auto elapsed = std::chrono::floor<milliseconds>(std::chrono::steady_clock::now() - began);
    for (const sim::ScenarioEvent& event : player.Advance(elapsed)) {
      Report(event, room, links ? &*links : nullptr, arguments.output.json);
    }
  }
  return ExitCode::kGood;
}

}  // namespace

Verb AddSim(CLI::App& app) {
  const auto arguments = std::make_shared<Arguments>();
  CLI::App& command = *app.add_subcommand("sim", "Simulate a machine room, or some devices, until Ctrl-C");
  command.footer(kExamples);
  command.add_option("KIND", arguments->kinds, "Kinds of devices, each on its own line")->type_name("");
  command.add_flag("--all", arguments->all, "A whole machine room (default)");
  command.add_option("--links", arguments->links, "Directory for links to the lines; removed at the end")
      ->type_name("DIR");
  command.add_option("--scenario", arguments->scenario, "Scenario file, see docs/scenarios.md")->type_name("FILE");
  AddNumber(command, "--address", 1, 255, "Bus address; of the first device with --one-line [usual one of the kind]",
            [arguments](int address) { arguments->address = address; });
  command.add_option("--set", arguments->values, "Value of a device; KIND.NAME=VALUE for one kind or device only")
      ->type_name("NAME=VALUE")
      ->allow_extra_args(false);
  command.add_option("--image", arguments->image, "JPEG file that cameras show instead of a clock")->type_name("FILE");
  command.add_option("--fault", arguments->faults, sim::kFaultForm)->type_name("FAULT")->allow_extra_args(false);
  AddNumber(command, "--baud", 50, 4'000'000, "Speed of the devices, bit/s [usual one of the kind]",
            [arguments](int baud) { arguments->baud = baud; });
  AddNumber(command, "--seed", 0, 2'147'483'647, "Seed of faults and drift; the same seed repeats a run [random]",
            [arguments](int seed) { arguments->seed = seed; });
  command.add_flag("--drift", arguments->drift, "Let the values drift");
  command.add_flag("--one-line", arguments->one_line, "All devices on one line, at consecutive addresses");
  AddOutputOptions(command, arguments->output);
  command.add_flag("--list", arguments->list, "List the kinds and their values, then end");
  return {&command, [arguments] { return Run(*arguments); }};
}

}  // namespace fieldline::tool
