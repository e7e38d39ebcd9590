// What the tests of drivers against simulated devices leave open: requests that a device must not answer.

#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <string_view>

#include "sim/devices/digital_inputs.h"
#include "tests/support/make_device.h"
#include "tests/support/scripted_port.h"
#include "tests/support/temp_directory.h"

namespace fieldline::sim {
namespace {

using test::Hex;
using test::Text;
using test::ToHex;

// What the device answers to a whole request; nothing when it leaves the request to others.
Bytes Ask(Device& device, const Bytes& request) {
  std::vector<Reply> replies;
  std::size_t taken = device.Hear(request, false, replies);
  if (taken == 0) taken = device.Hear(request, true, replies);
  EXPECT_EQ(taken, replies.empty() ? 0 : request.size());
  return replies.empty() ? Bytes() : replies[0].bytes;
}

TEST(Devices, AnswerWhatIsTheirs) {
  const struct {
    const char* kind;
    BYTE address;
    Bytes request;
    const char* reply;
  } cases[] = {
      {"onoff",      1, Hex("01 04 00 00 00 0C F0 0F"), "01 04 0C 00 00 00 00 00 00 00 00 00 00 00 00 95 B7"               },
      {"onoff",      1, Hex("01 04 00 00 00 0B B1 CD"), "01 84 02 C2 C1"                                                   }, // other inputs
      {"dual-proto", 4, Hex("04 01 03 F5 00 01 ED E9"), "04 01 01 01 90 84"                                                },
      {"dual-proto", 5, Hex("05 01 02 FF F8"),          ""                                                                 }, // checksum
      {"dual-proto", 5, Hex("07 01 02 F6 FF"),          ""                                                                 }, // address
      {"dual-proto", 5, Hex("05 01 02 F8"),             ""                                                                 },
      {"ups",        0, Text("F\r"),                    "23 32 32 30 2E 30 20 30 30 34 20 32 34 2E 30 30 20 35 30 2E 30 0D"},
      {"ups",        0, Text("Q2\r"),                   ""                                                                 },
      {"ups",        0, Text("Q1"),                     ""                                                                 },
  };
  for (const auto& [kind, address, request, reply] : cases) {
    EXPECT_EQ(ToHex(Ask(*test::MakeDevice(kind, address), request)), reply) << kind << ' ' << ToHex(request);
  }
}

// "(220.0 140.0 220.0 034 50.0 27.3 35.0 00000000": cells of 2 V and of blocks have other digits.
TEST(Ups, SendsItsBatteryVoltageInThreeOrFourDigits) {
  const auto ups = test::MakeDevice("ups", 0);
  ups->values().PutNumber("battery_voltage", 2.05);
  EXPECT_EQ(Ask(*ups, Text("Q1\r")), Text("(220.0 140.0 220.0 034 50.0 2.05 35.0 00000000\r"));
  ups->values().PutNumber("battery_voltage", 27.36);
  ups->values().PutNumber("input_voltage", 0.4);
  EXPECT_EQ(Ask(*ups, Text("Q1\r")), Text("(000.4 140.0 220.0 034 50.0 27.3 35.0 00000000\r"));
}

TEST(DigitalInputs, KeepTheFileCurrent) {
  const TempDirectory directory;
  {
    DigitalInputs inputs(directory.Path());
    inputs.values().PutNumber("input_1", 1);
    inputs.values().PutNumber("input_8", 1);
    ASSERT_TRUE(inputs.Update());
    EXPECT_EQ(directory.ReadFile("eio1"), "\x81");
    inputs.values().PutNumber("input_1", 0);
    inputs.values().PutNumber("input_8", 0);
    ASSERT_TRUE(inputs.Update());
    EXPECT_EQ(directory.ReadFile("eio1"), std::string(1, '\0'));
  }
  EXPECT_TRUE(std::filesystem::is_empty(directory.Path()));
  EXPECT_FALSE(DigitalInputs(directory.Path() / "missing").Update());
}

}  // namespace
}  // namespace fieldline::sim
