#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "fieldline/drivers/ascii/sensor_battery.h"
#include "fieldline/drivers/ascii/sensor_cybermate.h"
#include "fieldline/drivers/ascii/sensor_power_unit.h"
#include "fieldline/drivers/imaging/sensor_card_k.h"
#include "sim/catalog.h"
#include "tests/support/scripted_port.h"

namespace fieldline::test {
namespace {

// Polls `driver` with the answers of a simulated device. The requests are literals, so that device and driver can't
// agree on a wrong one.
void Poll(CSensorBase& driver, sim::Device& device, int ask, const std::vector<std::string>& requests) {
  ScriptedPort port;
  for (const std::string& request : requests) {
    std::vector<sim::Reply> replies;
    device.Hear(Text(request), false, replies);
    ASSERT_EQ(replies.size(), 1u) << request;
    port.Expect(Text(request)).Reply(ask, replies[0].bytes);
  }
  EXPECT_EQ(driver.GetData(&port, 1), 1);
}

std::unique_ptr<sim::Device> MakeSet(std::string_view kind, std::string_view name, std::string_view text) {
  auto device = sim::Make(kind, 1);
  std::string error;
  EXPECT_TRUE(device->values().Set(name, text, &error)) << error;
  return device;
}

TEST(SimulatedHexAsciiDevices, AreUnderstoodByTheirDrivers) {
  CSensorBattery battery;
  Poll(battery, *MakeSet("battery", "cell_32", "1.5"), 470, {"~20014641E00201FD36\r"});
  EXPECT_EQ(battery.m_data.cells[31], 1500);
  EXPECT_EQ(battery.m_data.group_1_second, 5432);
  EXPECT_EQ(battery.m_data.group_3_second, 265);

  CSensorPowerUnit power;
  Poll(power, *MakeSet("power-unit", "value_49", "-12.75"), 150,
       {"~11012AE10000FD94\r", "~11012A410000FDA5\r", "~11012AE20000FD93\r", "~11012AE30000FD92\r",
        "~11012A430000FDA3\r"});
  EXPECT_EQ(power.m_data.values[0], 105);
  EXPECT_EQ(power.m_data.values[20], 21050);
  EXPECT_EQ(power.m_data.values[48], 12);
  EXPECT_EQ(power.m_data.values[51], 5205);
  EXPECT_EQ(power.m_data.states[10], 11);

  CSensorCybermate unit;
  Poll(unit, *MakeSet("cybermate", "alarm_state_26", "200"), 120,
       {"~210160420000FDB0\r", "~210160430000FDAF\r", "~210160440000FDAE\r", "~210160470000FDAB\r"});
  EXPECT_EQ(unit.m_data.alarm_states[25], 200);
  EXPECT_EQ(unit.m_data.parameters[9], 0x4A);

  CSensorCardK card;
  Poll(card, *MakeSet("card", "card", "A card"), 64, {"\1771001804AA006F2EE00FC28\r"});
  EXPECT_STREQ(reinterpret_cast<const char*>(card.m_byCard), "A card");
}

}  // namespace
}  // namespace fieldline::test
