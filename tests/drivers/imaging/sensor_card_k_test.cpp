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
  const auto expect = [&](const char* what, const std::string& reply, int result, const std::string& record) {
    ScriptedPort port;
    port.Expect(Text("\1771001804AA006F2EE00FC28\r")).Reply(64, Text(reply));
    CSensorCardK card;
    card.m_nCardLen = 3;
    std::fill_n(card.m_byCard, 32, kOld);
    EXPECT_EQ(card.GetData(&port, 9), result) << what;
    ASSERT_LE(card.m_nCardLen, 32u) << what;
    EXPECT_EQ(ToHex({card.m_byCard, card.m_byCard + card.m_nCardLen}), record) << what;
    EXPECT_EQ(card.m_byCard[card.m_nCardLen], kOld) << what;
  };
  expect("sound", sound, 1, bytes + " 00");
  expect("return code 1, other address", Seal("\17710778001301C0102030405060708090A0B0C0D00"), 1, bytes + " 00");
  expect("lower case counts as 0", Seal(head + "0301C0102030405060708090A0B0C0Dff"), 1, bytes + " 00");
  expect("half a byte announced beyond", Seal(head + "0201D0102030405060708090A0B0C0D00"), 1, bytes + " 00");
  expect("last byte not 0", Seal(head + "0301C0102030405060708090A0B0C0D01"), 0, bytes + " 01");
  expect("13 bytes", Seal(head + "0501A0102030405060708090A0B0C0D"), 0, bytes);
  expect("no bytes", Seal(head + "00000"), 0, "");
  expect("fewer announced than carried", Seal(head + "0C0040102030405060708090A0B0C0D00"), 0, "01 02");
  expect("more announced than carried", Seal(head + "0101E0102030405060708090A0B0C0D00"), 0, old);
  expect("4095 announced", Seal(head + "03FFF0102030405060708090A0B0C0D00"), 0, old);
  expect("wrong length check", Seal(head + "0401C0102030405060708090A0B0C0D00"), 0, old);
  expect("another start", with(0, '~'), 0, old);
  expect("another end", with(45, '\n'), 0, old);
  expect("wrong checksum", with(44, '7'), 0, old);
  expect("damaged", with(20, 'F'), 0, old);
  expect("cut in the head", Seal(head + "0000"), 0, old);
  expect("start and end alone", "\177\r", 0, old);
  expect("one character", "\177", 0, old);
  expect("nothing", "", 0, old);
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
