#include "fieldline/sensor/modbus.h"

#include <cstring>

#include "tests/support/modbus_frames.h"
#include "tests/support/scripted_port.h"

namespace fieldline::test {
namespace {

TEST(Crc16, HasThePublishedCheckValue) {
  const BYTE digits[] = {'1', '2', '3', '4', '5', '6', '7', '8', '9'};
  EXPECT_EQ(CRC16(digits, 9), 0x4B37);
  EXPECT_EQ(CRC16(digits, 0), 0xFFFF);
  EXPECT_EQ(ToHex(WithCrc("31 32 33 34 35 36 37 38 39")), "31 32 33 34 35 36 37 38 39 37 4B");
}

TEST(ModbusRequest, IsTheFrameOnTheWire) {
  BYTE request[kModbusRequestLength];
  EXPECT_EQ(BuildModbusRead(request, 1, 3, 0x1234, 0x0102), 8);
  EXPECT_EQ(ToHex({request, request + 8}), ToHex(WithCrc("01 03 12 34 01 02")));
}

int Receive(const Bytes& reply, int ask, int least, CrcPlace place = CrcPlace::kLastTwoBytes) {
  ScriptedPort port;
  port.Reply(ask, reply);
  BYTE buffer[512];
  std::memset(buffer, 0xFF, sizeof buffer);
  return ReadModbusReply(&port, buffer, ask, least, place);
}

TEST(ModbusReply, IsAcceptedOnItsLengthAndChecksum) {
  const Bytes reply = Hex("01 03 04 01 23 FE DC 4B FC");
  EXPECT_EQ(Receive(reply, 9, 9), 9);
  EXPECT_EQ(Receive(reply, 20, 9), 9);
  EXPECT_EQ(Receive(reply, 20, 10), 0);
  EXPECT_EQ(Receive(Hex("01 03 04 01 23 FE DC FC 4B"), 9, 9), 0);
  EXPECT_EQ(Receive({}, 9, 9), 0);

  ScriptedPort closed;
  closed.open = 0;
  BYTE buffer[9];
  EXPECT_EQ(ReadModbusReply(&closed, buffer, 9, 9, CrcPlace::kLastTwoBytes), 0);
}

TEST(ModbusReply, FindsTheChecksumThroughTheByteCount) {
  // Status register 2 of device 1, with two stray bytes after it.
  Bytes reply = WithCrc("01 04 02 00 02");
  reply.insert(reply.end(), {0xAA, 0x55});
  EXPECT_EQ(Receive(reply, 10, 7, CrcPlace::kAfterByteCount), 9);
  EXPECT_EQ(Receive(reply, 10, 7), 0);

  // Byte counts that leave no room for a register, or place the checksum beyond what came.
  for (const char* frame : {"01 04 00", "01 04 01 00"}) {
    Bytes short_frame = WithCrc(frame);
    short_frame.resize(10);
    EXPECT_EQ(Receive(short_frame, 10, 7, CrcPlace::kAfterByteCount), 0) << frame;
  }
  for (const BYTE count : {BYTE{6}, BYTE{253}, BYTE{255}}) {
    Bytes beyond = reply;
    beyond[2] = count;
    EXPECT_EQ(Receive(beyond, 10, 7, CrcPlace::kAfterByteCount), 0) << int{count};
  }
}

TEST(ModbusReply, IsCheckedOverTheLengthModulo256) {
  Bytes reply(258, 0x11);
  reply[256] = reply[257] = 0xFF;  // the checksum of no bytes
  EXPECT_EQ(Receive(reply, 258, 258), 258);
}

}  // namespace
}  // namespace fieldline::test
