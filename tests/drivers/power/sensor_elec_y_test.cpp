#include "fieldline/drivers/power/sensor_elec_y.h"

#include <gtest/gtest.h>

#include <memory>

#include "tests/support/damage.h"
#include "tests/support/modbus_frames.h"

namespace fieldline::test {
namespace {

const char kValuesRequest[] = "05 03 00 00 00 20 45 96";
const char kCounterRequest[] = "05 03 00 21 00 08 15 82";
constexpr int kValuesAsk = 69;
constexpr int kCounterAsk = 21;

// Register k holds 100 + k.
Bytes Registers(int first, int count) {
  std::vector<WORD> registers;
  for (int k = first; k < first + count; ++k) registers.push_back(static_cast<WORD>(100 + k));
  return RegisterReply(5, 3, registers);
}

TEST(SensorElecY, MovesEachRegisterToItsFieldAndScale) {
  ScriptedPort port;
  port.Expect(Hex(kValuesRequest)).Reply(kValuesAsk, Registers(0, 32));
  port.Expect(Hex(kCounterRequest)).Reply(kCounterAsk, RegisterReply(5, 3, {0x0064, 0x0065, 1, 2, 3, 4, 5, 6}));
  CSensorElecY meter;
  ASSERT_EQ(meter.GetData(&port, 5), 1);
  const auto* fields = reinterpret_cast<const std::uint32_t*>(meter.m_pData);
  const std::uint32_t expected[] = {6553701, 1270, 1040, 1120, 1200, 1290, 1060, 1140, 1220, 1300, 1070, 1150,
                                    1230,    128,  105,  113,  121,  126,  100,  108,  116,  102,  110,  118};
  for (int i = 0; i < 24; ++i) EXPECT_EQ(fields[i], expected[i]) << "position " << 4 * i;
}

TEST(SensorElecY, TakesRepliesThatCarryNoMoreThanIsDecoded) {
  const Bytes values = Registers(0, 31);
  const Bytes counter = RegisterReply(5, 3, {0x0064, 0x0065});
  ScriptedPort port;
  port.Expect(Hex(kValuesRequest)).Reply(kValuesAsk, values);
  port.Expect(Hex(kCounterRequest)).Reply(kCounterAsk, counter);
  CSensorElecY meter;
  EXPECT_EQ(meter.GetData(&port, 5), 1);
  EXPECT_EQ(meter.m_data.counter, 6553701u);
  EXPECT_EQ(meter.m_data.q3_total, 1300u);

  port.Expect(Hex(kValuesRequest)).Reply(kValuesAsk, Registers(0, 30));
  EXPECT_EQ(meter.GetData(&port, 5), 0);
  port.Expect(Hex(kValuesRequest)).Reply(kValuesAsk, values);
  port.Expect(Hex(kCounterRequest)).Reply(kCounterAsk, RegisterReply(5, 3, {0x0064}));
  EXPECT_EQ(meter.GetData(&port, 5), 0);
}

TEST(SensorElecY, RejectsDamageInEitherExchangeWithTheWholeRecordKept) {
  ExpectRejectsDamage({
      .make = [] { return std::make_unique<CSensorElecY>();                                                    },
      .addr = 5,
      .exchanges = { {Hex(kValuesRequest), kValuesAsk, Registers(0, 32)},
                  {Hex(kCounterRequest), kCounterAsk, Registers(33, 8)}},
      .record_size = 96,
  });

  ScriptedPort port;
  port.Expect(Hex(kValuesRequest)).Reply(kValuesAsk, WithCrc("05 83 02"));
  CSensorElecY meter;
  EXPECT_EQ(meter.GetData(&port, 5), 0) << "exception reply";
}

}  // namespace
}  // namespace fieldline::test
