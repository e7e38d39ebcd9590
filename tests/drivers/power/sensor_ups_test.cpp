#include "fieldline/drivers/power/sensor_ups.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <clocale>
#include <cstring>
#include <string>

#include "tests/support/scripted_port.h"

namespace fieldline::test {
namespace {

constexpr int kAsk = 50;
const char kStatus[] = "(208.4 140.0 208.4 034 59.9 2.05 35.0 00110000\r";
//                      0         1         2         3
//                      01234567890123456789012345678901234567
const char kIdent[] = "#Megatecco       Model12345 V1.2      \r";
const char kRatings[] = "#230.0 004 12.00 50.0\r";

class SensorUps : public testing::Test {
 public:
  SensorUps& Status(const std::string& reply) { return Command("Q1\r", reply); }
  SensorUps& Ident(const std::string& reply) { return Command("I\r", reply); }
  SensorUps& Ratings(const std::string& reply) { return Command("F\r", reply); }
  SensorUps& Command(const char* command, const std::string& reply) {
    port_.Expect(Text(command)).Reply(kAsk, Text(reply));
    return *this;
  }
  int Poll() { return ups_.GetData(&port_, 1); }

  std::int32_t Number(int position) const {
    std::int32_t value;
    std::memcpy(&value, ups_.m_pData + position, sizeof value);
    return value;
  }
  std::u16string Name(int position) const {
    char16_t text[32];
    std::memcpy(text, ups_.m_pData + position, sizeof text);
    return text;
  }
  std::string Bits() const { return ToHex({ups_.m_pData + 28, ups_.m_pData + 37}); }

  ScriptedPort port_;
  CSensorUps ups_;
};

TEST_F(SensorUps, ReadsStatusEveryTimeAndTheRestOnce) {
  Status(kStatus).Ident(kIdent).Ratings(kRatings);
  ASSERT_EQ(Poll(), 1);
  const std::int32_t numbers[] = {2084, 1400, 2084, 34, 599, 20, 350};
  for (int i = 0; i < 7; ++i) EXPECT_EQ(Number(4 * i), numbers[i]) << "field " << i;
  EXPECT_EQ(Bits(), "30 00 00 01 01 00 00 00 00");
  EXPECT_EQ(Number(37), 230);
  EXPECT_EQ(Number(41), 4);
  EXPECT_EQ(Number(45), 12);
  EXPECT_EQ(Number(49), 50);
  EXPECT_EQ(Name(53), u"Megatecco");
  EXPECT_EQ(Name(117), u"Model12345");
  EXPECT_EQ(Name(181), u"V1.2");

  Status("(220.0 140.0 208.4 034 59.9 2.05 -5.5 1000000x\r");
  ASSERT_EQ(Poll(), 1);
  EXPECT_EQ(Number(24), -55);
  EXPECT_EQ(Bits(), "81 01 00 00 00 00 00 00 01") << "any character but 0 counts";
}

TEST_F(SensorUps, CountsWhatIsNoNumberAsZeroWhateverTheLocale) {
  std::setlocale(LC_NUMERIC, "de_DE.UTF-8");
  Status("(--.- +220.5 nan 034 inf 9999999999 \t7 00000000\r").Ident("");
  EXPECT_EQ(Poll(), 0) << "silence to the identification";
  std::setlocale(LC_NUMERIC, "C");
  const std::int32_t numbers[] = {0, 2205, 0, 34, 0, 2147483647, 70};
  for (int i = 0; i < 7; ++i) EXPECT_EQ(Number(4 * i), numbers[i]) << "field " << i;
}

TEST_F(SensorUps, StopsAtTheBoundOfItsNumbers) {
  Status("(1e308 1e309 -1e309 +-5 1e-400 -2e-999 +1e999 0\r");
  EXPECT_EQ(Poll(), 0) << "one status bit";
  const std::int32_t numbers[] = {2147483647, 2147483647, -2147483647 - 1, 0, 0, 0, 2147483647};
  for (int i = 0; i < 7; ++i) EXPECT_EQ(Number(4 * i), numbers[i]) << "field " << i;
}

TEST_F(SensorUps, RefusesAStatusWithoutItsMarks) {
  std::fill_n(ups_.m_pData, sizeof(UPS_DATA), BYTE{0xA5});
  for (const char* reply : {"", "(", "\r", "#208.4 140.0 208.4 034 59.9 2.05 35.0 00110000\r",
                            "(208.4 140.0 208.4 034 59.9 2.05 35.0 00110000",
                            // 50 bytes are read, and the last of them is no CR.
                            "(208.4 140.0 208.4 034 59.9 2.05 35.0000000 00110000\r"}) {
    Status(reply);
    EXPECT_EQ(Poll(), 0) << reply;
  }
  port_.ExpectButReport(Text("Q1\r"), 2);
  EXPECT_EQ(Poll(), 0);
  EXPECT_TRUE(std::all_of(ups_.m_pData, ups_.m_pData + sizeof(UPS_DATA), [](BYTE b) { return b == 0xA5; }));
}

TEST_F(SensorUps, KeepsTheFieldsBeforeABreak) {
  std::fill_n(ups_.m_pData, sizeof(UPS_DATA), BYTE{0xA5});
  Status("(1 2 3 4 5 6\r");
  EXPECT_EQ(Poll(), 0);
  EXPECT_EQ(Number(16), 50) << "five complete fields";
  EXPECT_EQ(ToHex({ups_.m_pData + 20, ups_.m_pData + 24}), "A5 A5 A5 A5");

  for (const char* bits : {"0011000", "001100001", ""}) {
    Status("(1 2 3 4 5 6 7 " + std::string(bits) + "\r");
    EXPECT_EQ(Poll(), 0);
    EXPECT_EQ(Number(24), 70);
    EXPECT_EQ(Bits(), "A5 A5 A5 A5 A5 A5 A5 A5 A5");
  }
}

TEST_F(SensorUps, AsksAgainForAnIdentificationThatIsNotAcceptable) {
  Status(kStatus).Ident("(NAK\r").Ratings(kRatings);
  EXPECT_EQ(Poll(), 1);
  EXPECT_EQ(Name(53), u"");
  Status(kStatus).Ident(kIdent);
  EXPECT_EQ(Poll(), 1) << "the ratings are known by now";
  Status(kStatus);
  EXPECT_EQ(Poll(), 1);
}

TEST_F(SensorUps, FailsAnAcceptedIdentificationThatIsNotWhole) {
  struct {
    const char* reply;
    const char16_t* maker;
    const char16_t* model;
  } const cases[] = {
      {"#Megatecco\r",                  u"",       u""  },
      {"#Mega tec\r",                   u"Mega",   u""  }, // ends before the model
      {"#New             Model12345\r", u"New",    u""  }, // no space behind the model
      {"#Newer           M1\r",         u"Newer",  u""  },
      {"#Newest          M2 xxxxx\r",   u"Newest", u"M2"}, // ends before the version
  };
  for (const auto& c : cases) {
    Status(kStatus).Ident(c.reply);
    EXPECT_EQ(Poll(), 0) << c.reply;
    EXPECT_EQ(Name(53), c.maker) << c.reply;
    EXPECT_EQ(Name(117), c.model) << c.reply;
  }
  Status(kStatus).Ident("");
  EXPECT_EQ(Poll(), 0) << "silence";
}

TEST_F(SensorUps, TakesNoModelOutOfALongMaker) {
  Status(kStatus).Ident("#" + std::string(40, 'x') + " y z\r");
  EXPECT_EQ(Poll(), 0);
  EXPECT_EQ(Name(53), std::u16string(31, u'x')) << "cut to its field";
  EXPECT_EQ(Name(117), u"");
  Status(kStatus).Ident("#Megatecco       " + std::string(12, 'm') + " V1\r").Ratings(kRatings);
  EXPECT_EQ(Poll(), 1);
  EXPECT_EQ(Name(117), std::u16string(12, u'm'));
  EXPECT_EQ(Name(181), u"m") << "what stands in the version's place";
}

TEST_F(SensorUps, AsksAgainForRatingsThatBreakOff) {
  Status(kStatus).Ident(kIdent).Ratings("#230.0 004\r");
  EXPECT_EQ(Poll(), 0);
  EXPECT_EQ(Number(37), 230);
  EXPECT_EQ(Number(41), 0);
  for (const char* reply : {"", "(230.0 004 12.00 50.0\r", "#230.0 004 12.00 50.0"}) {
    Status(kStatus).Ratings(reply);
    EXPECT_EQ(Poll(), 0) << reply;
  }
  Status(kStatus).Ratings("#230.0 004 12.00  50.0\r");
  EXPECT_EQ(Poll(), 1);
  EXPECT_EQ(Number(49), 50) << "the last one may begin with a space";
}

}  // namespace
}  // namespace fieldline::test
