#include "fieldline/drivers/power/sensor_dual_proto.h"

#include <algorithm>
#include <numeric>

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

  void ExpectPoll(int addr, const std::vector<WORD>& values) {
    ASSERT_EQ(unit_.GetData(&port_, addr), 1);
    for (int i = 0; i < 34; ++i) EXPECT_EQ(At(2 * i), values[static_cast<std::size_t>(i)]) << "position " << 2 * i;
  }
  // Each reply comes in two reads, a head of three bytes and the rest.
  void ExpectRefusal(int addr, const char* request, const char* head, int ask, int rest) {
    port_.Expect(Hex(request)).Reply(3, Hex(head));
    if (ask != 0) port_.Reply(ask, Bytes(static_cast<std::size_t>(rest)));
    EXPECT_EQ(unit_.GetData(&port_, addr), 0) << head;
    EXPECT_EQ(At(14), kOldWord) << head;
  }

  ScriptedPort port_;
  CSensorDualProto unit_;
};

// The checksums are wrong on purpose: the driver does not look at them.
constexpr struct {
  const char* request;
  const char* head;
  const char* rest;
} kModbus[] = {
  // 220.5, -3.25, 50.75
    {"04 03 09 2C 00 06 07 C8", "04 03 0C", "43 5C 80 00 C0 50 00 00 42 4B 00 00 0 0"         },
 // -200.9
    {"04 03 09 34 00 02 86 0C", "04 03 04", "C3 48 E6 66 0 0"                                 },
 // 1.5, 70000.0, -0.5, infinity, not a number, -6.5, 0.09
    {"04 03 09 4E 00 0E A7 D0", "04 03 1C",
     "3F C0 00 00 47 88 B8 00 BF 00 00 00 7F 80 00 00 7F C0 00 00 C0 D0 00 00 3D B8 51 EC 0 0"},
    {"04 01 03 F5 00 01 ED E9", "04 01 01", "01 0 0"                                          },
};

TEST_F(SensorDualProto, DecodesFloatsOfTheModbusVariantAndKeepsThoseBeforeAFailure) {
  // -5; the low bits of the bound; -65; -3; -200.
  std::vector<WORD> values = {15, 700000 % 65536, 0xFFFB, 0xFFFF, 0, 0xFFBF, 0, 0xFFFD, 0xFF38, 0, 0, 0, 0, 2205, 50};
  values.resize(34);
  values[33] = 1;
  // Of which exchange each value is.
  std::vector<int> exchange(34, 2);
  exchange[7] = exchange[13] = exchange[14] = 0;
  exchange[8] = 1;
  exchange[33] = 3;
  for (int good = 0; good <= 4; ++good) {
    std::fill_n(unit_.m_pData, sizeof(DUAL_PROTO_DATA), kOld);
    port_.calls.clear();
    for (int i = 0; i < good; ++i) {
      const Bytes rest = Hex(kModbus[i].rest);
      port_.Expect(Hex(kModbus[i].request)).Reply(3, Hex(kModbus[i].head)).Reply(static_cast<int>(rest.size()), rest);
    }
    if (good < 4) port_.Expect(Hex(kModbus[good].request)).Reply(3, {});
    EXPECT_EQ(unit_.GetData(&port_, 4), good == 4);
    for (std::size_t i = 0; i < 34; ++i) {
      EXPECT_EQ(At(static_cast<int>(2 * i)), exchange[i] < good ? values[i] : kOldWord) << good << " good, " << i;
    }
  }
  EXPECT_EQ(port_.calls, "pwrrwrrwrrwrr");
  EXPECT_TRUE(Clock().sleeps.empty());
}

TEST_F(SensorDualProto, RefusesModbusRepliesOfTheWrongLength) {
  const char* const request = kModbus[0].request;
  ExpectRefusal(4, request, "04 03 8C", 0, 0);  // longer than the frame buffer: not read
  ExpectRefusal(4, request, "04 03 0C", 14, 13);
  ExpectRefusal(4, request, "04 03 08", 10, 10);  // less data than asked for
  ExpectRefusal(4, request, "04 83 02", 4, 2);
  port_.ExpectButReport(Hex(request), 7);
  EXPECT_EQ(unit_.GetData(&port_, 4), 0);
}

TEST_F(SensorDualProto, DecodesTheFrameVariant) {
  std::uint32_t slept_before_read = 0;
  port_.on_read = [&] { slept_before_read = Clock().sleeps.empty() ? 0 : Clock().sleeps.front(); };
  Bytes body(132);
  std::iota(body.begin(), body.end(), BYTE{0});
  body[131] = 0xEF;
  port_.Expect(Hex("05 01 02 F8 FF")).Reply(3, Hex("99 88 84")).Reply(132, body);
  ExpectPoll(5,
             {0x0100, 0x0302, 0x0504, 0x0706, 0x0908, 0x0B0A, 0x0D0C, 14,  15,  22,  23, 30,  31,  45,  46,  520, 530,
              540,    550,    560,    570,    580,    590,    600,    610, 660, 670, 68, 690, 800, 810, 820, 830, 1});
  EXPECT_EQ(port_.calls, "wrr");
  EXPECT_EQ(slept_before_read, 500u);
}

TEST_F(SensorDualProto, DecodesSignsAndMissingValuesOfTheFrameVariant) {
  Bytes body(141, 0xFF);
  body[13] = 0;
  body[131] = 0x10;
  port_.Expect(Hex("FF 01 02 FE FE")).Reply(3, Hex("0 0 8D")).Reply(141, body);
  std::vector<WORD> values(34, 2550);
  std::fill_n(values.begin(), 5, WORD{0xFFFF});
  values[5] = 0;  // no value
  values[6] = 255;
  values[7] = values[8] = 0xFFFF;
  std::fill_n(values.begin() + 9, 6, WORD{255});
  values[20] = 0xFFF6;  // -10
  values[27] = 255;
  values[33] = 0;
  ExpectPoll(-1, values);
}

TEST_F(SensorDualProto, RefusesAFrameThatIsNotWhole) {
  const char* const request = "05 01 02 F8 FF";
  ExpectRefusal(5, request, "05 01", 0, 0);
  ExpectRefusal(5, request, "05 01 8E", 0, 0);  // longer than the buffer: not read
  ExpectRefusal(5, request, "05 01 8D", 141, 140);
  ExpectRefusal(5, request, "05 01 83", 131, 131);  // without the state byte
  port_.ExpectButReport(Hex(request), 4);
  EXPECT_EQ(unit_.GetData(&port_, 5), 0);
  for (int position = 0; position < 68; position += 2) EXPECT_EQ(At(position), kOldWord);
}

}  // namespace
}  // namespace fieldline::test
