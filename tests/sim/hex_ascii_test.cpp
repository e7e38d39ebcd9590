#include <gtest/gtest.h>

#include <string>
#include <string_view>
#include <vector>

#include "sim/catalog.h"
#include "tests/support/scripted_port.h"

namespace fieldline::sim {
namespace {

using test::Text;

// What a device answers to a request; "" when it leaves the request to others.
std::string Ask(Device& device, const std::string& request) {
  std::vector<Reply> replies;
  const std::size_t taken = device.Hear(Text(request), false, replies);
  EXPECT_EQ(taken, replies.empty() ? 0 : request.size());
  return replies.empty() ? "" : std::string(replies[0].bytes.begin(), replies[0].bytes.end());
}

void Set(Device& device, std::string_view name, std::string_view text) {
  std::string error;
  ASSERT_TRUE(device.values().Set(name, text, &error)) << error;
}

TEST(HexAsciiDevice, HearsOnlySoundRequestsOfItsOwn) {
  const auto unit = Make("cybermate", 7);
  const std::string others[] = {
      "~210760430000FDA9",    // not complete
      "~210760430000FDA8\r",  // checksum
      "~21076043F000FD93\r",  // length check
      "~210760432001FD96\r",  // more announced than sent
      "~210860430000FDA8\r",  // address
      "~200760430000FDAA\r",  // version
      "~210761430000FDA8\r",  // type
      "\177210760430000FDA9\r", "~\r", "\r",
  };
  for (const std::string& request : others) EXPECT_EQ(Ask(*unit, request), "") << request;
  EXPECT_EQ(Ask(*unit, "~210760450000FDA7\r"), "~210760040000FDAC\r") << "unknown command";
}

TEST(HexAsciiDevices, SendTheirValues) {
  const auto unit = Make("cybermate", 7);
  Set(*unit, "analog_3", "2");
  Set(*unit, "analog_4", "3");
  Set(*unit, "analog_5", "65535");
  EXPECT_EQ(Ask(*unit, "~210760420000FDAA\r"), "~21076000B01401F401F500020003FFFFF945\r");
  EXPECT_EQ(Ask(*unit, "~210760430000FDA9\r"), "~21076000200E11121314151617FAD6\r");

  const auto power = Make("power-unit", 7);
  Set(*power, "state_2", "255");
  EXPECT_EQ(Ask(*power, "~11072A430000FD9D\r"), "~11072A00101E000100FF030405060708090A0B0000F773\r");

  const auto card = Make("card", 0);
  Set(*card, "state", "5");
  EXPECT_EQ(Ask(*card, "\1771001804AA006F2EE00FC28\r"), "\17710018000301C3030313233343536373800000005F818\r");
}

}  // namespace
}  // namespace fieldline::sim
