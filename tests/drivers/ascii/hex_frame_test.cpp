#include "fieldline/drivers/ascii/hex_frame.h"

#include <gtest/gtest.h>

#include <bit>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <random>

#include "tests/drivers/ascii/frames.h"

namespace fieldline::test {
namespace {

const BYTE* Characters(const std::string& text) { return reinterpret_cast<const BYTE*>(text.data()); }

double Float(const std::string& characters) { return GetHexFloat(Characters(characters)); }

TEST(HexFrame, BuildsRequestsAndTurnsThemIntoOthers) {
  BYTE frame[33];
  std::memset(frame, 0xEE, sizeof frame);
  const auto text = [&](int length) {
    return std::string(reinterpret_cast<char*>(frame), static_cast<std::size_t>(length));
  };

  EXPECT_EQ(text(BuildFrame(frame, 0x20, 0x01, 0x46, 0x41, Characters("01"), 2)), "~20014641E00201FD36\r");
  EXPECT_EQ(frame[20], 0xEE);
  EXPECT_EQ(text(BuildFrame(frame, 0x21, 0x01, 0x60, 0x42, nullptr, 0)), "~210160420000FDB0\r");
  SetFrameCommand(frame, 0x47);
  EXPECT_EQ(text(18), "~210160470000FDAB\r");
  EXPECT_EQ(GetLengthWord(0x1C4), 0xF1C4);
  EXPECT_EQ(GetLengthWord(0xFFF), 0x3FFF);
}

TEST(HexFrame, ReadsWhatIsNoUpperCaseDigitAsZero) {
  for (int c = 0; c < 256; ++c) {
    const char* digits = "0123456789ABCDEF";
    const char* found = c == 0 ? nullptr : std::strchr(digits, c);
    EXPECT_EQ(GetHexValue(static_cast<BYTE>(c)), found ? found - digits : 0) << c;
  }
  EXPECT_EQ(GetHexWord(Characters("01f4")), 0x0104);
  EXPECT_EQ(GetHexWord(Characters("F~A\r")), 0xF0A0);
}

TEST(HexFrame, ScalesNumbers) {
  EXPECT_EQ(Float("CDCC4C40"), 3.2000000476837158203125);
  const std::tuple<double, int, double> cases[] = {
      {4.35,               2, 434                },
      {0.05,               1, 1                  },
      {0.15,               1, 1                  },
      {1.115,              2, 111                },
      {-2.675,             2, -267               },
      {9007199254740993.0, 1, 90071992547409920.0},
  };
  for (const auto& [value, decimals, scaled] : cases) EXPECT_EQ(GetScaledValue(value, decimals), scaled) << value;
}

// The steps by which the values are defined.
double FloatByDefinition(std::uint32_t bits) {
  const double exponent = bits >> 23 & 0xFF;
  const double fraction = bits & 0x7FFFFF;
  return (1 + fraction * (1 / std::pow(2.0, 23))) * std::pow(2.0, exponent - 127);
}

double ScaleByDefinition(double value, int decimals) {
  char text[20];
  std::snprintf(text, sizeof text, decimals == 1 ? "%.1f" : "%.2f", value);
  return std::trunc(std::atof(text) * (decimals == 1 ? 10.0 : 100.0));
}

TEST(HexFrame, ScalesLikeTheStepsThatDefineTheValues) {
  constexpr int kPerExponent = 700;
  const double fits[] = {0, 1e17, 1e16};  // below these, by decimals, the text has 19 characters at most
  std::mt19937 random(1363);
  for (std::uint32_t exponent = 0; exponent < 256; ++exponent) {
    for (int i = 0; i < kPerExponent; ++i) {
      const std::uint32_t fraction = i == 0 ? 0 : i == 1 ? 0x7FFFFF : static_cast<std::uint32_t>(random()) & 0x7FFFFF;
      const std::uint32_t bits = static_cast<std::uint32_t>(i & 1) << 31 | exponent << 23 | fraction;
      const double value = Float(HexFloat(std::bit_cast<float>(bits)));
      ASSERT_EQ(value, FloatByDefinition(bits)) << bits;
      for (const int decimals : {1, 2}) {
        const double exact = value * (decimals == 1 ? 10 : 100);
        const bool tie = exact - std::floor(exact) == 0.5;
        if (tie || value >= fits[decimals]) continue;
        ASSERT_EQ(GetScaledValue(value, decimals), ScaleByDefinition(value, decimals)) << bits << ' ' << decimals;
      }
    }
  }
}

TEST(HexFrame, ScalesTheNeighboursOfHalfWayDecimalsLikeTheSteps) {
  constexpr int kCount = 50'000;
  std::mt19937_64 random(1363);
  for (int i = 0; i < kCount; ++i) {
    const int decimals = 1 + i % 2;
    const double half_way = static_cast<double>(random() % (1ull << (8 + i % 40)) * 2 + 1) / (decimals == 1 ? 20 : 200);
    const bool exact_tie = std::fmod(half_way * 8, 1) == 0;  // whole eighths: the only half-way decimals of a double
    for (const double value : {std::nextafter(half_way, 0), half_way, std::nextafter(half_way, HUGE_VAL)}) {
      if (value == half_way && exact_tie) continue;
      ASSERT_EQ(GetScaledValue(value, decimals), ScaleByDefinition(value, decimals)) << value << ' ' << decimals;
    }
  }
}

const std::string kReply = "~11012A00101E00A100B1B2B3B4B5B6B7B8B9BA0000F6EF\r";

bool Check(const std::string& reply, std::size_t expected = kReply.size()) {
  return CheckReply(Characters(reply), static_cast<int>(reply.size()), static_cast<int>(expected));
}

TEST(HexFrame, ChecksReplies) {
  EXPECT_FALSE(Check(kReply, kReply.size() - 1));
  EXPECT_FALSE(Check(kReply, kReply.size() + 1));
  EXPECT_FALSE(Check("~11012A00\r", 10)) << "shorter than any frame";
  EXPECT_TRUE(Check(Seal("~11772A00101E00A100B1B2B3B4B5B6B7B8B9BA0000"))) << "another address";
  EXPECT_TRUE(Check(Seal("~11012A00101E00A1~0B1B2B3B4B5\r6B7B8B9BA0000"))) << "~ and CR in the middle";
  EXPECT_FALSE(Check(Seal("~11012A01101E00A100B1B2B3B4B5B6B7B8B9BA0000"))) << "RTN 01";
  EXPECT_FALSE(Check(Seal("~11012A10101E00A100B1B2B3B4B5B6B7B8B9BA0000"))) << "RTN 10";
  EXPECT_FALSE(Check(Seal("~11012A00101E00a100B1B2B3B4B5B6B7B8B9BA0000"))) << "lower case";
}

// The sum does not cover the first and the last character, so any other character of the frame's set is accepted there.
// Every other change of one character is refused.
TEST(HexFrame, RefusesEveryOtherSingleCorruption) {
  const std::string frame_characters = "~\r0123456789ABCDEF";
  for (const std::string& reply : {kReply, Seal("~20014600F1C4" + std::string(452, '7'))}) {
    for (std::size_t position = 0; position < reply.size(); ++position) {
      std::string corrupt = reply;
      for (int c = 0; c < 256; ++c) {
        corrupt[position] = static_cast<char>(c);
        const bool at_the_ends = position == 0 || position == reply.size() - 1;
        const bool in_set = frame_characters.find(static_cast<char>(c)) != std::string::npos;
        const bool passes = corrupt == reply || (at_the_ends && in_set);
        ASSERT_EQ(Check(corrupt, reply.size()), passes) << "position " << position << ", character " << c;
      }
    }
  }
}

}  // namespace
}  // namespace fieldline::test
