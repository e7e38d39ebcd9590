#include "sim/devices/display.h"

#include <gtest/gtest.h>

#include <string>

#include "tests/support/scripted_port.h"

namespace fieldline::sim {
namespace {

using test::Hex;

TEST(DisplayTest, ShowsWhatIsWritten) {
  Display display;
  int changes = 0;
  display.SetListener([&](Display&) { ++changes; });
  const struct {
    const char* frame;
    std::size_t taken;
  } cases[] = {
      {"A5 5A 05 82 10 00 01 02",                8 },
      {"A5 5A 07 82 00 05 FF FE 00 07",          10}, // two variables from 5 on
      {"A5 5A 04 80 03 00 03 A5 5A",             7 }, // the next frame has begun
      {"A5 5A 0A 80 1F 5A 24 05 17 05 13 45 00", 13},
      {"A5 5A 0A 80 1F 00 25 06 18 06 14 46 01", 13}, // without the flag that sets the clock
      {"A5 5A 04 81 03 00 03",                   7 }, // a read
      {"A5 5A 05 82 10 00 01",                   0 },
      {"5A A5 05 82 10 00 01 02",                0 },
  };
  std::vector<Reply> replies;
  for (const auto& [frame, taken] : cases) EXPECT_EQ(display.Hear(Hex(frame), false, replies), taken) << frame;
  EXPECT_TRUE(replies.empty());
  EXPECT_EQ(changes, 4);
  EXPECT_EQ(display.Screen(),
            "+--------------------------------------+\n"
            "| page 3   24-05-17 13:45:00, day 5    |\n"
            "| 0005  65534      -2  0xFFFE          |\n"
            "| 0006      7       7  0x0007          |\n"
            "| 1000    258     258  0x0102          |\n"
            "+--------------------------------------+\n");
}

}  // namespace
}  // namespace fieldline::sim
