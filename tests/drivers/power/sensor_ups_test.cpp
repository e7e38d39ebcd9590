#include "fieldline/drivers/power/sensor_ups.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <clocale>
#include <cstdint>
#include <cstring>

#include "tests/support/scripted_port.h"

namespace fieldline::test {
namespace {

using testing::ElementsAre;

const char kStatus[] = "(208.4 140.0 208.4 034 59.9 2.05 35.0 00110000\r";
//                      0         1         2         3
//                      01234567890123456789012345678901234567
const char kIdent[] = "#Megatecco       Model12345 V1.2      \r";
const char kRatings[] = "#230.0 004 12.00 50.0\r";

class SensorUps : public testing::Test {
 protected:
  // Null for what is not asked for.
  void ExpectPoll(int result, const std::string& status, const char* ident = nullptr, const char* ratings = nullptr) {
    port_.Expect(Text("Q1\r")).Reply(50, Text(status));
    if (ident) port_.Expect(Text("I\r")).Reply(50, Text(ident));
    if (ratings) port_.Expect(Text("F\r")).Reply(50, Text(ratings));
    EXPECT_EQ(ups_.GetData(&port_, 1), result) << status << (ident ? ident : "") << (ratings ? ratings : "");
    EXPECT_TRUE(port_.Done());
    port_.Forget();
  }
  std::vector<std::int32_t> Numbers(int position, std::size_t count) const {
    std::vector<std::int32_t> numbers(count);
    std::memcpy(numbers.data(), ups_.m_pData + position, count * sizeof numbers[0]);
    return numbers;
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
  ExpectPoll(1, kStatus, kIdent, kRatings);
  EXPECT_THAT(Numbers(0, 7), ElementsAre(2084, 1400, 2084, 34, 599, 20, 350));
  EXPECT_EQ(Bits(), "30 00 00 01 01 00 00 00 00");
  EXPECT_THAT(Numbers(37, 4), ElementsAre(230, 4, 12, 50));
  EXPECT_EQ(Name(53), u"Megatecco");
  EXPECT_EQ(Name(117), u"Model12345");
  EXPECT_EQ(Name(181), u"V1.2");

  ExpectPoll(1, "(220.0 140.0 208.4 034 59.9 2.05 -5.5 1000000x\r");
  EXPECT_THAT(Numbers(24, 1), ElementsAre(-55));
  EXPECT_EQ(Bits(), "81 01 00 00 00 00 00 00 01") << "any character but 0 counts";
}

TEST_F(SensorUps, CountsWhatIsNoNumberAsZeroWhateverTheLocaleAndStopsAtTheBounds) {
  std::setlocale(LC_NUMERIC, "de_DE.UTF-8");
  ExpectPoll(0, "(--.- +220.5 nan 034 inf 9999999999 \t7 00000000\r", "");
  std::setlocale(LC_NUMERIC, "C");
  EXPECT_THAT(Numbers(0, 7), ElementsAre(0, 2205, 0, 34, 0, INT32_MAX, 70));
  ExpectPoll(0, "(1e308 1e309 -1e309 +-5 1e-400 -2e-999 +1e999 0\r");
  EXPECT_THAT(Numbers(0, 7), ElementsAre(INT32_MAX, INT32_MAX, INT32_MIN, 0, 0, 0, INT32_MAX)) << "one status bit";
}

TEST_F(SensorUps, RefusesAStatusWithoutItsMarks) {
  std::fill_n(ups_.m_pData, sizeof(UPS_DATA), BYTE{0xA5});
  for (const char* reply : {"", "(", "\r", "#208.4 140.0 208.4 034 59.9 2.05 35.0 00110000\r",
                            "(208.4 140.0 208.4 034 59.9 2.05 35.0 00110000",
                            // 50 bytes are read, and the last of them is no CR.
                            "(208.4 140.0 208.4 034 59.9 2.05 35.0000000 00110000\r"}) {
    ExpectPoll(0, reply);
  }
  port_.ExpectButReport(Text("Q1\r"), 2);
  EXPECT_EQ(ups_.GetData(&port_, 1), 0);
  EXPECT_TRUE(std::all_of(ups_.m_pData, ups_.m_pData + sizeof(UPS_DATA), [](BYTE b) { return b == 0xA5; }));
}

TEST_F(SensorUps, KeepsTheFieldsBeforeABreak) {
  std::fill_n(ups_.m_pData, sizeof(UPS_DATA), BYTE{0xA5});
  ExpectPoll(0, "(1 2 3 4 5 6\r");
  EXPECT_THAT(Numbers(16, 2), ElementsAre(50, static_cast<int>(0xA5A5A5A5))) << "five complete fields";
  for (const char* bits : {"0011000", "001100001", ""}) {
    ExpectPoll(0, "(1 2 3 4 5 6 7 " + std::string(bits) + "\r");
    EXPECT_THAT(Numbers(24, 1), ElementsAre(70));
    EXPECT_EQ(Bits(), "A5 A5 A5 A5 A5 A5 A5 A5 A5");
  }
}

TEST_F(SensorUps, AsksAgainForAnIdentificationThatIsNotAcceptable) {
  ExpectPoll(1, kStatus, "(NAK\r", kRatings);
  EXPECT_EQ(Name(53), u"");
  ExpectPoll(1, kStatus, kIdent);
  ExpectPoll(1, kStatus);
}

TEST_F(SensorUps, FailsAnAcceptedIdentificationThatIsNotWhole) {
  const std::string long_maker = "#" + std::string(40, 'x') + " y z\r";
  const auto expect = [&](const char* reply, const std::u16string& maker, const std::u16string& model) {
    ExpectPoll(0, kStatus, reply);
    EXPECT_EQ(Name(53), maker) << reply;
    EXPECT_EQ(Name(117), model) << reply;
  };
  expect("", u"", u"");
  expect("#Megatecco\r", u"", u"");
  expect("#Mega tec\r", u"Mega", u"");                   // ends before the model
  expect("#New             Model12345\r", u"New", u"");  // no space after the model
  expect("#Newer           M1\r", u"Newer", u"");
  expect(long_maker.c_str(), std::u16string(31, u'x'), u"");  // cut to its field
  expect("#Newest          M2 xxxxx\r", u"Newest", u"M2");    // ends before the version
  ExpectPoll(1, kStatus, "#Megatecco       mmmmmmmmmmmm V1\r", kRatings);
  EXPECT_EQ(Name(117), std::u16string(12, u'm'));
  EXPECT_EQ(Name(181), u"m") << "what is at the version's position";
}

TEST_F(SensorUps, AsksAgainForRatingsThatBreakOff) {
  ExpectPoll(0, kStatus, kIdent, "#230.0 004\r");
  EXPECT_THAT(Numbers(37, 2), ElementsAre(230, 0));
  for (const char* reply : {"", "(230.0 004 12.00 50.0\r", "#230.0 004 12.00 50.0"}) {
    ExpectPoll(0, kStatus, nullptr, reply);
  }
  ExpectPoll(1, kStatus, nullptr, "#230.0 004 12.00  50.0\r");
  EXPECT_THAT(Numbers(49, 1), ElementsAre(50)) << "the last one may begin with a space";
}

}  // namespace
}  // namespace fieldline::test
