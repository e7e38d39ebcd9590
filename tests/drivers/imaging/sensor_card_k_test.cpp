#include "fieldline/drivers/imaging/sensor_card_k.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <tuple>

#include "tests/drivers/ascii/frames.h"
#include "tests/support/golden_poll.h"

namespace fieldline::test {
namespace {

TEST(SensorCardK, KeepsSoundRepliesOnly) {
  // Octal, since the digits that follow would belong to a hexadecimal escape.
  const std::string head = "\1771001800";
  const std::string sound = "\17710018000301C0102030405060708090A0B0C0D00F7E8\r";
  const std::string bytes = "01 02 03 04 05 06 07 08 09 0A 0B 0C 0D";
  const std::string old = "A5 A5 A5";
  const auto with = [&](std::size_t position, char c) {
    std::string reply = sound;
    reply[position] = c;
    return reply;
  };
  const std::tuple<const char*, std::string, int, std::string> cases[] = {
      {"sound",                        sound,                                                1,               bytes + " 00"             },
      {"return code 1, other address", Seal("\17710778001301C0102030405060708090A0B0C0D00"), 1,               bytes + " 00"             },
      {"lower case counts as 0",       Seal(head + "0301C0102030405060708090A0B0C0Dff"),     1,               bytes + " 00"             },
      {"half a byte announced beyond", Seal(head + "0201D0102030405060708090A0B0C0D00"),     1,               bytes + " 00"             },
      {"last byte not 0",              Seal(head + "0301C0102030405060708090A0B0C0D01"),     0,               bytes + " 01"             },
      {"13 bytes",                     Seal(head + "0501A0102030405060708090A0B0C0D"),       0,               bytes                     },
      {"no bytes",                     Seal(head + "00000"),                                 0,               ""                        },
      {"fewer announced than carried", Seal(head + "0C0040102030405060708090A0B0C0D00"),     0,               "01 02"                   },
      {"more announced than carried",  Seal(head + "0101E0102030405060708090A0B0C0D00"),     0,               old                       },
      {"4095 announced",               Seal(head + "03FFF0102030405060708090A0B0C0D00"),     0,               old                       },
      {"wrong length check",           Seal(head + "0401C0102030405060708090A0B0C0D00"),     0,               old                       },
      {"another start",                with(0,                                               '~'),            0,                          old},
      {"another end",                              with(45,                                                                      '\n'),                                                 0, old},
      {"wrong checksum",                           with(44,                                                                               '7'),                                                                               0,                                                                        old},
      {"damaged",                             with(20,                                                                              'F'),               0,old},
      {"cut in the head",                          Seal(head + "0000"),0,old                                                              },
      {"start and end alone","\177\r",                                      0,                                                     old                },
      {"one character",                                     "\177",                                                   0,           old                    },
      {"nothing","",0,old},
  };
  for (const auto& [what, reply, result, record] : cases) {
    ScriptedPort port;
    port.Expect(Text("\1771001804AA006F2EE00FC28\r")).Reply(64, Text(reply));
    CSensorCardK card;
    card.m_nCardLen = 3;
    std::fill_n(card.m_byCard, 32, kOld);
    EXPECT_EQ(card.GetData(&port, 9), result) << what;
    ASSERT_LE(card.m_nCardLen, 32u) << what;
    EXPECT_EQ(ToHex({card.m_byCard, card.m_byCard + card.m_nCardLen}), record) << what;
    EXPECT_EQ(card.m_byCard[card.m_nCardLen], kOld) << what;
  }
}

TEST(SensorCardK, AsksAClosedPort) {
  ScriptedPort closed;
  closed.open = 0;
  CSensorCardK card;
  EXPECT_EQ(card.GetData(&closed, 1), 0);
  EXPECT_EQ(closed.calls, "w");
}

}  // namespace
}  // namespace fieldline::test
