#include "fieldline/drivers/ascii/sensor_cybermate.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <string>

#include "tests/drivers/ascii/frames.h"
#include "tests/support/scripted_port.h"

namespace fieldline::test {
namespace {

using ::testing::ElementsAre;

// The shortest replies that carry all that is decoded; the check needs no checksum.

const std::string kUnitRequests[] = {"~210160420000FDB0\r", "~210160430000FDAF\r", "~210160440000FDAE\r",
                                     "~210160470000FDAB\r"};
const std::string kUnitReplies[] = {
    "~21016000B01401F4000200030004FFFF",
    "~21016000200E11121314151617",
    "~2101600090342122232425262728292A2B2C2D2E2F303132333435363738393A",
    "~21016000B014C1C2C3C4C5C6C7C8C9CA",
};
constexpr int kUnitParts[] = {0, 20, 27, 53, 63};  // where each reply's part of the record begins

Bytes UnitRecord() {
  Bytes record = Hex("F4 01 00 00 02 00 00 00 03 00 00 00 04 00 00 00 FF FF 00 00 11 12 13 14 15 16 17");
  for (BYTE alarm = 0x21; alarm <= 0x3A; ++alarm) record.push_back(alarm);
  for (BYTE parameter = 0xC1; parameter <= 0xCA; ++parameter) record.push_back(parameter);
  return record;
}

TEST(SensorCybermate, DecodesFourReplies) {
  ScriptedPort port;
  for (int i = 0; i < 4; ++i) port.Expect(Text(kUnitRequests[i])).Reply(120, Text(kUnitReplies[i]));
  CSensorCybermate unit;
  port.open = 0;
  ASSERT_EQ(unit.GetData(&port, 1), 0);
  port.open = 1;
  ASSERT_EQ(unit.GetData(&port, 0x101), 1);
  EXPECT_EQ(port.calls, "wrwrwrwr");
  EXPECT_EQ(ToHex(Bytes(unit.m_pData, unit.m_pData + 63)), ToHex(UnitRecord()));
}

TEST(SensorCybermate, ReadsGarbledCharactersAsZero) {
  ScriptedPort port;
  port.Expect(Text(kUnitRequests[0])).Reply(120, Text("???????00????01f4" + std::string(103, 'z')));
  for (int i = 1; i < 4; ++i) port.Expect(Text(kUnitRequests[i])).Reply(120, Text(Seal(kUnitReplies[i])));
  CSensorCybermate unit;
  ASSERT_EQ(unit.GetData(&port, 1), 1);
  EXPECT_THAT(unit.m_data.analog, ElementsAre(0x0104, 0, 0, 0, 0));
}

TEST(SensorCybermate, KeepsWhatCameBeforeAFailure) {
  const auto corrupt = [](std::string reply, std::size_t position) {
    reply[position] = '1';
    return reply;
  };
  for (int failing = 0; failing < 4; ++failing) {
    const std::string& whole = kUnitReplies[failing];
    const std::string refused[] = {"", whole.substr(0, 8), whole.substr(0, whole.size() - 1), corrupt(whole, 7),
                                   corrupt(whole, 8)};
    for (const std::string& reply : refused) {
      ScriptedPort port;
      for (int i = 0; i < failing; ++i) port.Expect(Text(kUnitRequests[i])).Reply(120, Text(kUnitReplies[i]));
      port.Expect(Text(kUnitRequests[failing])).Reply(120, Text(reply));
      CSensorCybermate unit;
      std::fill_n(unit.m_pData, 63, BYTE{0xA5});
      EXPECT_EQ(unit.GetData(&port, 1), 0) << reply;

      Bytes expected = UnitRecord();
      std::fill(expected.begin() + kUnitParts[failing], expected.end(), BYTE{0xA5});
      EXPECT_EQ(ToHex(Bytes(unit.m_pData, unit.m_pData + 63)), ToHex(expected)) << failing << ' ' << reply;
    }
  }
}

}  // namespace
}  // namespace fieldline::test
