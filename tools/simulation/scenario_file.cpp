#include "tools/simulation/scenario_file.h"

#include <algorithm>
#include <utility>

#include "polling/site/json_file.h"
#include "polling/text.h"
#include "sim/fault_text.h"

namespace fieldline::tool {
namespace {

using namespace std::chrono_literals;

constexpr long kLargest = 2'147'483'647;

class Reader {
 public:
  explicit Reader(const sim::RoomLayout& layout) : layout_(layout), room_(layout, {}) {}

  sim::Scenario ReadScenario(const JsonNode& node) {
    node.RequireObject({"seed", "drift", "set", "faults", "events"});
    sim::Scenario scenario;
    if (const auto seed = node.Find("seed")) scenario.seed = static_cast<std::uint32_t>(seed->Integer(0, kLargest));
    if (const auto drift = node.Find("drift")) scenario.drift = drift->Flag();
    sim::ScenarioEvent start{.at = 0ms, .note = "start"};
    ReadChanges(node, start);
    scenario.events.push_back(std::move(start));
    if (const auto events = node.Find("events")) {
      for (const JsonNode& event : events->Elements()) scenario.events.push_back(ReadEvent(event));
    }
    std::ranges::stable_sort(scenario.events, {}, &sim::ScenarioEvent::at);
    return scenario;
  }

 private:
  sim::ScenarioEvent ReadEvent(const JsonNode& node) {
    node.RequireObject({"at", "note", "set", "faults", "unplug", "replug"});
    sim::ScenarioEvent event{.at = node.Get("at").Duration(), .note = ""};
    if (const auto note = node.Find("note")) event.note = note->Text();
    ReadChanges(node, event);
    if (const auto lines = node.Find("unplug")) event.unplugged = ReadLines(*lines);
    if (const auto lines = node.Find("replug")) event.replugged = ReadLines(*lines);
    return event;
  }

  void ReadChanges(const JsonNode& node, sim::ScenarioEvent& event) {
    if (const auto set = node.Find("set")) event.settings = ReadSettings(*set);
    if (const auto faults = node.Find("faults")) event.faults = ReadFaults(*faults);
  }

  std::vector<sim::Setting> ReadSettings(const JsonNode& node) {
    std::vector<sim::Setting> settings;
    for (const auto& [device, values] : node.Members()) {
      sim::Values* const known = room_.FindValues(device);
      if (known == nullptr) values.Refuse("there is no such device; there are " + Join(DeviceNames()));
      for (const auto& [name, value] : values.Members()) {
        const bool usable = value.value().is_number() || value.value().is_string();
        if (!usable) value.RefuseAsNot("a number or a text");
        sim::Setting setting{device, name, value.value().is_string() ? value.Text() : value.value().dump()};
        std::string error;
        if (!known->Set(name, setting.text, &error)) value.Refuse(error);
        settings.push_back(std::move(setting));
      }
    }
    return settings;
  }

  std::vector<sim::LineFaults> ReadFaults(const JsonNode& node) {
    std::vector<sim::LineFaults> faults;
    for (const auto& [line, rules] : node.Members()) {
      RequireLine(line, rules);
      faults.push_back({line, {}});
      for (const JsonNode& rule : rules.Elements()) faults.back().rules.push_back(ReadRule(rule));
    }
    return faults;
  }

  // The conditions are those of the command line; a delay and deafness have their time.
  static sim::FaultRule ReadRule(const JsonNode& node) {
    node.RequireObject({"fault", "nth", "every", "probability", "delay"});
    const JsonNode name = node.Get("fault");
    std::optional<sim::FaultRule> rule = sim::FaultNamed(name.Text());
    if (!rule) name.RefuseAsNot(sim::FaultNames());
    const auto set = [&](const JsonNode& condition, std::string_view as, const std::string& value) {
      if (const std::string wrong = sim::SetCondition(*rule, as, value); !wrong.empty()) condition.Refuse(wrong);
    };
    for (const auto& [key, condition] : node.Members()) {
      if (key == "probability") set(condition, "p", condition.value().dump());
      if (key == "nth" || key == "every") set(condition, key, condition.value().dump());
      if (key == "delay") set(condition, "ms", std::to_string(condition.Duration().count()));
    }
    sim::HitEveryReplyByDefault(*rule);
    return *rule;
  }

  std::vector<std::string> ReadLines(const JsonNode& node) {
    std::vector<std::string> lines;
    for (const JsonNode& line : node.Elements()) {
      lines.push_back(line.Text());
      RequireLine(lines.back(), line);
    }
    return lines;
  }

  void RequireLine(const std::string& name, const JsonNode& node) {
    if (room_.FindLine(name) != nullptr) return;
    std::vector<std::string> names;
    for (const sim::RoomLine& line : layout_.lines) {
      if (room_.FindLine(line.name) != nullptr) names.emplace_back(line.name);
    }
    node.Refuse("there is no serial line \"" + name + "\"; there are " + Join(names));
  }

  std::vector<std::string> DeviceNames() const {
    std::vector<std::string> names;
    for (const sim::RoomDevice& device : layout_.devices) names.emplace_back(device.name);
    return names;
  }

  const sim::RoomLayout& layout_;
  sim::Room room_;  // never started; it only checks the values
};

}  // namespace

sim::Scenario ReadScenario(const std::string& path, const sim::RoomLayout& layout) {
  const JsonFile file(path);
  return Reader(layout).ReadScenario(file.Root());
}

}  // namespace fieldline::tool
