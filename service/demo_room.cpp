#include "service/demo_room.h"

#include <chrono>
#include <filesystem>
#include <fstream>
#include <nlohmann/json.hpp>
#include <stdexcept>
#include <system_error>

#include "polling/kind_name.h"
#include "sim/scenario.h"

namespace fieldline::service {
namespace {

using namespace std::chrono_literals;
using nlohmann::ordered_json;

constexpr auto kStep = 100ms;
constexpr auto kRound = 2min;

sim::Scenario MakeScenario() {
  const sim::FaultRule silence = {.fault = sim::Fault::kDrop, .every = 1};
  const sim::FaultRule damage = {.fault = sim::Fault::kCorrupt, .every = 2};
  sim::Scenario scenario{.drift = true};
  scenario.events = {
      {.at = 20s, .note = "silence",                .faults = {{"ESL2", {silence}}}},
      {.at = 40s, .note = "damaged replies",        .faults = {{"ESL6", {damage}}} },
      {.at = 50s, .note = "an adapter is pulled",   .unplugged = {"ESL5"}          },
      {.at = 65s, .note = "it is plugged in again", .replugged = {"ESL5"}          },
      {.at = 70s, .note = "no damage any more",     .faults = {{"ESL6", {}}}       },
      {.at = 80s, .note = "no silence any more",    .faults = {{"ESL2", {}}}       },
  };
  return scenario;
}

// The units of the probes' values, which differ from model to model, so that the library knows none.
ordered_json ProbeScale() {
  return ordered_json::parse(
      R"({"register_1": {"factor": 10, "signed": 16, "unit": "°C", "minimum": -20, "maximum": 60},
                                 "register_0": {"factor": 10, "unit": "%", "minimum": 0, "maximum": 100}})");
}

// For what fails in each round.
ordered_json Alarms() {
  return ordered_json::parse(R"({
    "doors silent": {
      "when": {"device": "doors", "silent_for": "10s"}, "severity": "high",
      "do": [{"sms": {"to": ["5550100"], "text": "{unit}: {alarm} since {since}"}},
             {"relay": {"number": 1, "state": "on", "while": "active"}}],
      "repeat": "30m", "escalate": {"after": "15m", "do": [{"dial": {"to": "5550102"}}]}},
    "battery monitor unplugged": {
      "when": {"line_gone": "ESL5"}, "do": [{"display": {"page": 3}}, {"speech": {"text": "{alarm}"}}]},
    "cold aisle too warm": {
      "when": {"device": "cold-aisle", "field": "register_1", "above": 28, "unit": "°C", "for": "10s"},
      "clear": {"below": 26.5, "for": "10s"}, "severity": "critical",
      "do": [{"sms": {"to": ["5550100", "5550101"], "text": "{unit}: {device} {value} since {since}"}},
             {"picture": {"camera": "camera-1", "mms": ["5550100"]}}]}
  })");
}

}  // namespace

DemoRoom::DemoRoom() : room_(sim::MachineRoom(), scratch_.Path()) {
  if (!room_.Start()) throw std::runtime_error("the system has no pseudo-terminal left");
  std::filesystem::create_directory(StateDirectory());
  MakeLinks();
  thread_ = std::jthread([this](const std::stop_token& stop) { Play(stop); });
}

std::string DemoRoom::StateDirectory() const { return scratch_.Path() / "state"; }

std::string DemoRoom::LinkTo(std::string_view line) const { return scratch_.Path() / ("line-" + std::string(line)); }

// A line that is plugged in again may have another path.
void DemoRoom::MakeLinks() const {
  for (const sim::RoomLine& line : sim::MachineRoom().lines) {
    const std::string link = LinkTo(line.name);
    const std::string target = room_.Path(line.name);
    std::error_code error;
    if (std::filesystem::read_symlink(link, error) == target) continue;
    std::filesystem::remove(link, error);
    if (!target.empty()) std::filesystem::create_symlink(target, link, error);
  }
}

void DemoRoom::Play(const std::stop_token& stop) {
  const sim::Scenario scenario = MakeScenario();
  while (!stop.stop_requested()) {
    sim::ScenarioPlayer player(scenario, room_);
    const auto began = std::chrono::steady_clock::now();
    for (auto played = 0ms; played < kRound && !stop.stop_requested();) {
      std::this_thread::sleep_for(kStep);
      played = std::chrono::floor<std::chrono::milliseconds>(std::chrono::steady_clock::now() - began);
      if (!player.Advance(played).empty()) MakeLinks();
    }
  }
}

Site DemoRoom::MakeSite() const {
  ordered_json site;
  site["unit"] = "demo-room";
  const sim::RoomLayout layout = sim::MachineRoom();
  for (const sim::RoomDevice& device : layout.devices) {
    ordered_json& line = site["lines"][std::string(device.line)];
    const sim::RoomLine& described = sim::LineOf(layout, device);
    line["path"] = LinkTo(device.line);
    if (described.baud != 0) line["settings"] = std::to_string(described.baud) + ",n,8,1";
    ordered_json& entry = line["devices"][std::string(device.name)];
    entry["kind"] = device.kind->name;
    if (!device.kind->IsPolled()) continue;  // used when there is an alarm
    if (device.kind->HasAddress()) entry["address"] = device.address;
    if (device.kind->number == SERDAT_ENVIR) entry["scale"] = ProbeScale();
    if (IsCamera(*device.kind)) entry["interval"] = "30s";
  }
  site["alarms"] = Alarms();
  const std::string path = scratch_.Path() / "site.json";
  std::ofstream(path) << site.dump(2);
  return ReadSite(path);
}

}  // namespace fieldline::service
