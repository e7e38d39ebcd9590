#include <gtest/gtest.h>

#include <string>
#include <string_view>
#include <vector>

#include "tests/support/make_device.h"
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

TEST(HexAsciiDevice, HearsOnlySoundRequestsOfItsOwn) {
  const auto unit = test::MakeDevice("cybermate", 7);
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

}  // namespace
}  // namespace fieldline::sim
