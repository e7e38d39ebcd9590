
#include <algorithm>

#include "fieldline/fieldline.h"
#include "tests/support/fake_clock.h"
#include "tests/support/golden_poll.h"
#include "tests/support/modbus_frames.h"

namespace fieldline::test {
namespace {

// Registers from `first` on: register k holds `base` + k.
std::vector<WORD> Counting(int base, int first, int count) {
  std::vector<WORD> registers;
  for (int k = first; k < first + count; ++k) registers.push_back(static_cast<WORD>(base + k));
  return registers;
}

TEST(SensorEnvir, StoresTheSecondRegisterFirst) {
  ExpectRecordAndRejectsDamage({SERDAT_ENVIR,
                                1,
                                {{Hex("01 03 00 00 00 02 C4 0B"), 9, Hex("01 03 04 01 23 FE DC 4B FC")}},
                                Hex("DC FE 00 00 23 01 00 00")});
}

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

const Bytes kElecRequest = Hex("05 03 00 00 00 39 84 5C");

TEST(SensorElec, MovesEachRegisterToItsFieldAndScale) {
  std::vector<WORD> registers = Counting(100, 0, 57);
  registers[0] = 1;
  registers[1] = 2;
  registers[34] = 2205;
  registers[45] = registers[56] = 0xFFFF;
  const GoldenPoll poll = {SERDAT_ELEC,
                           5,
                           {{kElecRequest, 120, RegisterReply(5, 3, registers)}},
                           Numbers(4, {65538,  22050, 1350, 1360, 1370, 1380, 1390, 1400, 1410, 1420, 1430, 1440,
                                       655350, 146,   147,  148,  149,  150,  151,  152,  153,  3850, 3875, 1638375})};
  ExpectRecordAndRejectsDamage(poll);
  ExpectRefusal(poll, 0, WithCrc("05 83 02"));
  ExpectRefusal(poll, 0, RegisterReply(5, 3, Counting(0, 0, 56)));
}

TEST(SensorElec, KeepsQuantities5And6WhileOnePhaseIsImplausible) {
  CSensorElec meter;
  ScriptedPort port;
  std::vector<WORD> registers(57);
  registers[51] = registers[52] = registers[53] = 10000;
  registers[54] = 4;
  port.Expect(kElecRequest).Reply(120, RegisterReply(5, 3, registers));
  ASSERT_EQ(meter.GetData(&port, 5), 1);
  EXPECT_EQ(meter.m_data.q5_phase3, 10000u);
  EXPECT_EQ(meter.m_data.q6_phase1, 100u);

  for (const std::size_t implausible : {51, 52, 53}) {
    registers = Counting(0, 0, 57);
    registers[implausible] = 10001;
    port.Expect(kElecRequest).Reply(120, RegisterReply(5, 3, registers));
    EXPECT_EQ(meter.GetData(&port, 5), 1);
    EXPECT_EQ(meter.m_data.q1_total, 340u);
    EXPECT_EQ(meter.m_data.q5_phase3, 10000u);
    EXPECT_EQ(meter.m_data.q6_phase1, 100u);
    meter.m_data.q1_total = 0;
  }
}

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
  for (int j = 0; j < 109; ++j) poll.record[2u + j] = j == 0 || j == 9 || j == 108;
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
      const Bytes number = Numbers(2, {1000u + first + k});
      std::copy(number.begin(), number.end(), poll.record.begin() + position + 2 * k);
    }
  }
  ExpectRecordAndRejectsDamage(poll);
}

}  // namespace
}  // namespace fieldline::test
