#include "fieldline/drivers/basic/sensor_envir.h"

#include <gtest/gtest.h>

#include "tests/support/golden_poll.h"

namespace fieldline::test {
namespace {

TEST(SensorEnvir, StoresTheSecondRegisterFirst) {
  ExpectRecordAndRejectsDamage({SERDAT_ENVIR,
                                1,
                                {{Hex("01 03 00 00 00 02 C4 0B"), 9, Hex("01 03 04 01 23 FE DC 4B FC")}},
                                Hex("DC FE 00 00 23 01 00 00")});
}

}  // namespace
}  // namespace fieldline::test
