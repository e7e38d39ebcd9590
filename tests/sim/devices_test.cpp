#include <gtest/gtest.h>

#include <filesystem>
#include <memory>
#include <span>
#include <sstream>
#include <string>
#include <string_view>
#include <vector>

#include "sim/catalog.h"
#include "sim/digital_inputs.h"
#include "tests/support/scripted_port.h"
#include "tests/support/temp_directory.h"

namespace fieldline::sim {
namespace {

using test::Hex;
using test::Text;
using test::ToHex;

// "name=value name=value".
void Set(Values& values, const std::string& settings) {
  std::istringstream stream(settings);
  std::string setting;
  while (stream >> setting) {
    const auto equals = setting.find('=');
    std::string error;
    EXPECT_TRUE(values.Set(setting.substr(0, equals), setting.substr(equals + 1), &error)) << error;
  }
}

std::unique_ptr<Device> MakeSet(std::string_view kind, BYTE address, const std::string& settings) {
  auto device = Make(kind, address);
  Set(device->values(), settings);
  return device;
}

// What the device answers to a whole request; nothing when it does not take it.
Bytes Ask(Device& device, const Bytes& request) {
  std::vector<Reply> replies;
  std::size_t taken = device.Hear(request, false, replies);
  if (taken == 0) taken = device.Hear(request, true, replies);
  EXPECT_EQ(taken, replies.empty() ? 0 : request.size());
  return replies.empty() ? Bytes() : replies[0].bytes;
}

std::string Zeros(int bytes) {
  std::string text;
  for (int i = 0; i < bytes; ++i) text += "00 ";
  return text;
}

void ExpectReply(Device& device, const char* request, const std::string& reply) {
  EXPECT_EQ(ToHex(Ask(device, Hex(request))), reply) << request;
}

TEST(LeakController, SendsEachRegister) {
  const auto leak =
      MakeSet("leak", 1, "leak=1 second_flag=2 input_register_1=4660 holding_register_1=43981 input_register_4=7");
  ExpectReply(*leak, "01 04 00 00 00 01 31 CA", "01 04 02 00 09 79 36");
  ExpectReply(*leak, "01 04 00 01 00 01 60 0A", "01 04 02 12 34 B4 47");
  ExpectReply(*leak, "01 03 00 01 00 01 D5 CA", "01 03 02 AB CD 06 E1");
  ExpectReply(*leak, "01 04 00 04 00 01 70 0B", "01 04 02 00 07 F8 F2");
}

TEST(SwitchInputs, SendOneByteEach) {
  const auto onoff = MakeSet("onoff", 1, "input_1=1 input_4=1 input_12=1");
  ExpectReply(*onoff, "01 04 00 00 00 0C F0 0F", "01 04 0C 01 00 00 01 00 00 00 00 00 00 00 01 A4 24");
  ExpectReply(*onoff, "01 04 00 00 00 0B B1 CD", "01 84 02 C2 C1");
}

// Each value is another number of register steps, counted in the order of the values.
TEST(PowerMeters, SendTheSameValuesFromTheirOwnRegisters) {
  const std::string common =
      "counter=65538 q1_total=10 q1_phase1=20 q1_phase2=30 q1_phase3=40 q2_total=50 q2_phase1=60 q2_phase2=70 "
      "q2_phase3=80 q3_total=90 q3_phase1=100 q3_phase2=110 q3_phase3=120 q4_total=13 q4_phase1=14 q4_phase2=15 "
      "q4_phase3=16 single=17 q5_phase1=18 q5_phase2=19 q5_phase3=20 ";
  const auto elec = MakeSet("elec", 5, common + "q6_phase1=525 q6_phase2=550 q6_phase3=575");
  ExpectReply(*elec, "05 03 00 00 00 39 84 5C",
              "05 03 72 00 01 00 02 " + Zeros(64) +
                  "00 01 00 02 00 03 00 04 00 05 00 06 00 07 00 08 00 09 00 0A 00 0B 00 0C 00 0D 00 0E 00 0F 00 10 "
                  "00 11 00 12 00 13 00 14 00 15 00 16 00 17 16 4C");

  const auto elec_y = MakeSet("elec-y", 5, common + "q6_phase1=21 q6_phase2=22 q6_phase3=23");
  ExpectReply(*elec_y, "05 03 00 00 00 20 45 96",
              "05 03 40 00 12 00 00 00 15 00 00 00 02 00 0E 00 06 00 0A 00 13 00 00 00 16 00 00 00 03 00 0F 00 07 "
              "00 0B 00 14 00 00 00 17 00 00 00 04 00 10 00 08 00 0C 00 00 00 00 00 11 00 01 00 0D 00 05 00 09 00 00 "
              "9F 7F");
  ExpectReply(*elec_y, "05 03 00 21 00 08 15 82", "05 03 10 00 01 00 02 " + Zeros(12) + "D3 2B");
}

TEST(AirConditioner, SendsItsRegistersLowByteFirst) {
  std::string zeros;
  for (int i = 0; i < 26; ++i) zeros += "register_" + std::to_string(i) + "=0 ";
  const auto airc =
      MakeSet("airc", 5, zeros + "register_0=4660 register_3=39175 register_4=513 register_5=1027 register_25=43981");
  ExpectReply(*airc, "05 04 00 00 00 3C F1 9F",
              "05 04 34 34 12 00 00 00 00 07 99 01 02 03 04 " + Zeros(38) + "CD AB 21 DC");
}

TEST(EmersonUnit, SendsItsInputsAndEachRunOfRegisters) {
  const auto emerson = MakeSet("emerson", 5, "input_0=1 input_9=1 input_108=1");
  ExpectReply(*emerson, "05 02 00 00 00 6D B8 63", "05 02 0E 01 02 00 00 00 00 00 00 00 00 00 00 00 10 6A 0B");
  ExpectReply(*emerson, "05 04 00 63 00 15 C0 5F",
              "05 04 2A 03 DE 03 E8 03 F2 03 FC 04 06 04 10 04 1A 04 24 04 2E 04 38 04 42 04 4C 04 56 04 60 04 6A "
              "04 74 04 7E 04 88 04 92 04 9C 04 A6 3F DF");
  EXPECT_EQ(Ask(*emerson, Hex("05 04 00 08 00 25 B1 97")).size(), 79u);
  EXPECT_EQ(Ask(*emerson, Hex("05 04 00 31 00 1E 20 49")).size(), 65u);
  EXPECT_EQ(Ask(*emerson, Hex("05 04 00 81 00 1D 61 AF")).size(), 63u);
}

TEST(DualProtoModbus, SendsFloatsHighByteFirst) {
  const auto unit =
      MakeSet("dual-proto", 4,
              "register_2348=220.5 register_2350=-3.25 register_2352=50.75 register_2356=-6.5 register_2382=0 "
              "register_2384=0 register_2386=0 register_2388=0 register_2390=0 register_2392=-6.5 register_2394=0.25");
  ExpectReply(*unit, "04 03 09 2C 00 06 07 C8", "04 03 0C 43 5C 80 00 C0 50 00 00 42 4B 00 00 52 CA");
  ExpectReply(*unit, "04 03 09 34 00 02 86 0C", "04 03 04 C0 D0 00 00 92 CA");
  ExpectReply(*unit, "04 03 09 4E 00 0E A7 D0", "04 03 1C " + Zeros(20) + "C0 D0 00 00 3E 80 00 00 5D 3A");
  ExpectReply(*unit, "04 01 03 F5 00 01 ED E9", "04 01 01 01 90 84");
}

TEST(DualProtoFrame, SendsItsBody) {
  const auto device = Make("dual-proto", 5);
  const Bytes request = Hex("05 01 02 F8 FF");
  std::vector<Reply> replies;
  EXPECT_EQ(device->Hear(std::span(request).first(4), true, replies), 0u);
  EXPECT_TRUE(Ask(*device, Hex("05 01 02 FF F8")).empty());
  EXPECT_TRUE(Ask(*device, Hex("07 01 02 F6 FF")).empty());

  Set(device->values(), "word_0=4660 word_12=65535 byte_14=-123 byte_57=-123 byte_83=250 state=0");
  const Bytes reply = Ask(*device, request);
  ASSERT_EQ(reply.size(), 3u + 132u);
  EXPECT_EQ(ToHex(Bytes(reply.begin(), reply.begin() + 5)), "05 01 84 34 12");
  const auto body = std::span(reply).subspan(3);
  EXPECT_EQ(body[12], 0xFF);
  EXPECT_EQ(body[13], 0xFF);
  EXPECT_EQ(body[14], 0x85);
  EXPECT_EQ(body[57], 0x85);
  EXPECT_EQ(body[83], 250);
  EXPECT_EQ(body[131], 0x10);
  Set(device->values(), "state=1");
  EXPECT_EQ(Ask(*device, request).back(), 0);
}

TEST(Ups, AnswersEachCommand) {
  const auto ups =
      MakeSet("ups", 0,
              "input_voltage=208.4 input_fault_voltage=140 output_voltage=208.4 output_load=34 input_frequency=59.9 "
              "battery_voltage=2.05 temperature=35 bypass_active=1 ups_failed=1 rated_voltage=230 rated_current=4 "
              "rated_battery_voltage=12 rated_frequency=50 maker=NineChars model=TenLetters version=V1.0");
  EXPECT_EQ(Ask(*ups, Text("Q1\r")), Text("(208.4 140.0 208.4 034 59.9 2.05 35.0 00110000\r"));
  EXPECT_EQ(Ask(*ups, Text("I\r")), Text("#NineChars       TenLetters V1.0      \r"));
  EXPECT_EQ(Ask(*ups, Text("F\r")), Text("#230.0 004 12.00 50.0\r"));
  EXPECT_TRUE(Ask(*ups, Text("Q2\r")).empty());
  EXPECT_TRUE(Ask(*ups, Text("Q1")).empty());

  Set(ups->values(), "battery_voltage=27.36 input_voltage=0.4");
  EXPECT_EQ(Ask(*ups, Text("Q1\r")), Text("(000.4 140.0 208.4 034 59.9 27.3 35.0 00110000\r"));
}

TEST(DigitalInputs, KeepTheFileCurrent) {
  const TempDirectory directory;
  {
    DigitalInputs inputs(directory.Path());
    Set(inputs.values(), "input_1=1 input_8=1");
    ASSERT_TRUE(inputs.Update());
    EXPECT_EQ(directory.ReadFile("eio1"), "\x81");
    Set(inputs.values(), "input_1=0 input_8=0");
    ASSERT_TRUE(inputs.Update());
    EXPECT_EQ(directory.ReadFile("eio1"), std::string(1, '\0'));
  }
  EXPECT_TRUE(std::filesystem::is_empty(directory.Path()));
  EXPECT_FALSE(DigitalInputs(directory.Path() / "missing").Update());
}

}  // namespace
}  // namespace fieldline::sim
