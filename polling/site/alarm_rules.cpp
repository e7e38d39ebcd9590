#include "polling/site/alarm_rules.h"

#include <algorithm>
#include <map>
#include <string>
#include <string_view>
#include <utility>

#include "polling/site/alarm_plan.h"
#include "polling/site/site.h"
#include "polling/text.h"

namespace fieldline {
namespace {

using Type = AlarmCondition::Type;

constexpr double kMostNumber = 1e12;

// Each names the test that a condition makes; a condition has one of them.
constexpr std::pair<std::string_view, Type> kTests[] = {
    {"all",         Type::kAll        },
    {"any",         Type::kAny        },
    {"above",       Type::kAbove      },
    {"below",       Type::kBelow      },
    {"outside",     Type::kOutside    },
    {"equal",       Type::kEqual      },
    {"not_equal",   Type::kNotEqual   },
    {"changed_by",  Type::kChangedBy  },
    {"implausible", Type::kImplausible},
    {"silent_for",  Type::kSilentFor  },
    {"line_gone",   Type::kLineGone   },
};

// A duration that is needed, not 0.
std::chrono::milliseconds ReadTime(const JsonNode& node) {
  const std::chrono::milliseconds time = node.Duration();
  if (time.count() == 0) node.Refuse("a time above 0 is needed");
  return time;
}

// "20:00" as minutes from midnight.
int ReadMinute(const JsonNode& node) {
  constexpr std::string_view kDigits = "0123456789";
  const std::string text = node.Text();
  const bool is_time = text.size() == 5 && text[2] == ':' && text.find_first_not_of(kDigits) == 2 &&
                       text.find_first_not_of(kDigits, 3) == text.npos;
  const int hour = is_time ? std::stoi(text) : 24;
  const int minute = is_time ? std::stoi(text.substr(3)) : 60;
  if (hour > 23 || minute > 59) node.RefuseAsNot("a time of the day from \"00:00\" to \"23:59\"");
  return 60 * hour + minute;
}

class RulesReader {
 public:
  explicit RulesReader(const Site& site) : site_(site) {
    for (const SiteLine& line : site.lines) AddLine(line);
    for (const SiteLine& camera : site.cameras) AddLine(camera);
  }

  AlarmRules Read(const std::optional<JsonNode>& alarms, const std::optional<JsonNode>& settings) {
    if (alarms) {
      std::vector<std::pair<std::string, JsonNode>> left = alarms->Members();
      for (const auto& [name, alarm] : left) CheckNames(name, alarm, *alarms);
      while (!left.empty()) ReadReady(left);
    }
    if (settings) ReadSettings(*settings);
    return std::move(rules_);
  }

 private:
  void AddLine(const SiteLine& line) {
    for (const SiteDevice& device : line.devices) {
      rules_.devices.push_back({device.name, rules_.lines.size(), {}});
      devices_.push_back(&device);
    }
    rules_.lines.push_back(line.name);
  }

  // Names become parts of addresses and topics.
  static void CheckNames(const std::string& name, const JsonNode& alarm, const JsonNode& all) {
    constexpr std::size_t kMost = 64;
    const auto is_refused = [](unsigned char c) { return c < ' ' || c == 0x7F || c == '/' || c == '+' || c == '#'; };
    if (name.empty() || name.size() > kMost || std::ranges::any_of(name, is_refused)) {
      alarm.Refuse("the name of an alarm has 1 to 64 bytes, without / + # and control characters");
    }
    const auto other = alarm.Find("depends_on");
    if (other && !all.Find(other->Text())) other->Refuse("there is no alarm \"" + other->Text() + '"');
  }

  // Reads the alarms that do not depend on one that is not read yet, and takes them out of `left`.
  void ReadReady(std::vector<std::pair<std::string, JsonNode>>& left) {
    std::vector<std::pair<std::string, JsonNode>> later;
    for (const auto& [name, alarm] : left) {
      const auto other = alarm.Find("depends_on");
      if (other && !indices_.contains(other->Text())) {
        later.emplace_back(name, alarm);
      } else {
        indices_[name] = rules_.rules.size();
        rules_.rules.push_back(ReadRule(name, alarm));
      }
    }
    if (later.size() == left.size()) {
      later.front().second.Get("depends_on").Refuse("these alarms depend on each other in a circle");
    }
    left = std::move(later);
  }

  void ReadSettings(const JsonNode& node) {
    constexpr long kMostMessages = 1000;
    node.RequireObject({"messages_per_hour", "acknowledge"});
    if (const auto messages = node.Find("messages_per_hour")) {
      rules_.settings.messages_per_hour = static_cast<int>(messages->Integer(1, kMostMessages));
    }
    if (const auto acknowledge = node.Find("acknowledge")) {
      rules_.settings.acknowledge = ReadCondition(*acknowledge, false);
      if (!IsOfNumber(rules_.settings.acknowledge->type)) acknowledge->Refuse("a test of a number is needed");
    }
  }

  AlarmRule ReadRule(const std::string& name, const JsonNode& node) {
    node.RequireObject({"when", "clear", "between", "depends_on", "severity", "do", "repeat", "until", "escalate"});
    const JsonNode when = node.Get("when");
    AlarmRule rule{
        .name = name, .when = ReadCondition(when, true), .clear = {}, .between = {}, .depends_on = {}, .plan = {}};
    if (const auto delay = when.Find("for")) rule.on_delay = delay->Duration();
    if (const auto clear = node.Find("clear")) ReadClear(*clear, when, rule);
    if (const auto between = node.Find("between")) rule.between = ReadHours(*between);
    if (const auto other = node.Find("depends_on")) rule.depends_on = indices_.at(other->Text());
    if (const auto severity = node.Find("severity")) rule.severity = ReadSeverity(*severity);
    rule.plan = ReadAlarmPlan(node, site_);
    return rule;
  }

  void ReadClear(const JsonNode& node, const JsonNode& when, AlarmRule& rule) {
    if (const auto delay = node.Find("for")) rule.off_delay = delay->Duration();
    const auto has_test = [&](const auto& test) { return node.Find(test.first).has_value(); };
    if (std::ranges::none_of(kTests, has_test)) {
      node.RequireObject({"for"});
      node.Get("for");
      return;
    }
    subject_ = IsOfNumber(rule.when.type) ? std::optional(when) : std::nullopt;
    rule.clear = ReadCondition(node, true);
    subject_.reset();
    const bool same = rule.clear->device == rule.when.device && rule.clear->number == rule.when.number;
    const auto refuse_overlap = [&](Type raises, Type clears, bool overlap) {
      if (!same || rule.when.type != raises || rule.clear->type != clears || !overlap) return;
      node.Refuse("the alarm would return while its condition still holds");
    };
    refuse_overlap(Type::kAbove, Type::kBelow, rule.clear->limit > rule.when.limit);
    refuse_overlap(Type::kBelow, Type::kAbove, rule.clear->limit < rule.when.limit);
  }

  static DailyHours ReadHours(const JsonNode& node) {
    const std::vector<JsonNode> ends = node.Elements();
    if (ends.size() != 2) node.Refuse("two times of the day are needed, such as [\"20:00\", \"06:00\"]");
    const DailyHours hours{ReadMinute(ends[0]), ReadMinute(ends[1])};
    if (hours.from == hours.to) node.Refuse("both times are the same");
    return hours;
  }

  static AlarmSeverity ReadSeverity(const JsonNode& node) {
    using enum AlarmSeverity;
    for (const AlarmSeverity severity : {kCritical, kHigh, kMedium, kLow}) {
      if (SeverityName(severity) == node.Text()) return severity;
    }
    node.RefuseAsNot("\"critical\", \"high\", \"medium\" or \"low\"");
  }

  // `is_whole`: it is no part of all or any, and may have a delay.
  AlarmCondition ReadCondition(const JsonNode& node, bool is_whole) {
    if (!is_whole && node.Find("for"))
      node.Get("for").Refuse("a delay belongs to the whole condition, beside all or any");
    const std::pair<std::string_view, Type>* test = nullptr;
    for (const auto& candidate : kTests) {
      const auto member = node.Find(candidate.first);
      if (!member) continue;
      if (test != nullptr) member->Refuse("a condition has one test; \"all\" and \"any\" take several");
      test = &candidate;
    }
    if (test == nullptr && node.Find("bit")) return ReadNumberTest(node, {"equal", Type::kEqual});
    if (test == nullptr) {
      node.RequireObject({"device", "field", "unit", "bit", "within", "for"});
      std::vector<std::string> names;
      for (const auto& [name, type] : kTests) names.emplace_back(name);
      node.Refuse("a test is needed: one of " + Join(names) + ", bit");
    }
    const JsonNode value = node.Get(test->first);
    switch (test->second) {
      case Type::kAll:
      case Type::kAny:
        node.RequireObject({test->first, "for"});
        return ReadParts(value, test->second);
      case Type::kLineGone:
        node.RequireObject({test->first, "for"});
        return {.type = Type::kLineGone, .device = FindLine(value)};
      case Type::kSilentFor:
        node.RequireObject({"device", test->first, "for"});
        return ReadSilence(node, value);
      default:
        return ReadNumberTest(node, *test);
    }
  }

  AlarmCondition ReadParts(const JsonNode& node, Type type) {
    AlarmCondition condition{.type = type};
    for (const JsonNode& part : node.Elements()) condition.parts.push_back(ReadCondition(part, false));
    if (condition.parts.size() < 2) node.Refuse("two or more conditions are needed");
    return condition;
  }

  std::size_t FindLine(const JsonNode& node) const {
    const auto found = std::ranges::find(rules_.lines, node.Text());
    if (found == rules_.lines.end()) node.Refuse("there is no line \"" + node.Text() + "\" with polled devices");
    return static_cast<std::size_t>(found - rules_.lines.begin());
  }

  std::size_t FindDevice(const JsonNode& node) const {
    const auto found = std::ranges::find(rules_.devices, node.Text(), &AlarmDevice::name);
    if (found != rules_.devices.end()) return static_cast<std::size_t>(found - rules_.devices.begin());
    std::vector<std::string> names;
    for (const AlarmDevice& device : rules_.devices) names.push_back(device.name);
    node.Refuse("there is no polled device \"" + node.Text() + '"' + DidYouMean(node.Text(), names));
  }

  AlarmCondition ReadSilence(const JsonNode& node, const JsonNode& time) const {
    AlarmCondition condition{
        .type = Type::kSilentFor, .device = FindDevice(node.Get("device")), .time = time.Duration()};
    const SiteDevice& device = *devices_[condition.device];
    if (condition.time <= device.interval) {
      time.Refuse("a time above the interval of " + device.name + " is needed, which is " +
                  std::to_string(device.interval.count()) + " ms");
    }
    return condition;
  }

  AlarmCondition ReadNumberTest(const JsonNode& node, const std::pair<std::string_view, Type>& test) {
    const auto& [name, type] = test;
    node.RequireObject({"device", "field", "unit", name, type == Type::kChangedBy ? "within" : name,
                        type == Type::kEqual || type == Type::kNotEqual ? "bit" : name, "for"});
    AlarmCondition condition{.type = type};
    FindNumber(node, condition);
    const RecordField& field = rules_.devices[condition.device].numbers[condition.number];
    if (const auto bit = node.Find("bit")) {
      condition.bit = static_cast<int>(bit->Integer(0, 8 * static_cast<long>(FieldWidth(field.type)) - 1));
      const auto value = node.Find(name);
      condition.limit = static_cast<double>(value ? value->Integer(0, 1) : 1);
      return condition;
    }
    const JsonNode value = node.Get(name);
    if (type == Type::kImplausible) {
      if (!value.Flag()) value.RefuseAsNot("true");
      if (!field.minimum && !field.maximum) {
        value.Refuse(std::string(field.name) +
                     " has no minimum and no maximum in its scale, so each value is plausible");
      }
    } else if (type == Type::kOutside) {
      const std::vector<JsonNode> ends = value.Elements();
      if (ends.size() != 2) value.Refuse("two numbers are needed, the lowest and the highest that are right");
      condition.limit = ends[0].Number(-kMostNumber, kMostNumber);
      condition.upper = ends[1].Number(-kMostNumber, kMostNumber);
      if (condition.limit >= condition.upper) value.Refuse("the second number must be above the first");
    } else {
      condition.limit = value.Number(-kMostNumber, kMostNumber);
    }
    if (type == Type::kChangedBy) {
      if (condition.limit <= 0) value.Refuse("a number above 0 is needed");
      condition.time = ReadTime(node.Get("within"));
    }
    return condition;
  }

  // Sets the device and the number of a condition; those of `subject_` when the condition names none.
  void FindNumber(const JsonNode& node, AlarmCondition& condition) {
    const JsonNode& named = subject_ && !node.Find("device") && !node.Find("field") ? *subject_ : node;
    condition.device = FindDevice(named.Get("device"));
    const SiteDevice& device = *devices_[condition.device];
    const JsonNode name = named.Get("field");
    const auto field = std::ranges::find(device.fields, name.Text(), &RecordField::name);
    if (field == device.fields.end() || IsText(*field)) {
      const std::string kind(device.kind->name);
      name.Refuse(kind + " has no number \"" + name.Text() + "\"; `fieldline record " + kind +
                  "` shows those that it has");
    }
    if (const auto unit = node.Find("unit"); unit && unit->Text() != field->unit) {
      unit->Refuse(field->unit.empty() ? name.Text() + " of " + device.name + " has no unit in the file"
                                       : name.Text() + " of " + device.name + " is in " + std::string(field->unit));
    }
    std::vector<RecordField>& numbers = rules_.devices[condition.device].numbers;
    const auto wanted = std::ranges::find(numbers, field->name, &RecordField::name);
    condition.number = static_cast<std::size_t>(wanted - numbers.begin());
    if (wanted == numbers.end()) numbers.push_back(*field);
  }

  const Site& site_;
  std::vector<const SiteDevice*> devices_;  // as in rules_.devices
  AlarmRules rules_;
  std::map<std::string, std::size_t> indices_;  // of the rules, by name
  std::optional<JsonNode> subject_;             // condition whose device and number are meant
};

}  // namespace

AlarmRules ReadAlarmRules(const std::optional<JsonNode>& alarms, const std::optional<JsonNode>& settings,
                          const Site& site) {
  return RulesReader(site).Read(alarms, settings);
}

}  // namespace fieldline
