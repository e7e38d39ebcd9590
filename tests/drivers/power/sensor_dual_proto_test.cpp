#include "fieldline/drivers/power/sensor_dual_proto.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>

#include "tests/support/fake_clock.h"
#include "tests/support/scripted_port.h"

namespace fieldline::test {
namespace {

constexpr BYTE kOld = 0xA5;
constexpr WORD kOldWord = 0xA5A5;

class SensorDualProto : public testing::Test {
 protected:
  SensorDualProto() {
    std::fill_n(unit_.m_pData, sizeof(DUAL_PROTO_DATA), kOld);
    Clock().sleeps.clear();
  }

  WORD At(int position) const { return static_cast<WORD>(unit_.m_pData[position] | unit_.m_pData[position + 1] << 8); }

  void Exchange(const char* request, const Bytes& head, const Bytes& rest) {
    port_.Expect(Hex(request)).Reply(3, head).Reply(static_cast<int>(head[2]) + 2, rest);
  }

  // The checksums are wrong on purpose: the driver does not look at them.
  void PlayModbus(int steps) {
    // 220.5, -3.25, 50.75
    if (steps > 0) Exchange("04 03 09 2C 00 06 07 C8", Hex("04 03 0C"), Hex("43 5C 80 00 C0 50 00 00 42 4B 00 00 0 0"));
    // -200.9
    if (steps > 1) Exchange("04 03 09 34 00 02 86 0C", Hex("04 03 04"), Hex("C3 48 E6 66 0 0"));
    // 1.5, 70000.0, -0.5, infinity, not a number, -6.5, 0.09
    if (steps > 2) {
      Exchange("04 03 09 4E 00 0E A7 D0", Hex("04 03 1C"),
               Hex("3F C0 00 00 47 88 B8 00 BF 00 00 00 7F 80 00 00 7F C0 00 00 C0 D0 00 00 3D B8 51 EC 0 0"));
    }
    if (steps > 3) Exchange("04 01 03 F5 00 01 ED E9", Hex("04 01 01"), Hex("01 0 0"));
  }

  ScriptedPort port_;
  CSensorDualProto unit_;
};

TEST_F(SensorDualProto, DecodesFloatsOfTheModbusVariant) {
  PlayModbus(4);
  ASSERT_EQ(unit_.GetData(&port_, 4), 1);
  EXPECT_EQ(port_.calls, "pwrrwrrwrrwrr");
  EXPECT_TRUE(Clock().sleeps.empty());
  const WORD expected[34] = {
      15,     700000 % 65536,
      0xFFFB,  // -5
      0xFFFF,  // the low bits of the bound
      0,
      0xFFBF,  // -65
      0,
      0xFFFD,  // -3
      0xFF38,  // -200
      0,      0,
      0,      0,
      2205,   50,
      0,      0,
      0,      0,
      0,      0,
      0,      0,
      0,      0,
      0,      0,
      0,      0,
      0,      0,
      0,      0,
      1,
  };
  for (int i = 0; i < 34; ++i) EXPECT_EQ(At(2 * i), expected[i]) << "position " << 2 * i;
}

TEST_F(SensorDualProto, KeepsWhatTheModbusExchangesBeforeAFailureWrote) {
  const std::vector<int> written[] = {
      {},
      {   14,  26, 28},
      { 14, 16, 26, 28}
  };
  for (int good = 0; good < 4; ++good) {
    std::fill_n(unit_.m_pData, sizeof(DUAL_PROTO_DATA), kOld);
    PlayModbus(good);
    const char* const requests[] = {"04 03 09 2C 00 06 07 C8", "04 03 09 34 00 02 86 0C", "04 03 09 4E 00 0E A7 D0",
                                    "04 01 03 F5 00 01 ED E9"};
    port_.Expect(Hex(requests[good])).Reply(3, {});
    EXPECT_EQ(unit_.GetData(&port_, 4), 0);
    for (int position = 0; position < 68; position += 2) {
      const bool is_new =
          good < 3 ? std::count(written[good].begin(), written[good].end(), position) != 0 : position != 66;
      EXPECT_EQ(At(position) != kOldWord, is_new) << good << " good exchanges, position " << position;
    }
  }
}

TEST_F(SensorDualProto, RefusesModbusRepliesOfTheWrongLength) {
  const char kFirst[] = "04 03 09 2C 00 06 07 C8";
  // Longer than the frame buffer: not read. Data cut short; less data than asked for; an exception.
  port_.Expect(Hex(kFirst)).Reply(3, Hex("04 03 8C"));
  EXPECT_EQ(unit_.GetData(&port_, 4), 0);
  port_.Expect(Hex(kFirst)).Reply(3, Hex("04 03 0C")).Reply(14, Bytes(13));
  EXPECT_EQ(unit_.GetData(&port_, 4), 0);
  port_.Expect(Hex(kFirst)).Reply(3, Hex("04 03 08")).Reply(10, Bytes(10));
  EXPECT_EQ(unit_.GetData(&port_, 4), 0);
  port_.Expect(Hex(kFirst)).Reply(3, Hex("04 83 02")).Reply(4, Bytes(2));
  EXPECT_EQ(unit_.GetData(&port_, 4), 0);
  port_.ExpectButReport(Hex(kFirst), 7);
  EXPECT_EQ(unit_.GetData(&port_, 4), 0);
  EXPECT_EQ(At(14), kOldWord);
}

// A body whose byte i holds i, but for the ones given.
Bytes Body(int length, std::vector<std::pair<int, BYTE>> given = {}) {
  Bytes body(static_cast<std::size_t>(length));
  for (int i = 0; i < length; ++i) body[static_cast<std::size_t>(i)] = static_cast<BYTE>(i);
  for (const auto& [i, value] : given) body[static_cast<std::size_t>(i)] = value;
  return body;
}

TEST_F(SensorDualProto, DecodesTheFrameVariant) {
  std::uint32_t slept_before_read = 0;
  port_.on_read = [&] { slept_before_read = Clock().sleeps.empty() ? 0 : Clock().sleeps.front(); };
  port_.Expect(Hex("05 01 02 F8 FF"))
      .Reply(3, Hex("99 88 84"))
      .Reply(132, Body(132, {
                                {131, 0xEF}
  }));
  ASSERT_EQ(unit_.GetData(&port_, 5), 1);
  EXPECT_EQ(port_.calls, "wrr");
  EXPECT_EQ(slept_before_read, 500u);
  const WORD expected[34] = {0x0100, 0x0302, 0x0504, 0x0706, 0x0908, 0x0B0A, 0x0D0C, 14,  15,  22,  23,  30,
                             31,     45,     46,     520,    530,    540,    550,    560, 570, 580, 590, 600,
                             610,    660,    670,    68,     690,    800,    810,    820, 830, 1};
  for (int i = 0; i < 34; ++i) EXPECT_EQ(At(2 * i), expected[i]) << "position " << 2 * i;
}

TEST_F(SensorDualProto, DecodesSignsAndMissingValuesOfTheFrameVariant) {
  port_.Expect(Hex("FF 01 02 FE FE"))
      .Reply(3, Hex("0 0 8D"))
      .Reply(141, Body(141, {
                                {10,  0xFF},
                                {11,  0xFF},
                                {12,  0xFF},
                                {13,  0   },
                                {14,  0x85},
                                {22,  0x85},
                                {57,  0x85},
                                {83,  0xFF},
                                {131, 0x10}
  }));
  ASSERT_EQ(unit_.GetData(&port_, -1), 1);
  EXPECT_EQ(At(10), 0);
  EXPECT_EQ(At(12), 255);
  EXPECT_EQ(At(14), 0xFF85);
  EXPECT_EQ(At(18), 0x85);
  EXPECT_EQ(At(40), 0xFB32);
  EXPECT_EQ(At(64), 2550);
  EXPECT_EQ(At(66), 0);
}

TEST_F(SensorDualProto, RefusesAFrameThatIsNotWhole) {
  const Bytes request = Hex("05 01 02 F8 FF");
  port_.Expect(request).Reply(3, Hex("05 01"));
  EXPECT_EQ(unit_.GetData(&port_, 5), 0);
  port_.Expect(request).Reply(3, Hex("05 01 8E"));
  EXPECT_EQ(unit_.GetData(&port_, 5), 0) << "longer than the buffer: not read";
  port_.Expect(request).Reply(3, Hex("05 01 8D")).Reply(141, Bytes(140));
  EXPECT_EQ(unit_.GetData(&port_, 5), 0);
  port_.Expect(request).Reply(3, Hex("05 01 83")).Reply(131, Bytes(131));
  EXPECT_EQ(unit_.GetData(&port_, 5), 0) << "without the state byte";
  port_.ExpectButReport(request, 4);
  EXPECT_EQ(unit_.GetData(&port_, 5), 0);
  for (int position = 0; position < 68; position += 2) EXPECT_EQ(At(position), kOldWord);
}

}  // namespace
}  // namespace fieldline::test
