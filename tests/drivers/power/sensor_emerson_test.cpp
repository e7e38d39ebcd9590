#include "fieldline/drivers/power/sensor_emerson.h"

#include <gtest/gtest.h>

#include <memory>

#include "tests/support/damage.h"
#include "tests/support/modbus_frames.h"

namespace fieldline::test {
namespace {

// Register k holds 1000 + k.
Bytes Registers(int first, int count) {
  std::vector<WORD> registers;
  for (int k = first; k < first + count; ++k) registers.push_back(static_cast<WORD>(1000 + k));
  return RegisterReply(5, 4, registers);
}

std::vector<Exchange> Exchanges() {
  return {
      {Hex("05 02 00 00 00 6D B8 63"), 19,            WithCrc("05 02 0E 01 02 00 00 00 00 00 00 00 00 00 00 00 10"), {{2, 109}}         },
      { Hex("05 04 00 08 00 25 B1 97"),                            79,   Registers(8,                                                           37),         {{111, 62}}},
      { Hex("05 04 00 31 00 1E 20 49"),                            65,  Registers(49,                                                           30),         {{173, 36}}},
      { Hex("05 04 00 63 00 15 C0 5F"),                            47,  Registers(99,                                                           21), {{0, 2}, {209, 38}}},
      { Hex("05 04 00 81 00 1D 61 AF"),                            63, Registers(129,                                                           29),         {{247, 46}}},
  };
}

TEST(SensorEmerson, PlacesInputsAndRuns) {
  ScriptedPort port;
  for (const Exchange& exchange : Exchanges()) port.Expect(exchange.request).Reply(exchange.ask, exchange.reply);
  CSensorEmerson unit;
  ASSERT_EQ(unit.GetData(&port, 5), 1);

  for (int j = 0; j < 109; ++j) EXPECT_EQ(unit.m_pData[2 + j], j == 0 || j == 9 || j == 108) << "input " << j;

  struct {
    int position, first, count;
  } const runs[] = {
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
  for (const auto& run : runs) {
    for (int k = 0; k < run.count; ++k) {
      const BYTE* field = unit.m_pData + run.position + 2 * k;
      EXPECT_EQ(field[0] | field[1] << 8, 1000 + run.first + k) << "register " << run.first + k;
    }
  }
}

TEST(SensorEmerson, RejectsDamageAndKeepsTheExchangesBefore) {
  ExpectRejectsDamage({
      .make = [] { return std::make_unique<CSensorEmerson>(); },
      .addr = 0x105,
      .exchanges = Exchanges(),
      .record_size = 293,
  });
}

}  // namespace
}  // namespace fieldline::test
