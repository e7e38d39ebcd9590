#include "sim/scenario.h"

#include <gtest/gtest.h>

#include <set>

#include "fieldline/drivers/basic/sensor_envir.h"
#include "fieldline/platform/device_name.h"
#include "fieldline/serial/ser_base.h"
#include "tests/support/temp_directory.h"

namespace fieldline::sim {
namespace {

using namespace std::chrono_literals;

constexpr RoomLine kLines[] = {
    {"ESL1", 115200},
    {"EIO1", 0     },
};
constexpr RoomDevice kDevices[] = {
    {"probe",  "ESL1", &KindOf(SERDAT_ENVIR), 7},
    {"inputs", "EIO1", &KindOf(SERDAT_DI),    0},
};
constexpr RoomLayout kLayout = {kLines, kDevices};

bool Answers(const Room& room, int timeout) {
  MapDevice(L"COM1:", room.Path("ESL1").c_str());
  CSerBase port(SER_COM);
  port.SetTimeout(0, timeout);
  CSensorEnvir probe;
  const bool answered = port.Open(L"COM1:115200,n,8,1") != 0 && probe.GetData(&port, 7) != 0;
  port.Close();
  return answered;
}

TEST(ScenarioPlayer, AppliesWhatIsDueOnce) {
  constexpr int kPatience = 20'000;  // ms
  const TempDirectory scratch;
  Room room(kLayout, scratch.Path());
  ASSERT_TRUE(room.Start());
  const Scenario scenario = {
      .events = {
                 {.at = 0s, .note = "start", .settings = {{"probe", "temperature", "31.5"}, {"inputs", "input_8", "1"}}},
                 {.at = 10s, .note = "heat", .settings = {{"probe", "temperature", "41"}}},
                 {.at = 20s, .note = "deaf", .faults = {{"ESL1", {{.fault = Fault::kDrop, .every = 1}}}}},
                 {.at = 30s, .note = "torn", .faults = {{"ESL1", {}}}, .unplugged = {"ESL1"}},
                 {.at = 30s, .note = "door", .settings = {{"inputs", "input_8", "0"}, {"inputs", "input_1", "1"}}},
                 {.at = 40s, .note = "back", .replugged = {"ESL1"}},
                 }
  };
  ScenarioPlayer player(scenario, room);
  const auto advance = [&player](std::chrono::milliseconds elapsed) {
    std::string notes;
    for (const ScenarioEvent& event : player.Advance(elapsed)) notes += event.note + ' ';
    return notes;
  };
  Values& probe = *room.FindValues("probe");

  EXPECT_EQ(advance(0ms), "start ");
  EXPECT_EQ(probe.Number("temperature"), 31.5);
  EXPECT_EQ(scratch.ReadFile("eio1"), "\x80");
  EXPECT_EQ(advance(9999ms), "");
  EXPECT_TRUE(Answers(room, kPatience));
  EXPECT_EQ(advance(10s), "heat ");
  EXPECT_EQ(probe.Number("temperature"), 41);
  probe.PutNumber("temperature", 5);
  EXPECT_EQ(advance(20s), "deaf ");
  EXPECT_EQ(probe.Number("temperature"), 5);
  EXPECT_FALSE(Answers(room, 200));
  EXPECT_EQ(advance(30s), "torn door ");
  EXPECT_EQ(room.Path("ESL1"), "");
  EXPECT_EQ(scratch.ReadFile("eio1"), "\x01");
  EXPECT_FALSE(Answers(room, 0));
  EXPECT_EQ(advance(1h), "back ");
  EXPECT_TRUE(Answers(room, kPatience));
  EXPECT_EQ(advance(2h), "");
}

TEST(ScenarioPlayer, DriftDoesNotDependOnHowOftenItIsAdvanced) {
  const Scenario scenario = {
      .drift = true,
      .events = {{.at = 45s, .note = "", .settings = {{"probe", "temperature", "30"}}}},
  };
  const auto temperature_at_60s = [&](std::chrono::milliseconds step, std::uint32_t seed) {
    Room room(kLayout, {});
    room.Seed(seed);
    ScenarioPlayer player(scenario, room);
    for (std::chrono::milliseconds elapsed = 0ms; elapsed <= 60s; elapsed += step) player.Advance(elapsed);
    return room.FindValues("probe")->Number("temperature");
  };
  const double temperature = temperature_at_60s(100ms, 1);
  EXPECT_NE(temperature, 30);
  EXPECT_EQ(temperature, temperature_at_60s(20s, 1));
  EXPECT_NE(temperature, temperature_at_60s(100ms, 2));
}

TEST(MachineRoom, HasEveryKindAndRoomForEachAddress) {
  std::set<std::string_view> kinds;
  std::set<std::string_view> names;
  std::set<std::pair<std::string_view, int>> places;
  for (const RoomDevice& device : MachineRoom().devices) {
    kinds.insert(device.kind->name);
    EXPECT_TRUE(names.insert(device.name).second) << device.name;
    EXPECT_TRUE(places.emplace(device.line, device.address).second) << device.name;
    EXPECT_EQ(device.kind->HasAddress(), device.address != 0) << device.name;
    EXPECT_EQ(LineOf(MachineRoom(), device).baud, static_cast<std::uint32_t>(device.kind->baud)) << device.name;
  }
  for (const Kind& kind : kKinds) EXPECT_TRUE(kinds.contains(kind.name)) << kind.name;
}

}  // namespace
}  // namespace fieldline::sim
