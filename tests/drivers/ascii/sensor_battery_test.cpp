#include "fieldline/drivers/ascii/sensor_battery.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <span>
#include <string>

#include "tests/drivers/ascii/frames.h"
#include "tests/support/damage.h"
#include "tests/support/fake_clock.h"
#include "tests/support/scripted_port.h"

namespace fieldline::test {
namespace {

using ::testing::ElementsAre;

// Cell i, from 0, shows i + 2 volts.

const std::string kBatteryRequest = "~20014641E00201FD36\r";

std::string BatteryReply(const std::string& first_cell, const std::string& group_2_first) {
  std::string reply = "~20014600F1C40020" + first_cell;
  for (int i = 1; i < 32; ++i) reply += HexFloat(static_cast<float>(i + 2));
  reply += std::string(136, 'F');
  reply += "D1" + HexFloat(999) + HexFloat(1.5f);
  reply += "D2" + group_2_first + "E17A943E";  // 0.29
  reply += "D3" + HexFloat(25.5f) + HexFloat(-1.75f);
  return Seal(reply + "D4");
}

TEST(SensorBattery, DecodesTheReplyAndLetsTheMonitorRest) {
  Clock().sleeps.clear();
  ScriptedPort port;
  port.Expect(Text(kBatteryRequest)).Reply(470, Text(BatteryReply("66660640", "6666A6C0")));  // 2.1, -5.2
  CSensorBattery battery;
  port.open = 0;
  ASSERT_EQ(battery.GetData(&port, 1), 0);
  port.open = 1;
  ASSERT_EQ(battery.GetData(&port, 0x301), 1);
  EXPECT_THAT(Clock().sleeps, ElementsAre(2000u));
  EXPECT_EQ(port.calls, "wr");

  const BATTERY_DATA& data = battery.m_data;
  EXPECT_THAT(std::span(data.cells).first(4), ElementsAre(2099, 3000, 4000, 5000));
  EXPECT_EQ(data.cells[31], 33000);
  EXPECT_EQ(data.cell_sum, 2099u + 1000u * (33 * 34 / 2 - 1 - 2));
  EXPECT_EQ(data.group_1_second, 150);
  EXPECT_EQ(data.group_2_first, 520);
  EXPECT_EQ(data.group_2_second, 28);
  EXPECT_EQ(data.group_3_first, 255);
  EXPECT_EQ(data.group_3_second, 18);
  EXPECT_THAT(std::span(battery.m_pData + 78, 6), ElementsAre(0xE8, 0x03, 32, 0, 4, 0));
}

TEST(SensorBattery, KeepsTheLowBitsOfWhatDoesNotFit) {
  ScriptedPort port;
  port.Expect(Text(kBatteryRequest)).Reply(470, Text(BatteryReply("00008C42", "0000807F")));  // 70, infinity
  CSensorBattery battery;
  ASSERT_EQ(battery.GetData(&port, 1), 1);
  EXPECT_EQ(battery.m_data.cells[0], 4464);
  EXPECT_EQ(battery.m_data.cell_sum, 4464u + 1000u * (33 * 34 / 2 - 1 - 2));
  EXPECT_EQ(battery.m_data.group_2_first, 0xFFFF) << "of the most that 32 bits hold";
}

TEST(SensorBattery, RejectsDamage) {
  Clock().sleeps.clear();
  const std::string reply = BatteryReply("66660640", "6666A6C0");
  const Exchange exchange = {Text(kBatteryRequest), 470, Text(reply), {{0, 84}}};
  ExpectRejectsDamage({[] { return std::make_unique<CSensorBattery>(); }, 1, {exchange}, 84});
  EXPECT_EQ(Clock().sleeps.size(), 1u) << "a rest after a failure";

  ScriptedPort port;
  port.Expect(Text(kBatteryRequest)).Reply(470, Text(Seal("~20014604" + reply.substr(9, 456))));
  CSensorBattery battery;
  EXPECT_EQ(battery.GetData(&port, 1), 0) << "RTN 04";
  EXPECT_EQ(battery.m_data.cell_count, 0);
}

}  // namespace
}  // namespace fieldline::test
