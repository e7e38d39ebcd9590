#include "fieldline/drivers/basic/sensor_onoff.h"

#include <gtest/gtest.h>

#include <memory>

#include "tests/support/damage.h"
#include "tests/support/fake_clock.h"
#include "tests/support/modbus_frames.h"

namespace fieldline::test {
namespace {

const char kRequest[] = "01 04 00 00 00 0C F0 0F";
const char kReply[] = "01 04 0C 01 00 00 01 00 00 00 00 00 00 00 01 A4 24";
constexpr int kAsk = 20;

TEST(SensorOnoff, CopiesOneByteAnInput) {
  ScriptedPort port;
  port.Expect(Hex(kRequest)).Reply(kAsk, Hex(kReply));
  CSensorOnoff driver;
  ASSERT_EQ(driver.GetData(&port, 1), 1);
  EXPECT_EQ(ToHex({driver.m_pData, driver.m_pData + 12}), "01 00 00 01 00 00 00 00 00 00 00 01");
}

TEST(SensorOnoff, WaitsMoreThanTenMillisecondsAlsoWhenTheClockWraps) {
  for (const std::uint32_t start : {0u, 0xFFFFFFFAu}) {
    Clock().ticks = start;
    BusyWait(10);
    // One look at the clock costs a millisecond here: the first at `start`, the last at start + 11.
    EXPECT_EQ(Clock().ticks - start, 12u);
  }
}

TEST(SensorOnoff, WaitsBetweenRequestAndReply) {
  Clock().ticks = 0;
  ScriptedPort port;
  port.ExpectButReport(Hex(kRequest), 7);
  CSensorOnoff driver;
  EXPECT_EQ(driver.GetData(&port, 1), 0);
  EXPECT_EQ(Clock().ticks, 0u) << "no wait for what was not sent";

  std::uint32_t at_read = 0;
  port.Expect(Hex(kRequest)).Reply(kAsk, Hex(kReply)).on_read = [&] { at_read = Clock().ticks; };
  EXPECT_EQ(driver.GetData(&port, 1), 1);
  EXPECT_GT(at_read, 10u);
}

TEST(SensorOnoff, RejectsDamageAndStandardReplies) {
  ExpectRejectsDamage({
      .make = [] { return std::make_unique<CSensorOnoff>(); },
      .addr = 1,
      .exchanges = {{Hex(kRequest), kAsk, Hex(kReply)}},
      .record_size = 12,
  });

  for (const Bytes& reply : {RegisterReply(1, 4, {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12}), WithCrc("01 84 02")}) {
    ScriptedPort port;
    port.Expect(Hex(kRequest)).Reply(kAsk, reply);
    CSensorOnoff driver;
    EXPECT_EQ(driver.GetData(&port, 1), 0) << ToHex(reply);
  }
}

}  // namespace
}  // namespace fieldline::test
