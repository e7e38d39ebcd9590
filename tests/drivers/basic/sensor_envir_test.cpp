#include "fieldline/drivers/basic/sensor_envir.h"

#include <gtest/gtest.h>

#include <cstring>
#include <memory>

#include "fieldline/fieldline.h"
#include "tests/support/damage.h"
#include "tests/support/modbus_frames.h"

namespace fieldline::test {
namespace {

const char kRequest[] = "01 03 00 00 00 02 C4 0B";
const char kReply[] = "01 03 04 01 23 FE DC 4B FC";

TEST(SensorEnvir, StoresTheSecondRegisterFirst) {
  ScriptedPort port;
  port.Expect(Hex(kRequest)).Reply(9, Hex(kReply));
  CSensorEnvir probe;
  EXPECT_EQ(probe.GetKind(), 5);
  ASSERT_EQ(probe.GetData(&port, 1), 1);
  EXPECT_EQ(ToHex({probe.m_pData, probe.m_pData + 8}), "DC FE 00 00 23 01 00 00");
}

TEST(SensorEnvir, SendsTheLowByteOfTheAddress) {
  ScriptedPort port;
  port.Expect(Hex("0A 03 00 00 00 02 C5 70")).Reply(9, RegisterReply(0x0A, 3, {0xFF38, 0}));
  CSensorEnvir probe;
  ASSERT_EQ(probe.GetData(&port, 0x70A), 1);
  EXPECT_EQ(probe.m_data.register_0, 65336u) << "no sign";
}

TEST(SensorEnvir, RejectsDamage) {
  ExpectRejectsDamage({
      .make = [] { return std::make_unique<CSensorEnvir>(); },
      .addr = 1,
      .exchanges = {{Hex(kRequest), 9, Hex(kReply)}},
      .record_size = 8,
  });
}

TEST(SensorEnvir, SendsNothingOnAClosedPort) {
  ScriptedPort port;
  port.open = 0;
  CSensorEnvir probe;
  EXPECT_EQ(probe.GetData(&port, 1), 0);
  EXPECT_EQ(port.calls, "");
}

TEST(SensorBase, KeepsTheRecordBehindItsBaseAndACopyAtItsOwn) {
  CSensorEnvir probe;
  EXPECT_EQ(probe.m_pData, reinterpret_cast<BYTE*>(&probe) + sizeof(CSensorBase));
  EXPECT_EQ(probe.m_data.register_0 + probe.m_data.register_1, 0u) << "zero from construction on";
  probe.m_data.register_0 = 7;

  CSensorEnvir copy(probe);
  EXPECT_EQ(copy.m_pData, reinterpret_cast<BYTE*>(&copy.m_data));
  EXPECT_EQ(copy.m_data.register_0, 7u);

  CSensorEnvir assigned;
  assigned = probe;
  EXPECT_EQ(assigned.m_pData, reinterpret_cast<BYTE*>(&assigned.m_data));
  EXPECT_EQ(assigned.m_data.register_0, 7u);

  static_cast<CSensorBase&>(assigned) = probe;
  EXPECT_EQ(assigned.m_pData, reinterpret_cast<BYTE*>(&assigned.m_data));

  CSensorCardK terminal;
  terminal.m_byCard[0] = 7;
  CSensorCardK& itself = terminal;
  terminal = itself;
  EXPECT_EQ(terminal.m_byCard[0], 7);
  static_cast<CSensorBase&>(terminal) = CSensorCardK();
  EXPECT_EQ(terminal.m_pData, terminal.m_byCard);
}

TEST(SensorBase, ShowsAndAllowsWhatApplicationsUse) {
  class Port : public CHubSerTest {};
  Port port;
  port.m_datEnvir.register_0 = 1;
  CSerBase ports[2] = {};
  CSensorBase sensors[2] = {};
  sensors[1].m_byReserved = sensors[1].m_abyReserved[99] = sensors[1].m_byCmd[31] = 2;
  sensors[0] = sensors[1];
  EXPECT_EQ(ports[1].m_nPort, 1);
  EXPECT_EQ(sensors[0].m_byReserved + sensors[0].m_abyReserved[99] + sensors[0].m_byCmd[31], 6);
  EXPECT_EQ(sensors[0].m_nFlags + sensors[0].m_eKind, 0);
  EXPECT_EQ(CSensorFactory::GetInstance()->m_arrSensor.size() + CHubSerFactory::GetInstance()->m_arrSer.size(), 0u);
}

}  // namespace
}  // namespace fieldline::test
