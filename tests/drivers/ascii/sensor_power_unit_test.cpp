#include "fieldline/drivers/ascii/sensor_power_unit.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <map>

#include "tests/drivers/ascii/frames.h"
#include "tests/support/golden_poll.h"

namespace fieldline::test {
namespace {

// Value k, from 0, shows k + 1.5, but for these: 220.5, -3.5, 49.98, 1234.7.
const std::map<int, std::string> kSpecialValues = {
    {0,  "00805C43"},
    {1,  "000060C0"},
    {6,  "85EB4742"},
    {48, "66569A44"}
};

std::string Values(int first, int end) {
  std::string text;
  for (int k = first; k < end; ++k) {
    text += kSpecialValues.contains(k) ? kSpecialValues.at(k) : HexFloat(static_cast<float>(k) + 1.5f);
  }
  return text;
}

TEST(SensorPowerUnit, DecodesFiveRepliesAndStopsAtTheRangeOfAField) {
  std::vector<unsigned> values;
  for (unsigned k = 0; k < 52; ++k) values.push_back(10 * k + 15);
  for (const unsigned k : {7u, 11u, 20u, 21u, 22u, 23u}) values[k] = 100 * k + 150;
  values[0] = 2205;
  values[1] = 35;
  values[6] = 4998;
  values[48] = 1234;
  GoldenPoll poll = {SERDAT_POWER_UNIT, 1, {}, Numbers(4, values)};
  Append(poll, Hex("A1 B1 B2 B3 B4 B5 B6 B7 B8 B9 BA A5"));
  const auto add = [&](const char* request, const std::string& reply_from_length, Range writes) {
    Add(poll, request, 150, Seal("~11772A00" + reply_from_length), writes);
  };
  add("~11012AE10000FD94\r", "E06CFFFF" + Values(0, 13), {0, 52});
  add("~11012A410000FDA5\r", "A060" + std::string(26, 'F') + Values(13, 21) + "FFFFFF", {52, 32});
  add("~11012AE20000FD93\r", "D07CFFFF" + Values(21, 36), {84, 60});
  add("~11012AE30000FD92\r", "4084FFFF" + Values(36, 52), {144, 64});
  add("~11012A430000FDA3\r", "101EFFA1FFB1B2B3B4B5B6B7B8B9BAFFFF", {208, 11});
  ExpectRecordAndRejectsDamage(poll);
  Bytes too_long = poll.exchanges[0].reply;
  too_long.push_back('\r');
  ExpectRefusal(poll, 0, too_long);

  std::string huge = "~11012A00E06C0000";
  for (int k = 0; k < 13; ++k) huge += "FFFFFF7F";  // no number
  poll.exchanges[0].reply = Text(Seal(huge));
  const Bytes most = Numbers(4, std::vector<unsigned>(13, 2147483647));
  std::copy(most.begin(), most.end(), poll.record.begin());
  ExpectRecord(poll);
}

}  // namespace
}  // namespace fieldline::test
