#include "fieldline/drivers/ascii/sensor_power_unit.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <map>
#include <memory>
#include <span>
#include <string>
#include <vector>

#include "tests/drivers/ascii/frames.h"
#include "tests/support/damage.h"
#include "tests/support/scripted_port.h"

namespace fieldline::test {
namespace {

using ::testing::Each;
using ::testing::ElementsAreArray;

// Value k, from 0, shows k + 1.5, but for these: 220.5, -3.5, 49.98, 1234.7.
const std::map<int, std::string> kSpecialValues = {
    {0,  "00805C43"},
    {1,  "000060C0"},
    {6,  "85EB4742"},
    {48, "66569A44"}
};

std::string Values(int first, int end) {
  std::string text;
  for (int k = first; k < end; ++k) {
    text += kSpecialValues.contains(k) ? kSpecialValues.at(k) : HexFloat(static_cast<float>(k) + 1.5f);
  }
  return text;
}

Exchange MakeExchange(const std::string& request, const std::string& reply_from_length, Range writes) {
  return {Text(request), 150, Text(Seal("~11772A00" + reply_from_length)), {writes}};
}

std::vector<Exchange> PowerUnitExchanges() {
  return {
      MakeExchange("~11012AE10000FD94\r", "E06CFFFF" + Values(0, 13), {0, 52}),
      MakeExchange("~11012A410000FDA5\r", "A060" + std::string(26, 'F') + Values(13, 21) + "FFFFFF", {52, 32}),
      MakeExchange("~11012AE20000FD93\r", "D07CFFFF" + Values(21, 36), {84, 60}),
      MakeExchange("~11012AE30000FD92\r", "4084FFFF" + Values(36, 52), {144, 64}),
      MakeExchange("~11012A430000FDA3\r", "101EFFA1FFB1B2B3B4B5B6B7B8B9BAFFFF", {208, 11}),
  };
}

TEST(SensorPowerUnit, DecodesFiveReplies) {
  ScriptedPort port;
  for (const Exchange& exchange : PowerUnitExchanges()) port.Expect(exchange.request).Reply(150, exchange.reply);
  CSensorPowerUnit unit;
  unit.m_data.not_written = 0x5A;
  port.open = 0;
  ASSERT_EQ(unit.GetData(&port, 1), 0);
  port.open = 1;
  ASSERT_EQ(unit.GetData(&port, 0x201), 1);
  EXPECT_EQ(port.calls, "wrwrwrwrwr");

  std::int32_t expected[52];
  for (int k = 0; k < 52; ++k) expected[k] = 10 * k + 15;
  for (const int k : {7, 11, 20, 21, 22, 23}) expected[k] = 100 * k + 150;
  expected[0] = 2205;
  expected[1] = 35;
  expected[6] = 4998;
  expected[48] = 1234;
  EXPECT_THAT(unit.m_data.values, ElementsAreArray(expected));
  EXPECT_EQ(ToHex(Bytes(unit.m_pData + 208, unit.m_pData + 220)), "A1 B1 B2 B3 B4 B5 B6 B7 B8 B9 BA 5A");
}

TEST(SensorPowerUnit, StopsAtTheRangeOfAField) {
  std::vector<Exchange> exchanges = PowerUnitExchanges();
  std::string huge = "~11012A00E06C0000";
  for (int k = 0; k < 13; ++k) huge += "FFFFFF7F";  // no number
  exchanges[0].reply = Text(Seal(huge));
  ScriptedPort port;
  for (const Exchange& exchange : exchanges) port.Expect(exchange.request).Reply(150, exchange.reply);
  CSensorPowerUnit unit;
  ASSERT_EQ(unit.GetData(&port, 1), 1);
  EXPECT_THAT(std::span(unit.m_data.values).first(13), Each(2147483647));
}

TEST(SensorPowerUnit, RejectsDamage) {
  ExpectRejectsDamage({[] { return std::make_unique<CSensorPowerUnit>(); }, 1, PowerUnitExchanges(), 220});

  ScriptedPort port;
  Exchange first = PowerUnitExchanges()[0];
  first.reply.push_back('\r');
  port.Expect(first.request).Reply(150, first.reply);
  CSensorPowerUnit unit;
  EXPECT_EQ(unit.GetData(&port, 1), 0) << "a character too many";
}

}  // namespace
}  // namespace fieldline::test
