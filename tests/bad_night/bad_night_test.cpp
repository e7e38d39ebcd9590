
#include <algorithm>
#include <chrono>
#include <cstdio>
#include <map>
#include <sstream>
#include <thread>

#include "sim/room.h"
#include "sim/scenario.h"
#include "tests/bad_night/night_alarms.h"
#include "tests/support/log_time.h"
#include "tests/support/readings.h"
#include "tests/support/temp_directory.h"
#include "tests/tools/tool_process.h"
#include "tools/simulation/link_directory.h"
#include "tools/simulation/scenario_file.h"

namespace fieldline {
namespace {

using namespace std::chrono_literals;
using nlohmann::json;
using std::chrono::milliseconds;
using std::chrono::system_clock;
using Time = system_clock::time_point;
using test::ToolProcess;
using test::ToolResult;
using testing::HasSubstr;

constexpr auto kNight = 60s;
constexpr const char kProbesLine[] = "ESL1";

// What a device held, and the time for which it may have been read.
struct Held {
  Time from;
  Time to;
  std::map<std::string, double> values;
};

milliseconds DurationOf(const json& poll) {
  return milliseconds(static_cast<long>(std::ceil(poll["duration_ms"].get<double>())));
}

struct Usage {
  std::ptrdiff_t descriptors;
  long resident;  // kB
};

Usage UsageOf(pid_t process) {
  const std::string directory = "/proc/" + std::to_string(process);
  const std::filesystem::directory_iterator descriptors(directory + "/fd");
  Usage usage{std::distance(begin(descriptors), end(descriptors)), 0};
  std::ifstream status(directory + "/status");
  for (std::string line; std::getline(status, line);) std::sscanf(line.c_str(), "VmRSS: %ld", &usage.resident);
  return usage;
}

// `fieldline watch` through a minute in which everything goes wrong in a room whose every value is known.
class BadNight : public testing::Test {
 protected:
  // The example's site, on the room's lines, with a probe that nobody has and that shares the probes' line.
  std::string WriteSite() {
    std::ifstream file(FIELDLINE_EXAMPLES "/site.json");
    json site = json::parse(file);
    for (auto& [name, line] : site["lines"].items()) {
      line["path"] = links_.Path(name);
      devices_ += line["devices"].size();
    }
    site["lines"][kProbesLine]["devices"]["ghost"] = {
        {"kind",     "envir"},
        {"address",  9      },
        {"interval", "1s"   }
    };
    site["alarms"] = test::NightAlarms();
    directory_.WriteFile("site.json", site.dump());
    return directory_.Path("site.json");
  }

  void PointLinks() {
    for (const sim::RoomLine& line : layout_.lines) links_.Point(line.name, room_.Path(line.name));
  }

  // Lets the scenario go on until `elapsed`, and writes down what the devices hold from then on.
  void Play(milliseconds elapsed) {
    const Time before = system_clock::now();
    for (const sim::ScenarioEvent& event : player_.Advance(elapsed)) {
      events_[event.at] = before;
      if (event.unplugged.empty() && event.replugged.empty()) continue;
      PointLinks();
      if (!event.replugged.empty()) replugged_ = system_clock::now();
    }
    std::map<std::string, std::map<std::string, double>> values;
    for (const sim::RoomDevice& device : layout_.devices) {
      const auto numbers = test::NumbersOf(*room_.FindValues(device.name));
      values[std::string(device.name)] = {numbers.begin(), numbers.end()};
    }
    const Time after = system_clock::now();
    for (auto& [device, numbers] : values) {
      std::vector<Held>& held = held_[device];
      if (!held.empty()) held.back().to = after;
      held.push_back({before, Time::max(), std::move(numbers)});
    }
  }

  void ExpectSentByTheRoom(const json& poll) {
    const Time began = test::ParseLogTime(poll["time"]);
    const Time ended = began + DurationOf(poll) + 2ms;  // what was cut from both
    const std::vector<Held>& all = held_[poll["device"]];
    const json& address = poll["address"];
    for (const test::Reading& reading :
         test::Readings(poll["kind"].get<std::string>(), address.is_null() ? 0 : address.get<int>(), poll["record"])) {
      if (!all.front().values.contains(reading.value)) continue;
      ++checked_;
      const bool sent = std::ranges::any_of(all, [&](const Held& held) {
        return held.from <= ended && held.to >= began && reading.Shows(held.values.at(reading.value));
      });
      EXPECT_TRUE(sent) << reading.value << " = " << reading.number << " in " << poll;
    }
  }

  // Each disturbance of the probes' line spoils a single reply at most: the next probe's is good again.
  void FollowProbes(const json& poll) {
    if (poll["device"] == "ghost") return;
    warned_ += poll.contains("warning") ? 1 : 0;
    const bool is_spoilt = !poll["ok"] && poll["error"]["code"] == "other_device";
    refused_ += is_spoilt ? 1 : 0;
    if (was_spoilt_) {
      EXPECT_TRUE(poll["ok"]) << poll;
    }
    was_spoilt_ = is_spoilt;
  }

  const TempDirectory directory_;
  tool::LinkDirectory links_{directory_.Path() / "room"};
  const sim::RoomLayout layout_ = sim::MachineRoom();
  const sim::Scenario scenario_ = tool::ReadScenario(FIELDLINE_EXAMPLES "/scenarios/bad-night.json", layout_);
  sim::Room room_{layout_, directory_.Path()};
  sim::ScenarioPlayer player_{scenario_, room_};
  std::map<std::string, std::vector<Held>> held_;  // by device
  std::map<milliseconds, Time> events_;            // when each event happened
  Time replugged_{};
  std::size_t devices_ = 0;  // of the example
  int checked_ = 0;
  int refused_ = 0;  // replies of the probes that carried another address
  int warned_ = 0;   // good readings of the probes beside which something else came
  bool was_spoilt_ = false;
};

TEST_F(BadNight, NoWrongValueNoStarvedLineNoLeak) {
  room_.Seed(*scenario_.seed);
  ASSERT_TRUE(room_.Start());
  Play(0ms);
  PointLinks();
  const auto began = std::chrono::steady_clock::now();
  ToolProcess watch({"watch", WriteSite(), "--json", "--duration", "60s"});
  const pid_t process = watch.id();
  ToolResult result;
  std::jthread reader([&] { result = watch.Finish(); });

  // All lines are open at both moments: before the probes' line is torn off and after its return.
  constexpr auto kEarly = 20s;
  constexpr auto kLate = 58s;
  std::vector<Usage> usage;
  for (milliseconds elapsed = 100ms; elapsed < kNight; elapsed += 100ms) {
    std::this_thread::sleep_until(began + elapsed);
    Play(elapsed);
    if (elapsed == kEarly || elapsed == kLate) usage.push_back(UsageOf(process));
  }
  reader.join();

  EXPECT_EQ(result.status, 3);  // a line vanished
  EXPECT_THAT(result.err, HasSubstr("\nghost: "));
  ASSERT_EQ(usage.size(), 2u);
  EXPECT_EQ(usage[0].descriptors, usage[1].descriptors);
  EXPECT_LT(usage[1].resident - usage[0].resident, 2048);

  std::map<std::string, int> good;
  milliseconds lost{0};
  Time back = Time::max();
  std::istringstream lines(result.out);
  for (std::string line; std::getline(lines, line);) {
    const json poll = json::parse(line);
    if (poll["device"] == "ghost") lost += DurationOf(poll);
    if (poll["line"] == kProbesLine) FollowProbes(poll);
    if (!poll["ok"]) continue;
    ++good[poll["device"]];
    // Nothing in the dual-protocol unit's own frame, at an odd address, shows that a bit of it flipped.
    const bool is_checked = poll["kind"] != "dual-proto" || poll["address"].get<int>() % 2 == 0;
    if (is_checked) ExpectSentByTheRoom(poll);
    const Time time = test::ParseLogTime(poll["time"]);
    if (poll["line"] == kProbesLine && time > replugged_) back = std::min(back, time);
  }
  EXPECT_EQ(good.size(), devices_);  // the ghost is none of them
  EXPECT_EQ(good["ghost"], 0);
  EXPECT_GT(refused_, 3);
  EXPECT_GT(warned_, 10);
  EXPECT_GT(checked_, 1000);
  EXPECT_LT(lost, kNight / 20);
  EXPECT_LT(back - replugged_, 3s);

  directory_.WriteFile("night.jsonl", result.out);
  test::ExpectNightAlarms(directory_.Path("site.json"), directory_.Path("night.jsonl"), events_);
}

}  // namespace
}  // namespace fieldline
