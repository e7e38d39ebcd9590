#include "fieldline/drivers/basic/sensor_onoff.h"

#include <gtest/gtest.h>

#include "tests/support/fake_clock.h"
#include "tests/support/golden_poll.h"
#include "tests/support/modbus_frames.h"

namespace fieldline::test {
namespace {

const GoldenPoll kOnoff = {
    SERDAT_ONOFF,
    1,
    {{Hex("01 04 00 00 00 0C F0 0F"), 20, Hex("01 04 0C 01 00 00 01 00 00 00 00 00 00 00 01 A4 24")}},
    Hex("01 00 00 01 00 00 00 00 00 00 00 01")};

TEST(SensorOnoff, CopiesOneByteAnInput) {
  ExpectRecordAndRejectsDamage(kOnoff);
  ExpectRefusal(kOnoff, 0, RegisterReply(1, 4, Counting(1, 0, 12)));
  ExpectRefusal(kOnoff, 0, WithCrc("01 84 02"));
}

TEST(SensorOnoff, WaitsMoreThanTenMillisecondsAlsoWhenTheClockWraps) {
  for (const std::uint32_t start : {0u, 0xFFFFFFFAu}) {
    Clock().ticks = start;
    ScriptedPort port;
    const auto& [request, ask, reply, writes] = kOnoff.exchanges[0];
    std::uint32_t at_read = 0;
    port.ExpectButReport(request, 7).Expect(request).Reply(ask, reply).on_read = [&] { at_read = Clock().ticks; };
    CSensorOnoff driver;
    EXPECT_EQ(driver.GetData(&port, 1), 0);
    EXPECT_EQ(Clock().ticks, start) << "no wait for what was not sent";
    EXPECT_EQ(driver.GetData(&port, 1), 1);
    // One look at the clock costs a millisecond here: the first at `start`, the last at start + 11.
    EXPECT_EQ(at_read - start, 12u);
  }
}

}  // namespace
}  // namespace fieldline::test
