#include "service/http/metrics.h"

#include <algorithm>
#include <cctype>
#include <charconv>
#include <iterator>
#include <map>
#include <vector>

namespace fieldline::service {
namespace {

struct KnownUnit {
  std::string_view unit;
  std::string_view suffix;
  double factor;
};

constexpr KnownUnit kUnits[] = {
    {"°C",   "celsius",              1      },
    {"K",     "kelvin",               1      },
    {"V",     "volts",                1      },
    {"mV",    "volts",                0.001  },
    {"kV",    "volts",                1000   },
    {"A",     "amperes",              1      },
    {"mA",    "amperes",              0.001  },
    {"W",     "watts",                1      },
    {"kW",    "watts",                1000   },
    {"VA",    "voltamperes",          1      },
    {"kVA",   "voltamperes",          1000   },
    {"var",   "voltamperes_reactive", 1      },
    {"kvar",  "voltamperes_reactive", 1000   },
    {"Wh",    "joules",               3600   },
    {"kWh",   "joules",               3.6e6  },
    {"MWh",   "joules",               3.6e9  },
    {"kvarh", "kvarh",                1      },
    {"Ah",    "coulombs",             3600   },
    {"Hz",    "hertz",                1      },
    {"%",     "percent",              1      },
    {"%RH",   "percent",              1      },
    {"% RH",  "percent",              1      },
    {"ms",    "seconds",              0.001  },
    {"s",     "seconds",              1      },
    {"min",   "seconds",              60     },
    {"h",     "seconds",              3600   },
    {"Ω",    "ohms",                 1      },
    {"mΩ",   "ohms",                 0.001  },
    {"Pa",    "pascals",              1      },
    {"hPa",   "pascals",              100    },
    {"kPa",   "pascals",              1000   },
    {"bar",   "pascals",              100'000},
    {"m/s",   "meters_per_second",    1      },
};

std::string NumberText(double number) {
  char digits[32];
  return {digits, std::to_chars(std::begin(digits), std::end(digits), number).ptr};
}

std::string Quoted(std::string_view text) {
  std::string quoted = "\"";
  for (const char c : text) {
    if (c == '\\' || c == '"') quoted += '\\';
    if (c == '\n') {
      quoted += "\\n";
    } else {
      quoted += c;
    }
  }
  return quoted + '"';
}

struct Family {
  std::string_view type;
  std::string help;
  std::string samples{};
};

// All samples of a family have to stand together.
class Families {
 public:
  void Add(const std::string& name, std::string_view type, const std::string& help, const std::string& labels,
           double number, std::string_view suffix = {}) {
    std::string& samples = families_.try_emplace(name, Family{type, help}).first->second.samples;
    samples += name;
    samples += suffix;
    samples += '{' + labels + "} " + NumberText(number) + '\n';
  }

  std::string Text() const {
    std::string text;
    for (const auto& [name, family] : families_) {
      text += "# HELP " + name + ' ' + family.help + "\n# TYPE " + name + ' ';
      text += family.type;
      text += '\n' + family.samples;
    }
    return text;
  }

 private:
  std::map<std::string, Family> families_;
};

void AddReadings(const SiteDevice& device, const PollResult& result, const std::string& labels, Families& families) {
  if (result.record.empty()) return;
  for (const RecordField& field : device.fields) {
    if (IsText(field)) continue;
    const auto [suffix, factor] = BaseUnitOf(field.unit);
    const std::string name = suffix.empty() ? "fieldline_reading" : "fieldline_reading_" + suffix;
    const std::string help = suffix.empty() ? "A number of the device's record that has no unit."
                                            : "A value of the device, in the unit that the name tells.";
    families.Add(name, "gauge", help, labels + ",field=" + Quoted(field.name),
                 factor * PhysicalNumber(field, result.record.data()));
  }
}

void AddDevice(const WatchedDevice& watched, const DeviceState& state, DeviceState::Clock::time_point now,
               Families& families) {
  const SiteDevice& device = *watched.device;
  const std::string labels =
      "line=" + Quoted(watched.line->name) + ",device=" + Quoted(device.name) + ",kind=" + Quoted(device.kind->name);
  const bool is_good = state.ConditionAt(now, device) == Condition::kGood;
  families.Add("fieldline_up", "gauge", "Whether the device's last poll was good, and not long ago.", labels,
               is_good ? 1 : 0);
  families.Add("fieldline_polls_total", "counter", "Polls since the start.", labels, static_cast<double>(state.polls));
  for (const auto& [code, count] : state.failures) {
    families.Add("fieldline_poll_failures_total", "counter", "Polls that failed, by the reason's code.",
                 labels + ",code=" + Quoted(code), static_cast<double>(count));
  }
  constexpr char kDuration[] = "fieldline_poll_duration_seconds";
  constexpr char kDurationHelp[] = "How long the polls took.";
  families.Add(kDuration, "summary", kDurationHelp, labels, state.total_duration.count(), "_sum");
  families.Add(kDuration, "summary", kDurationHelp, labels, static_cast<double>(state.polls), "_count");
  if (!state.last) return;
  families.Add("fieldline_last_poll_age_seconds", "gauge", "Time since the last poll ended.", labels,
               std::chrono::duration<double>(now - state.ended).count());
  families.Add("fieldline_last_poll_duration_seconds", "gauge", "How long the last poll took.", labels,
               std::chrono::duration<double>(state.last->duration).count());
  if (is_good) AddReadings(device, *state.last, labels, families);
}

void AddAlarm(const AlarmView& alarm, Families& families) {
  const std::string name = "alarm=" + Quoted(alarm.rule->name);
  const std::string labels = name + ",severity=" + Quoted(SeverityName(alarm.rule->severity));
  const bool is_active = alarm.state == AlarmState::kRaised || alarm.state == AlarmState::kAcknowledged;
  const bool is_unacknowledged = alarm.state == AlarmState::kRaised || alarm.state == AlarmState::kReturned;
  families.Add("fieldline_alarm_active", "gauge", "Whether the alarm's condition holds, and it is not shelved.", labels,
               is_active && !alarm.is_test ? 1 : 0);
  families.Add("fieldline_alarm_unacknowledged", "gauge", "Whether nobody has acknowledged it.", labels,
               is_unacknowledged && !alarm.is_test ? 1 : 0);
  families.Add("fieldline_alarm_shelved", "gauge", "Whether a person has set it aside for a time.", labels,
               alarm.state == AlarmState::kShelved ? 1 : 0);
  families.Add("fieldline_alarm_test", "gauge", "Whether it is raised as a test.", labels, alarm.is_test ? 1 : 0);
  families.Add("fieldline_alarm_raises_total", "counter", "Times that it was raised since the start, tests included.",
               labels, static_cast<double>(alarm.raises));
}

void AddActor(const ActorView& actor, Families& families) {
  const std::string labels = "device=" + Quoted(actor.name);
  families.Add("fieldline_alarm_device_up", "gauge", "Whether a device that acts for alarms could be used last time.",
               labels, actor.trouble.empty() ? 1 : 0);
  families.Add("fieldline_alarm_tasks_waiting", "gauge", "What the device is still to do.", labels,
               static_cast<double>(actor.waiting));
}

}  // namespace

BaseUnit BaseUnitOf(std::string_view unit) {
  const auto* const known = std::ranges::find(kUnits, unit, &KnownUnit::unit);
  if (known != std::end(kUnits)) return {std::string(known->suffix), known->factor};
  // What a name may be made of is left of any other.
  std::string suffix;
  for (const char c : unit) {
    if (std::isalnum(static_cast<unsigned char>(c)) != 0) {
      suffix += static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    } else if (!suffix.empty() && suffix.back() != '_') {
      suffix += '_';
    }
  }
  if (suffix.ends_with('_')) suffix.pop_back();
  return {suffix, 1};
}

std::string Metrics(const std::string& unit, const LiveState& live, const AlarmService& alarms,
                    DeviceState::Clock::time_point now) {
  Families families;
  families.Add("fieldline_build_info", "gauge", "The program, and the unit that it watches.",
               "version=" + Quoted(FIELDLINE_VERSION) + ",unit=" + Quoted(unit), 1);
  const auto devices = live.devices();
  for (std::size_t i = 0; i < devices.size(); ++i) AddDevice(devices[i], live.Get(i), now, families);
  for (const AlarmView& alarm : alarms.Alarms()) AddAlarm(alarm, families);
  for (const ActorView& actor : alarms.ActorStates()) AddActor(actor, families);
  return families.Text();
}

}  // namespace fieldline::service
