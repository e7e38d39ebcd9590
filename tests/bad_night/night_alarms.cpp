#include "tests/bad_night/night_alarms.h"

#include <algorithm>
#include <cstdio>
#include <fstream>
#include <iomanip>
#include <iostream>

#include "tests/support/log_time.h"
#include "tests/tools/tool_process.h"

namespace fieldline::test {
namespace {

using namespace std::chrono_literals;
using std::chrono::milliseconds;
using Time = std::chrono::system_clock::time_point;

constexpr milliseconds kMargin = 2s;

// A change that an event causes: within the alarm's delay, one poll and the margin.
struct Expected {
  const char* alarm;
  const char* to;
  milliseconds event;
  milliseconds delay;
  const char* device;     // whose polls show it
  milliseconds interval;  // of these polls
};

constexpr Expected kExpected[] = {
    {"floor wet",          "raised",   10s, 0s, "floor",     1s},
    {"mains failed",       "raised",   20s, 5s, "ups",       2s},
    {"probes unplugged",   "raised",   25s, 3s, "",          2s},
    {"probes unplugged",   "returned", 35s, 0s, "",          2s},
    {"hot aisle too warm", "raised",   35s, 4s, "hot-aisle", 2s}, // it grew warm while its line was gone
    {"mains failed",       "returned", 50s, 0s, "ups",       2s},
};
constexpr char kSilent[] = "batteries silent";  // from the last good poll before the event at 40 s
constexpr milliseconds kSilence = 12s;
constexpr milliseconds kFallsSilent = 40s;

struct Poll {
  Time end;
  std::string device;
  bool is_good;
};

std::vector<Poll> ReadPolls(const std::string& log) {
  std::vector<Poll> polls;
  std::ifstream file(log);
  for (std::string line; std::getline(file, line);) {
    const json poll = json::parse(line);
    const milliseconds duration(static_cast<long>(poll["duration_ms"].get<double>()));
    polls.push_back({ParseLogTime(poll["time"]) + duration, poll["device"], poll["ok"]});
  }
  return polls;
}

double Seconds(std::chrono::system_clock::duration time) { return std::chrono::duration<double>(time).count(); }

}  // namespace

json NightAlarms() {
  return json::parse(R"({
    "floor wet": {"when": {"device": "floor", "field": "leak", "not_equal": 0}, "severity": "critical"},
    "mains failed": {"when": {"device": "ups", "field": "input_voltage", "below": 180, "unit": "V", "for": "5s"},
                     "clear": {"above": 200}},
    "probes unplugged": {"when": {"line_gone": "ESL1", "for": "3s"}},
    "hot aisle too warm": {"when": {"device": "hot-aisle", "field": "register_1", "above": 35, "for": "4s"}},
    "batteries silent": {"when": {"device": "batteries", "silent_for": "12s"}},

    "cold aisle too warm": {"when": {"device": "cold-aisle", "field": "register_1", "above": 35}},
    "cold aisle silent": {"when": {"device": "cold-aisle", "silent_for": "9s"}, "depends_on": "probes unplugged"},
    "hot aisle silent": {"when": {"device": "hot-aisle", "silent_for": "9s"}, "depends_on": "probes unplugged"},
    "probe broken": {"when": {"device": "hot-aisle", "field": "register_1", "implausible": true}},
    "mains lost twice": {"when": {"all": [{"device": "ups", "field": "input_voltage", "below": 180},
                                          {"device": "ups", "field": "battery_low", "not_equal": 0}]}}
  })");
}

void ExpectNightAlarms(const std::string& site, const std::string& log, const std::map<milliseconds, Time>& events) {
  const ToolResult result = RunTool({"alarms", site, "--replay", log, "--json"});
  EXPECT_EQ(result.status, 0) << result.err;
  const std::vector<Poll> polls = ReadPolls(log);

  std::map<std::pair<std::string, std::string>, std::vector<Time>> changes;  // by alarm and new state
  for (const json& change : Lines(result.out)) {
    changes[{change["alarm"], change["to"]}].push_back(ParseLogTime(change["time"]));
  }
  std::cout << "alarm               change    event      after  at most\n" << std::fixed << std::setprecision(1);
  const auto expect = [&](const std::string& alarm, const std::string& to, Time event, milliseconds most) {
    const std::vector<Time>& times = changes[{alarm, to}];
    ASSERT_EQ(times.size(), 1u) << alarm << ' ' << to;
    std::cout << std::left << std::setw(20) << alarm << std::setw(10) << to << std::right << std::setw(5)
              << Seconds(event - events.begin()->second) + Seconds(events.begin()->first) << " s" << std::setw(9)
              << Seconds(times[0] - event) << " s" << std::setw(7) << Seconds(most) << " s\n";
    EXPECT_GE(times[0], event - 1ms) << alarm << ' ' << to;
    EXPECT_LE(times[0], event + most) << alarm << ' ' << to;
  };
  for (const Expected& expected : kExpected) {
    const Time event = events.at(expected.event);
    milliseconds most = expected.delay + expected.interval + kMargin;
    // A failed poll says nothing of the value, so that each adds the time to the next.
    for (const Poll& poll : polls) {
      const bool counts = poll.device == expected.device && poll.end > event && poll.end < event + most;
      if (counts && !poll.is_good) most += expected.interval;
    }
    expect(expected.alarm, expected.to, event, most);
  }
  Time heard = polls.front().end;
  for (const Poll& poll : polls) {
    if (poll.device == "batteries" && poll.is_good && poll.end < events.at(kFallsSilent)) heard = poll.end;
  }
  expect(kSilent, "raised", heard + kSilence, kMargin);

  for (const auto& [key, times] : changes) {
    const auto& [alarm, to] = key;
    const bool is_expected = std::ranges::any_of(kExpected, [&alarm = alarm, &to = to](const Expected& expected) {
      return alarm == expected.alarm && to == expected.to;
    });
    EXPECT_TRUE(to != "raised" || alarm == kSilent || is_expected) << alarm;
  }
}

}  // namespace fieldline::test
