#include "polling/protocol/protocol.h"

#include "tests/support/scripted_port.h"

namespace fieldline {
namespace {

using test::Hex;

std::vector<BYTE> Ascii(const std::string& text) { return {text.begin(), text.end()}; }

TEST(Protocol, NamesRequests) {
  const auto expect = [](const std::vector<BYTE>& request, const char* meaning) {
    EXPECT_EQ(DescribeRequest(request), meaning);
  };
  expect(Hex("01 03 00 00 00 02 C4 0B"), "device 1: function 3 (read holding registers) from 0, count 2, CRC good");
  expect(Hex("01 03 00 00 00 02 C4 0C"), "device 1: function 3 (read holding registers) from 0, count 2, CRC BAD");
  expect(Hex("04 01 03 F5 00 01 ED E9"), "device 4: function 1 (read coils) from 1013, count 1, CRC good");
  expect(Hex("05 01 02 F8 FF"), "unit 5: all values, checksum good");
  expect(Hex("05 01 02 F8 FE"), "unit 5: all values, checksum BAD");
  expect(Hex("51 31 0D"), "\"Q1\": status");
  expect(Ascii("~20014641E00201FD36\r"),
         "device 1: VER 20, CID1 46, CID2 41 (analog values, floating point), LENID 2, CHKSUM good");
  expect(Ascii("\x7F"
               "1001804AA006F2EE00FC28\r"),
         "device 1: VER 10, CID1 80, CID2 4A (unknown), LENID 6, CHKSUM good");
  expect(Hex("56 00 31 05 01 01 12 04 80"), "write register 1204 = 80");
  expect(Hex("56 00 36 01 00"), "control frame: freeze");
  expect(Hex("56 00 32 0C 00 0A 00 00 00 00 00 00 12 34 00 0A"), "read frame, 4660 bytes");
  expect(Hex("55 47 33 23"), "\"UG3#\": take a picture");
  expect(Hex("AA 00 02 32 01 01 32 55"), "command 32 (switch relay), 2 bytes, checksum good");
  expect(Hex("AA 00 02 32 01 01 33 55"), "command 32 (switch relay), 2 bytes, checksum BAD");
  expect(Hex("A5 5A 05 82 10 00 01 02"), "variable 1000 = 258");
  expect(Hex("A5 5A 04 80 03 00 03"), "page 3");
  expect(Hex("A5 5A 0A 80 1F 5A 24 05 17 05 13 45 00"), "clock 24 05 17 05 13 45 00");
  expect(Hex("DE AD BE EF"), "");
  expect({}, "");
}

TEST(Protocol, NamesRepliesInTheProtocolOfTheirRequest) {
  const std::vector<BYTE> modbus = Hex("01 03 00 00 00 02 C4 0B");
  const std::vector<BYTE> frame_length = Hex("56 00 34 01 00");
  const std::vector<BYTE> picture = Hex("55 47 33 23");
  const std::vector<BYTE> signal = Hex("AA 00 00 06 06 55");
  const auto expect = [](const std::vector<BYTE>& request, const std::vector<BYTE>& reply, const char* meaning) {
    EXPECT_EQ(DescribeReply(request, reply), meaning);
  };
  expect(modbus, Hex("01 03 04 01 23 FE DC 4B FC"), "device 1: function 3 (read holding registers), 4 bytes, CRC good");
  expect(modbus, Hex("02 03 04 01 23 FE DC 4B FC"), "device 2: function 3 (read holding registers), 4 bytes, CRC BAD");
  expect(modbus, Hex("01 03 04 01 23 FE DC 4B"), "");
  expect(modbus, Hex("01 03 04 01 23 FE DC 4B FC 00"),
         "device 1: function 3 (read holding registers), 4 bytes, CRC good, then 1 more byte");
  expect(modbus, Hex("01 83 02 C0 F1"),
         "device 1: function 3 (read holding registers), exception 2 (illegal data address), CRC good");
  expect(modbus, modbus, "the request again");
  expect(modbus, {}, "");
  expect(Hex("05 01 02 F8 FF"), Hex("05 01 02 00 00"), "unit: 2 bytes of values");
  expect(Hex("46 0D"), Ascii("#230.0 004 12.00 50.0\r"), "\"#230.0 004 12.00 50.0\"");
  expect(Ascii("~20014641E00201FD36\r"), Ascii("~200146040000FDAF\r"),
         "device 1: VER 20, CID1 46, RTN 04 (unknown command), LENID 0, CHKSUM good");
  expect(Ascii("~20014641E00201FD36\r"), Ascii("~20014600E003FDB3\r"),
         "device 1: VER 20, CID1 46, RTN 00 (executed), LENID 3 with a BAD check nibble, CHKSUM BAD");
  expect(frame_length, Hex("76 00 34 00 04 00 00 12 34"), "get frame length: 4660 bytes");
  expect(frame_length, Hex("76 00 34 03"), "get frame length: refused with status 3");
  expect(picture, Ascii("UG#"), "\"UG#\": acknowledged");
  expect(picture, Hex("55 47 23 55 50 00 10"), "\"UP\": a picture of 4096 bytes");
  expect(signal, Hex("AA 00 01 06 1F 19 55"), "command 06 (signal quality), 1 byte, checksum good");
  expect(signal, Hex("AA 00 01"), "");
  expect(Hex("DE AD BE EF"), Hex("01 02"), "");
}

}  // namespace
}  // namespace fieldline
