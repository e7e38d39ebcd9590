#include "fieldline/drivers/power/sensor_emerson.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <tuple>

#include "tests/support/golden_poll.h"
#include "tests/support/modbus_frames.h"

namespace fieldline::test {
namespace {

TEST(SensorEmerson, PlacesInputsAndRuns) {
  const auto registers = [](int first, int count) { return RegisterReply(5, 4, Counting(1000, first, count)); };
  GoldenPoll poll = {SERDAT_EMERSON, 5, {}, Bytes(293, kOld)};
  const Bytes inputs = WithCrc("05 02 0E 01 02 00 00 00 00 00 00 00 00 00 00 00 10");
  poll.exchanges.push_back({Hex("05 02 00 00 00 6D B8 63"), 19, inputs, {{2, 109}}});
  poll.exchanges.push_back({Hex("05 04 00 08 00 25 B1 97"), 79, registers(8, 37), {{111, 62}}});
  poll.exchanges.push_back({Hex("05 04 00 31 00 1E 20 49"), 65, registers(49, 30), {{173, 36}}});
  poll.exchanges.push_back({
      Hex("05 04 00 63 00 15 C0 5F"), 47, registers(99, 21), {{0, 2}, {209, 38}}
  });
  poll.exchanges.push_back({Hex("05 04 00 81 00 1D 61 AF"), 63, registers(129, 29), {{247, 46}}});
  for (int j = 0; j < 109; ++j) poll.record[static_cast<std::size_t>(2 + j)] = j == 0 || j == 9 || j == 108;
  const std::tuple<int, int, int> runs[] = {
      {0,   100, 1 },
      {111, 8,   25},
      {161, 39,  6 },
      {173, 49,  8 },
      {189, 69,  10},
      {209, 99,  1 },
      {211, 101, 12},
      {235, 114, 6 },
      {247, 129, 5 },
      {257, 140, 18}
  };
  for (const auto& [position, first, count] : runs) {
    for (int k = 0; k < count; ++k) {
      const Bytes number = Numbers(2, {static_cast<unsigned>(1000 + first + k)});
      std::copy(number.begin(), number.end(), poll.record.begin() + position + 2 * k);
    }
  }
  ExpectRecordAndRejectsDamage(poll);
}

}  // namespace
}  // namespace fieldline::test
