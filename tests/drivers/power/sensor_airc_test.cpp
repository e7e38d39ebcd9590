#include "fieldline/drivers/power/sensor_airc.h"

#include <gtest/gtest.h>

#include <memory>

#include "tests/support/damage.h"
#include "tests/support/modbus_frames.h"

namespace fieldline::test {
namespace {

const char kRequest[] = "05 04 00 00 00 3C F1 9F";
constexpr int kAsk = 100;

// A reply of `length` bytes whose byte i holds i, checksum aside.
Bytes Reply(int length) {
  Bytes bytes{5, 4, 0x77};
  for (int i = 3; i < length - 2; ++i) bytes.push_back(static_cast<BYTE>(i));
  return WithCrc(std::move(bytes));
}

TEST(SensorAirc, KeepsTheBytesInTheOrderReceived) {
  for (const int length : {57, 58, 100}) {
    ScriptedPort port;
    port.Expect(Hex(kRequest)).Reply(kAsk, Reply(length));
    CSensorAirc unit;
    ASSERT_EQ(unit.GetData(&port, 5), 1) << length << " bytes";
    EXPECT_EQ(ToHex({unit.m_pData, unit.m_pData + 32}),
              "03 04 05 06 07 08 09 00 0B 0E 0F 10 11 12 "
              "1B 1C 1D 1E 1F 20 21 00 23 26 27 28 29 2A "
              "33 34 35 36");
    EXPECT_EQ(unit.m_data.first.register_0, 0x0403);
  }
}

TEST(SensorAirc, RejectsDamageShortRepliesAndStandardOnes) {
  ExpectRejectsDamage({
      .make = [] { return std::make_unique<CSensorAirc>(); },
      .addr = 5,
      .exchanges = {{Hex(kRequest), kAsk, Reply(57)}},
      .record_size = 32,
  });
  for (const Bytes& reply : {WithCrc("05 84 02"), Reply(56), RegisterReply(5, 4, std::vector<WORD>(60))}) {
    ScriptedPort port;
    port.Expect(Hex(kRequest)).Reply(kAsk, reply);
    CSensorAirc unit;
    EXPECT_EQ(unit.GetData(&port, 5), 0) << reply.size() << " bytes";
  }
}

}  // namespace
}  // namespace fieldline::test
