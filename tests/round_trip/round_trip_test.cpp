// From a simulated device through its driver to the names of the command's tables.

#include <gtest/gtest.h>

#include <random>
#include <set>

#include "fieldline/kinds.h"
#include "polling/poller.h"
#include "polling/record/kind_fields.h"
#include "polling/record/record_json.h"
#include "tests/support/device_port.h"
#include "tests/support/make_device.h"
#include "tests/support/readings.h"

namespace fieldline::test {
namespace {

constexpr double kMostPlausible = 10000;  // of the fifth quantity, to one of the power meters

void SetAll(sim::Values& values, std::mt19937& random) {
  for (const sim::Value& value : values.List()) {
    if (value.max_length != 0 || value.read_only) continue;
    const double maximum = value.name.starts_with("q5_") ? kMostPlausible : value.maximum;
    values.PutNumber(value.name, std::uniform_real_distribution(value.minimum, maximum)(random));
  }
}

void ExpectEveryValueArrives(const Kind& kind, int address, std::mt19937& random) {
  DevicePort port(MakeDevice(kind.name, address));
  SetAll(port.device().values(), random);
  if (kind.name == "card") port.device().values().PutNumber("state", 0);  // which the driver demands
  const std::unique_ptr<CSensorBase> driver = RequireDriver(kind);
  ASSERT_EQ(driver->GetData(&port, address), 1);

  const nlohmann::json record = RecordToJson(FieldsOf(kind), driver->m_pData);
  const std::vector<Reading> readings = Readings(kind.name, address, record);
  const bool keeps_some_only = kind.name == "airc" || kind.name == "emerson" || kind.name == "leak";
  for (const auto& [name, number] : NumbersOf(port.device().values())) {
    const auto reading = std::ranges::find(readings, name, &Reading::value);
    EXPECT_TRUE(reading != readings.end() || keeps_some_only) << name;
    if (reading == readings.end()) continue;
    EXPECT_TRUE(reading->Shows(number)) << name << ": " << number << " was sent, " << reading->number << " arrived";
  }
}

TEST(RoundTrip, EveryValueOfEveryDeviceArrives) {
  constexpr int kRounds = 20;
  const std::set<std::string_view> tested_elsewhere = {"camera", "camera-3ge", "di"};
  std::mt19937 random(1);
  for (const Kind& kind : kKinds) {
    if (!kind.IsPolled() || tested_elsewhere.contains(kind.name)) continue;
    for (int round = 0; round < kRounds; ++round) {
      SCOPED_TRACE(std::string(kind.name) + ", round " + std::to_string(round));
      ExpectEveryValueArrives(kind, kind.address, random);
      if (kind.protocol == Protocol::kDualProto) ExpectEveryValueArrives(kind, kind.address + 1, random);
    }
  }
}

}  // namespace
}  // namespace fieldline::test
