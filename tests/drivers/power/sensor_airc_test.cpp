#include "fieldline/drivers/power/sensor_airc.h"

#include <gtest/gtest.h>

#include "tests/support/golden_poll.h"
#include "tests/support/modbus_frames.h"

namespace fieldline::test {
namespace {

// A reply of `length` bytes whose byte i holds i, checksum aside.
Bytes AircReply(int length) {
  Bytes bytes{5, 4, 0x77};
  for (int i = 3; i < length - 2; ++i) bytes.push_back(static_cast<BYTE>(i));
  return WithCrc(std::move(bytes));
}

TEST(SensorAirc, KeepsTheBytesInTheOrderReceived) {
  GoldenPoll poll = {SERDAT_AIRC,
                     5,
                     {{Hex("05 04 00 00 00 3C F1 9F"), 100, AircReply(57)}},
                     Hex("03 04 05 06 07 08 09 00 0B 0E 0F 10 11 12 1B 1C 1D 1E 1F 20 21 00 23 26 27 28 29 2A "
                         "33 34 35 36")};
  ExpectRecordAndRejectsDamage(poll);
  for (const Bytes& reply : {WithCrc("05 84 02"), AircReply(56), RegisterReply(5, 4, Counting(0, 0, 60))}) {
    ExpectRefusal(poll, 0, reply);
  }
  for (const int length : {58, 100}) {
    poll.exchanges[0].reply = AircReply(length);
    ExpectRecord(poll);
  }
}

}  // namespace
}  // namespace fieldline::test
