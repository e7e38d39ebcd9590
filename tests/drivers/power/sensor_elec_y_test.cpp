#include "fieldline/drivers/power/sensor_elec_y.h"

#include <gtest/gtest.h>

#include "tests/support/golden_poll.h"
#include "tests/support/modbus_frames.h"

namespace fieldline::test {
namespace {

TEST(SensorElecY, MovesEachRegisterToItsFieldAndScale) {
  const Exchange values = {Hex("05 03 00 00 00 20 45 96"), 69, RegisterReply(5, 3, Counting(100, 0, 32))};
  const Exchange counter = {Hex("05 03 00 21 00 08 15 82"), 21, RegisterReply(5, 3, Counting(67, 33, 8))};
  GoldenPoll poll = {
      SERDAT_ELEC_Y, 5, {values, counter},
        Numbers(4, { 6553701, 1270, 1040, 1120, 1200, 1290, 1060, 1140,
                         1220, 1300, 1070, 1150, 1230, 128, 105, 113,
                         121, 126, 100, 108, 116, 102,  110,  118}
        )
  };
  ExpectRecordAndRejectsDamage(poll);
  ExpectRefusal(poll, 0, WithCrc("05 83 02"));
  ExpectRefusal(poll, 0, RegisterReply(5, 3, Counting(100, 0, 30)));
  ExpectRefusal(poll, 1, RegisterReply(5, 3, {100}));

  // As little as is decoded.
  poll.exchanges[0].reply = RegisterReply(5, 3, Counting(100, 0, 31));
  poll.exchanges[1].reply = RegisterReply(5, 3, {100, 101});
  ExpectRecord(poll);
}

}  // namespace
}  // namespace fieldline::test
