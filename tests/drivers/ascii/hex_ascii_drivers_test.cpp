#include <gmock/gmock.h>

#include <algorithm>
#include <map>

#include "fieldline/fieldline.h"
#include "tests/drivers/ascii/frames.h"
#include "tests/support/fake_clock.h"
#include "tests/support/golden_poll.h"

namespace fieldline::test {
namespace {

GoldenPoll& Add(GoldenPoll& poll, const std::string& request, int ask, const std::string& reply, Range writes) {
  poll.exchanges.push_back({Text(request), ask, Text(reply), {writes}});
  return poll;
}

void Append(GoldenPoll& poll, const Bytes& part) { poll.record.insert(poll.record.end(), part.begin(), part.end()); }

// Cell i, from 0, shows i + 2 volts, but for the first.
GoldenPoll BatteryPoll(const std::string& first_cell, unsigned first_value, const std::string& group_2_first,
                       unsigned group_2_value) {
  std::string cells;
  std::vector<unsigned> millivolts = {first_value};
  for (unsigned i = 1; i < 32; ++i) {
    cells += HexFloat(static_cast<float>(i + 2));
    millivolts.push_back(1000 * (i + 2));
  }
  const std::string reply = "~20014600F1C40020" + first_cell + cells + std::string(136, 'F') +  //
                            "D1" + HexFloat(999) + HexFloat(1.5f) +                             //
                            "D2" + group_2_first + "E17A943E" +                                 // 0.29
                            "D3" + HexFloat(25.5f) + HexFloat(-1.75f) + "D4";
  GoldenPoll poll = {SERDAT_BATTERY, 1, {}, Numbers(4, {first_value + 1000 * (33 * 34 / 2 - 1 - 2)})};
  Append(poll, Numbers(2, {group_2_value, 255}));
  Append(poll, Numbers(2, millivolts));
  Append(poll, Numbers(2, {150, 28, 18, 1000, 32, 4}));
  return Add(poll, "~20014641E00201FD36\r", 470, Seal(reply), {0, 84});
}

TEST(SensorBattery, DecodesTheReplyAndLetsTheMonitorRest) {
  Clock().sleeps.clear();
  const GoldenPoll poll = BatteryPoll("66660640", 2099, "6666A6C0", 520);  // 2.1, -5.2
  ExpectRecordAndRejectsDamage(poll);
  EXPECT_THAT(Clock().sleeps, testing::ElementsAre(2000u)) << "after a success only";
  const Bytes& reply = poll.exchanges[0].reply;
  ExpectRefusal(poll, 0, Text(Seal("~20014604" + std::string(reply.begin() + 9, reply.end() - 5))));
  // 70 and infinity leave their low bits, the latter of the most that 32 bits hold.
  ExpectRecord(BatteryPoll("00008C42", 4464, "0000807F", 0xFFFF));
}

// Value k, from 0, shows k + 1.5, but for these: 220.5, -3.5, 49.98, 1234.7.
const std::map<int, std::string> kSpecialValues = {
    {0,  "00805C43"},
    {1,  "000060C0"},
    {6,  "85EB4742"},
    {48, "66569A44"}
};

std::string Values(int first, int end) {
  std::string text;
  for (int k = first; k < end; ++k) {
    text += kSpecialValues.contains(k) ? kSpecialValues.at(k) : HexFloat(static_cast<float>(k) + 1.5f);
  }
  return text;
}

TEST(SensorPowerUnit, DecodesFiveRepliesAndStopsAtTheRangeOfAField) {
  std::vector<unsigned> values;
  for (unsigned k = 0; k < 52; ++k) values.push_back(10 * k + 15);
  for (const unsigned k : {7, 11, 20, 21, 22, 23}) values[k] = 100 * k + 150;
  values[0] = 2205;
  values[1] = 35;
  values[6] = 4998;
  values[48] = 1234;
  GoldenPoll poll = {SERDAT_POWER_UNIT, 1, {}, Numbers(4, values)};
  Append(poll, Hex("A1 B1 B2 B3 B4 B5 B6 B7 B8 B9 BA A5"));
  const auto add = [&](const char* request, const std::string& reply_from_length, Range writes) {
    Add(poll, request, 150, Seal("~11772A00" + reply_from_length), writes);
  };
  add("~11012AE10000FD94\r", "E06CFFFF" + Values(0, 13), {0, 52});
  add("~11012A410000FDA5\r", "A060" + std::string(26, 'F') + Values(13, 21) + "FFFFFF", {52, 32});
  add("~11012AE20000FD93\r", "D07CFFFF" + Values(21, 36), {84, 60});
  add("~11012AE30000FD92\r", "4084FFFF" + Values(36, 52), {144, 64});
  add("~11012A430000FDA3\r", "101EFFA1FFB1B2B3B4B5B6B7B8B9BAFFFF", {208, 11});
  ExpectRecordAndRejectsDamage(poll);
  Bytes too_long = poll.exchanges[0].reply;
  too_long.push_back('\r');
  ExpectRefusal(poll, 0, too_long);

  std::string huge = "~11012A00E06C0000";
  for (int k = 0; k < 13; ++k) huge += "FFFFFF7F";  // no number
  poll.exchanges[0].reply = Text(Seal(huge));
  const Bytes most = Numbers(4, std::vector<unsigned>(13, 2147483647));
  std::copy(most.begin(), most.end(), poll.record.begin());
  ExpectRecord(poll);
}

// The shortest replies that carry all that is decoded; the check needs no checksum.
TEST(SensorCybermate, DecodesFourRepliesAndKeepsWhatCameBeforeAFailure) {
  GoldenPoll poll = {SERDAT_CYBERMATE, 1, {}, Numbers(4, {500, 2, 3, 4, 0xFFFF})};
  Append(poll,
         Hex("11 12 13 14 15 16 17 21 22 23 24 25 26 27 28 29 2A 2B 2C 2D 2E 2F 30 31 32 33 34 35 36 37 38 39 3A"));
  Append(poll, Hex("C1 C2 C3 C4 C5 C6 C7 C8 C9 CA"));
  Add(poll, "~210160420000FDB0\r", 120, "~21016000B01401F4000200030004FFFF", {0, 20});
  Add(poll, "~210160430000FDAF\r", 120, "~21016000200E11121314151617", {20, 7});
  Add(poll, "~210160440000FDAE\r", 120, "~2101600090342122232425262728292A2B2C2D2E2F303132333435363738393A", {27, 26});
  Add(poll, "~210160470000FDAB\r", 120, "~21016000B014C1C2C3C4C5C6C7C8C9CA", {53, 10});
  ExpectRecord(poll);
  for (std::size_t i = 0; i < poll.exchanges.size(); ++i) {
    Bytes reply = poll.exchanges[i].reply;
    ExpectRefusal(poll, i, {});
    ExpectRefusal(poll, i, Bytes(reply.begin(), reply.begin() + 8));
    ExpectRefusal(poll, i, Bytes(reply.begin(), reply.end() - 1));
    reply[7] = '1';
    ExpectRefusal(poll, i, reply);
    std::swap(reply[7], reply[8]);
    ExpectRefusal(poll, i, reply);
  }

  poll.exchanges[0].reply = Text("???????00????01f4" + std::string(103, 'z'));
  const Bytes garbled = Numbers(4, {0x0104, 0, 0, 0, 0});
  std::copy(garbled.begin(), garbled.end(), poll.record.begin());
  ExpectRecord(poll);
}

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
