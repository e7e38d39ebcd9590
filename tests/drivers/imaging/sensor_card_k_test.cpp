#include "fieldline/drivers/imaging/sensor_card_k.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <utility>

#include "tests/drivers/ascii/frames.h"
#include "tests/support/scripted_port.h"

namespace fieldline::test {
namespace {

using ::testing::Each;

// Octal, since the digits that follow would belong to a hexadecimal escape.
const std::string kCardRequest = "\1771001804AA006F2EE00FC28\r";
const std::string kCardReply = "\17710018000301C0102030405060708090A0B0C0D00F7E8\r";

TEST(SensorCardK, KeepsSoundReplies) {
  const std::string bytes = "01 02 03 04 05 06 07 08 09 0A 0B 0C 0D";
  struct Case {
    const char* what;
    const char* reply;  // without its checksum
    int result;
    std::string record;
  };
  const Case cases[] = {
      {"return code 1, another address", "\17710778001301C0102030405060708090A0B0C0D00", 1, bytes + " 00"},
      {"lower case counts as 0",         "\17710018000301C0102030405060708090A0B0C0Dff", 1, bytes + " 00"},
      {"half a byte announced beyond",   "\17710018000201D0102030405060708090A0B0C0D00", 1, bytes + " 00"},
      {"last byte not 0",                "\17710018000301C0102030405060708090A0B0C0D01", 0, bytes + " 01"},
      {"13 bytes",                       "\17710018000501A0102030405060708090A0B0C0D",   0, bytes        },
      {"no bytes",                       "\177100180000000",                             0, ""           },
      {"fewer announced than carried",   "\17710018000C0040102030405060708090A0B0C0D00", 0, "01 02"      },
  };
  for (const Case& c : cases) {
    ScriptedPort port;
    port.Expect(Text(kCardRequest)).Reply(64, Text(Seal(c.reply)));
    CSensorCardK card;
    card.m_nCardLen = 99;
    EXPECT_EQ(card.GetData(&port, 9), c.result) << c.what;
    ASSERT_LE(card.m_nCardLen, 32u) << c.what;
    EXPECT_EQ(ToHex(Bytes(card.m_byCard, card.m_byCard + card.m_nCardLen)), c.record) << c.what;
  }
}

TEST(SensorCardK, RefusesOthersAndKeepsItsRecord) {
  const auto with = [](std::size_t position, char c) {
    std::string reply = kCardReply;
    reply[position] = c;
    return reply;
  };
  const std::pair<const char*, std::string> cases[] = {
      {"more announced than carried", Seal("\17710018000101E0102030405060708090A0B0C0D00")},
      {"4095 announced",              Seal("\177100180003FFF0102030405060708090A0B0C0D00")},
      {"wrong length check",          Seal("\17710018000401C0102030405060708090A0B0C0D00")},
      {"another start",               with(0,                                               '~')},
      {"another end",                             with(45,                                                                     '\n')},
      {"wrong checksum",                        with(44,        '7')},
      {"damaged",with(20,                                        'F')},
      {"cut in the head",                     Seal("\17710018000000")                                                                   },
      {"start and end alone",                             "\177\r"                                                                },
      {"one character",                             "\177"},
      {"nothing",                             ""  },
  };
  for (const auto& [what, reply] : cases) {
    ScriptedPort port;
    port.Expect(Text(kCardRequest)).Reply(64, Text(reply));
    CSensorCardK card;
    card.m_nCardLen = 99;
    std::fill_n(card.m_byCard, 32, BYTE{0xA5});
    EXPECT_EQ(card.GetData(&port, 1), 0) << what;
    EXPECT_EQ(card.m_nCardLen, 99u) << what;
    EXPECT_THAT(card.m_byCard, Each(0xA5)) << what;
  }
}

TEST(SensorCardK, AsksAClosedPortAndPointsCopiesAtTheirOwnCard) {
  ScriptedPort closed;
  closed.open = 0;
  CSensorCardK card;
  EXPECT_EQ(card.GetData(&closed, 1), 0);
  EXPECT_EQ(closed.calls, "w");

  ScriptedPort port;
  port.Expect(Text(kCardRequest)).Reply(64, Text(kCardReply));
  ASSERT_EQ(card.GetData(&port, 1), 1);
  const CSensorCardK copy(card);
  CSensorCardK assigned;
  assigned = card;
  for (const CSensorCardK* twin : {&copy, static_cast<const CSensorCardK*>(&assigned)}) {
    EXPECT_EQ(twin->m_pData, twin->m_byCard);
    EXPECT_EQ(twin->m_nCardLen, 14u);
    EXPECT_EQ(twin->m_byCard[12], 0x0D);
    EXPECT_EQ(twin->GetKind(), SERDAT_CARD_K);
  }
}

}  // namespace
}  // namespace fieldline::test
