#include "fieldline/drivers/power/sensor_elec.h"

#include <gtest/gtest.h>

#include <memory>

#include "tests/support/damage.h"
#include "tests/support/modbus_frames.h"

namespace fieldline::test {
namespace {

const char kRequest[] = "05 03 00 00 00 39 84 5C";
constexpr int kAsk = 120;

// Register k holds 100 + k but for the ones given.
Bytes Reply(std::vector<std::pair<int, WORD>> given) {
  std::vector<WORD> registers(57);
  for (std::size_t k = 0; k < registers.size(); ++k) registers[k] = static_cast<WORD>(100 + k);
  for (const auto& [k, value] : given) registers[static_cast<std::size_t>(k)] = value;
  return RegisterReply(5, 3, registers);
}

TEST(SensorElec, MovesEachRegisterToItsFieldAndScale) {
  ScriptedPort port;
  port.Expect(Hex(kRequest))
      .Reply(kAsk, Reply({
                       {0,  0x0001},
                       {1,  0x0002},
                       {34, 2205  },
                       {45, 0xFFFF},
                       {56, 0xFFFF}
  }));
  CSensorElec meter;
  ASSERT_EQ(meter.GetData(&port, 0x105), 1);
  const auto* fields = reinterpret_cast<const std::uint32_t*>(meter.m_pData);
  const std::uint32_t expected[] = {65538,  22050, 1350, 1360, 1370, 1380, 1390, 1400, 1410, 1420, 1430, 1440,
                                    655350, 146,   147,  148,  149,  150,  151,  152,  153,  3850, 3875, 1638375};
  for (int i = 0; i < 24; ++i) EXPECT_EQ(fields[i], expected[i]) << "position " << 4 * i;
}

TEST(SensorElec, KeepsQuantities5And6WhileOnePhaseIsImplausible) {
  CSensorElec meter;
  ScriptedPort port;
  port.Expect(Hex(kRequest))
      .Reply(kAsk, Reply({
                       {51, 10000},
                       {52, 10000},
                       {53, 10000},
                       {54, 4    }
  }));
  ASSERT_EQ(meter.GetData(&port, 5), 1);
  EXPECT_EQ(meter.m_data.q5_phase3, 10000u);
  EXPECT_EQ(meter.m_data.q6_phase1, 100u);

  for (const int implausible : {51, 52, 53}) {
    port.Expect(Hex(kRequest))
        .Reply(kAsk, Reply({
                         {34,          7    },
                         {implausible, 10001},
                         {54,          8    }
    }));
    EXPECT_EQ(meter.GetData(&port, 5), 1);
    EXPECT_EQ(meter.m_data.q1_total, 70u);
    EXPECT_EQ(meter.m_data.q5_phase3, 10000u);
    EXPECT_EQ(meter.m_data.q6_phase1, 100u);
    meter.m_data.q1_total = 0;
  }
}

TEST(SensorElec, RejectsDamageAndShortReplies) {
  ExpectRejectsDamage({
      .make = [] { return std::make_unique<CSensorElec>(); },
      .addr = 5,
      .exchanges = {{Hex(kRequest), kAsk, Reply({})}},
      .record_size = 96,
  });
  for (const Bytes& reply : {WithCrc("05 83 02"), RegisterReply(5, 3, std::vector<WORD>(56))}) {
    ScriptedPort port;
    port.Expect(Hex(kRequest)).Reply(kAsk, reply);
    CSensorElec meter;
    EXPECT_EQ(meter.GetData(&port, 5), 0) << reply.size() << " bytes";
  }
}

}  // namespace
}  // namespace fieldline::test
