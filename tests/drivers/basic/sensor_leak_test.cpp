#include "fieldline/drivers/basic/sensor_leak.h"

#include <gtest/gtest.h>

#include "tests/support/golden_poll.h"
#include "tests/support/modbus_frames.h"

namespace fieldline::test {
namespace {

TEST(SensorLeak, DecodesTheStatusBits) {
  const auto poll_of = [](WORD status, const std::string& flags) {
    const std::string input_1 = status & 3 ? " 34 12 00 00" : " 00 00 00 00";
    GoldenPoll poll = {SERDAT_LEAK, 1, {}, Hex(flags + input_1 + " 78 56 00 00 BC 9A 00 00")};
    const auto add = [&](const char* request, BYTE function, WORD reg, Range writes) {
      poll.exchanges.push_back({Hex(request), 10, RegisterReply(1, function, {reg}), {writes}});
    };
    add("01 04 00 00 00 01 31 CA", 4, status, {0, 4});
    if (status & 3) add("01 04 00 01 00 01 60 0A", 4, 0x1234, {4, 4});
    add("01 03 00 01 00 01 D5 CA", 3, 0x5678, {8, 4});
    add("01 04 00 04 00 01 70 0B", 4, 0x9ABC, {12, 4});
    return poll;
  };
  for (const WORD none : {WORD{0x0010}, WORD{0xFFF0}}) ExpectRecord(poll_of(none, "01 00 00 00"));
  for (const WORD leak : {WORD{1}, WORD{2}}) ExpectRecord(poll_of(leak, "01 01 00 00"));
  for (const WORD second : {WORD{4}, WORD{8}}) ExpectRecord(poll_of(second, "01 00 01 01"));
  ExpectRecordAndRejectsDamage(poll_of(9, "01 01 01 01"));

  GoldenPoll noisy = poll_of(0, "01 00 00 00");
  Bytes& reply = noisy.exchanges[0].reply;
  reply.insert(reply.end(), {0x00, 0xFF, 0x00});
  ExpectRecord(noisy);
}

}  // namespace
}  // namespace fieldline::test
