#include "fieldline/drivers/ascii/sensor_battery.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/drivers/ascii/frames.h"
#include "tests/support/fake_clock.h"
#include "tests/support/golden_poll.h"

namespace fieldline::test {
namespace {

// Cell i, from 0, shows i + 2 volts, but for the first.
GoldenPoll BatteryPoll(const std::string& first_cell, unsigned first_value, const std::string& group_2_first,
                       unsigned group_2_value) {
  std::string cells;
  std::vector<unsigned> millivolts = {first_value};
  for (unsigned i = 1; i < 32; ++i) {
    cells += HexFloat(static_cast<float>(i + 2));
    millivolts.push_back(1000 * (i + 2));
  }
  const std::string reply = "~20014600F1C40020" + first_cell + cells + std::string(136, 'F') +  //
                            "D1" + HexFloat(999) + HexFloat(1.5f) +                             //
                            "D2" + group_2_first + "E17A943E" +                                 // 0.29
                            "D3" + HexFloat(25.5f) + HexFloat(-1.75f) + "D4";
  GoldenPoll poll = {SERDAT_BATTERY, 1, {}, Numbers(4, {first_value + 1000 * (33 * 34 / 2 - 1 - 2)})};
  Append(poll, Numbers(2, {group_2_value, 255}));
  Append(poll, Numbers(2, millivolts));
  Append(poll, Numbers(2, {150, 28, 18, 1000, 32, 4}));
  return Add(poll, "~20014641E00201FD36\r", 470, Seal(reply), {0, 84});
}

TEST(SensorBattery, DecodesTheReplyAndLetsTheMonitorRest) {
  Clock().sleeps.clear();
  const GoldenPoll poll = BatteryPoll("66660640", 2099, "6666A6C0", 520);  // 2.1, -5.2
  ExpectRecordAndRejectsDamage(poll);
  EXPECT_THAT(Clock().sleeps, testing::ElementsAre(2000u)) << "after a success only";
  const Bytes& reply = poll.exchanges[0].reply;
  ExpectRefusal(poll, 0, Text(Seal("~20014604" + std::string(reply.begin() + 9, reply.end() - 5))));
  // 70 and infinity leave their low bits, the latter of the most that 32 bits hold.
  ExpectRecord(BatteryPoll("00008C42", 4464, "0000807F", 0xFFFF));
}

}  // namespace
}  // namespace fieldline::test
