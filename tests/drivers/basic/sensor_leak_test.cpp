#include "fieldline/drivers/basic/sensor_leak.h"

#include <gtest/gtest.h>

#include <memory>

#include "tests/support/damage.h"
#include "tests/support/modbus_frames.h"

namespace fieldline::test {
namespace {

const char kStatus[] = "01 04 00 00 00 01 31 CA";
const char kInput1[] = "01 04 00 01 00 01 60 0A";
const char kHolding1[] = "01 03 00 01 00 01 D5 CA";
const char kInput4[] = "01 04 00 04 00 01 70 0B";
constexpr int kAsk = 10;

std::string Record(const CSensorLeak& driver) { return ToHex({driver.m_pData, driver.m_pData + sizeof(LEAK_DATA)}); }

TEST(SensorLeak, DecodesTheStatusBits) {
  struct {
    WORD status;
    const char* flags;
  } const cases[] = {
      {0x0000, "01 00 00 00"},
      {0x0001, "01 01 00 00"},
      {0x0002, "01 01 00 00"},
      {0x0004, "01 00 01 01"},
      {0x0008, "01 00 01 01"},
      {0x0010, "01 00 00 00"},
      {0xFFF0, "01 00 00 00"},
      {0x000F, "01 01 01 01"},
  };
  for (const auto& c : cases) {
    ScriptedPort port;
    port.Expect(Hex(kStatus)).Reply(kAsk, RegisterReply(1, 4, {c.status}));
    if (c.status & 3) port.Expect(Hex(kInput1)).Reply(kAsk, RegisterReply(1, 4, {0x1234}));
    port.Expect(Hex(kHolding1)).Reply(kAsk, RegisterReply(1, 3, {0x5678}));
    port.Expect(Hex(kInput4)).Reply(kAsk, RegisterReply(1, 4, {0x9ABC}));
    CSensorLeak driver;
    driver.m_data.input_register_1 = 99;
    ASSERT_EQ(driver.GetData(&port, 1), 1) << c.status;
    const std::string input_1 = c.status & 3 ? " 34 12 00 00" : " 00 00 00 00";
    EXPECT_EQ(Record(driver), c.flags + input_1 + " 78 56 00 00 BC 9A 00 00");
  }
}

TEST(SensorLeak, TakesTheFrameThatItsByteCountAnnounces) {
  Bytes with_noise = RegisterReply(1, 4, {0x0000});
  with_noise.insert(with_noise.end(), {0x00, 0xFF, 0x00});
  ScriptedPort port;
  port.Expect(Hex(kStatus)).Reply(kAsk, with_noise);
  port.Expect(Hex(kHolding1)).Reply(kAsk, RegisterReply(1, 3, {1}));
  port.Expect(Hex(kInput4)).Reply(kAsk, RegisterReply(1, 4, {2}));
  CSensorLeak driver;
  EXPECT_EQ(driver.GetData(&port, 1), 1);
}

TEST(SensorLeak, RejectsDamage) {
  ExpectRejectsDamage({
      .make = [] { return std::make_unique<CSensorLeak>();                                                             },
      .addr = 1,
      .exchanges = { {Hex(kStatus), kAsk, RegisterReply(1, 4, {0x0009}), {{0, 4}}},
                  {Hex(kInput1), kAsk, RegisterReply(1, 4, {0x1234}), {{4, 4}}},
                  {Hex(kHolding1), kAsk, RegisterReply(1, 3, {0x5678}), {{8, 4}}},
                  {Hex(kInput4), kAsk, RegisterReply(1, 4, {0x9ABC}), {{12, 4}}}},
      .record_size = 16,
  });
}

}  // namespace
}  // namespace fieldline::test
