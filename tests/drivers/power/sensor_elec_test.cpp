#include "fieldline/drivers/power/sensor_elec.h"

#include <gtest/gtest.h>

#include "tests/support/golden_poll.h"
#include "tests/support/modbus_frames.h"

namespace fieldline::test {
namespace {

const Bytes kElecRequest = Hex("05 03 00 00 00 39 84 5C");

TEST(SensorElec, MovesEachRegisterToItsFieldAndScale) {
  std::vector<WORD> registers = Counting(100, 0, 57);
  registers[0] = 1;
  registers[1] = 2;
  registers[34] = 2205;
  registers[45] = registers[56] = 0xFFFF;
  const GoldenPoll poll = {SERDAT_ELEC,
                           5,
                           {{kElecRequest, 120, RegisterReply(5, 3, registers)}},
                           Numbers(4, {65538,  22050, 1350, 1360, 1370, 1380, 1390, 1400, 1410, 1420, 1430, 1440,
                                       655350, 146,   147,  148,  149,  150,  151,  152,  153,  3850, 3875, 1638375})};
  ExpectRecordAndRejectsDamage(poll);
  ExpectRefusal(poll, 0, WithCrc("05 83 02"));
  ExpectRefusal(poll, 0, RegisterReply(5, 3, Counting(0, 0, 56)));
}

TEST(SensorElec, KeepsQuantities5And6WhileOnePhaseIsImplausible) {
  CSensorElec meter;
  ScriptedPort port;
  std::vector<WORD> registers(57);
  registers[51] = registers[52] = registers[53] = 10000;
  registers[54] = 4;
  port.Expect(kElecRequest).Reply(120, RegisterReply(5, 3, registers));
  ASSERT_EQ(meter.GetData(&port, 5), 1);
  EXPECT_EQ(meter.m_data.q5_phase3, 10000u);
  EXPECT_EQ(meter.m_data.q6_phase1, 100u);

  for (const std::size_t implausible : {51u, 52u, 53u}) {
    registers = Counting(0, 0, 57);
    registers[implausible] = 10001;
    port.Expect(kElecRequest).Reply(120, RegisterReply(5, 3, registers));
    EXPECT_EQ(meter.GetData(&port, 5), 1);
    EXPECT_EQ(meter.m_data.q1_total, 340u);
    EXPECT_EQ(meter.m_data.q5_phase3, 10000u);
    EXPECT_EQ(meter.m_data.q6_phase1, 100u);
    meter.m_data.q1_total = 0;
  }
}

}  // namespace
}  // namespace fieldline::test
