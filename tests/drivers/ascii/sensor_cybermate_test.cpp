#include "fieldline/drivers/ascii/sensor_cybermate.h"

#include <gtest/gtest.h>

#include <algorithm>

#include "tests/drivers/ascii/frames.h"
#include "tests/support/golden_poll.h"

namespace fieldline::test {
namespace {

// The shortest replies that carry all that is decoded; the check needs no checksum.
TEST(SensorCybermate, DecodesFourRepliesAndKeepsWhatCameBeforeAFailure) {
  GoldenPoll poll = {SERDAT_CYBERMATE, 1, {}, Numbers(4, {500, 2, 3, 4, 0xFFFF})};
  Append(poll,
         Hex("11 12 13 14 15 16 17 21 22 23 24 25 26 27 28 29 2A 2B 2C 2D 2E 2F 30 31 32 33 34 35 36 37 38 39 3A"));
  Append(poll, Hex("C1 C2 C3 C4 C5 C6 C7 C8 C9 CA"));
  Add(poll, "~210160420000FDB0\r", 120, "~21016000B01401F4000200030004FFFF", {0, 20});
  Add(poll, "~210160430000FDAF\r", 120, "~21016000200E11121314151617", {20, 7});
  Add(poll, "~210160440000FDAE\r", 120, "~2101600090342122232425262728292A2B2C2D2E2F303132333435363738393A", {27, 26});
  Add(poll, "~210160470000FDAB\r", 120, "~21016000B014C1C2C3C4C5C6C7C8C9CA", {53, 10});
  ExpectRecord(poll);
  for (std::size_t i = 0; i < poll.exchanges.size(); ++i) {
    Bytes reply = poll.exchanges[i].reply;
    ExpectRefusal(poll, i, {});
    ExpectRefusal(poll, i, Bytes(reply.begin(), reply.begin() + 8));
    ExpectRefusal(poll, i, Bytes(reply.begin(), reply.end() - 1));
    reply[7] = '1';
    ExpectRefusal(poll, i, reply);
    std::swap(reply[7], reply[8]);
    ExpectRefusal(poll, i, reply);
  }

  poll.exchanges[0].reply = Text("???????00????01f4" + std::string(103, 'z'));
  const Bytes garbled = Numbers(4, {0x0104, 0, 0, 0, 0});
  std::copy(garbled.begin(), garbled.end(), poll.record.begin());
  ExpectRecord(poll);
}

}  // namespace
}  // namespace fieldline::test
