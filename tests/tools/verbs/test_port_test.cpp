#include "tests/support/temp_directory.h"
#include "tests/tools/simulated_line.h"
#include "tests/tools/tool_process.h"

namespace fieldline::test {
namespace {

// One line with a device of each kind whose record the port keeps.
TEST(TestPort, KeepsTheRecordOfEveryMainKind) {
  const std::tuple<const char*, int, const char*, int> cases[] = {
      {"elec",    1, "counter",            123456},
      {"onoff",   2, "input_1",            1     },
      {"battery", 3, "cell_count",         32    },
      {"envir",   4, "register_1",         235   },
      {"leak",    5, "holding_register_1", 100   },
      {"airc",    6, "register_0",         200   },
      {"ups",     0, "rated_current",      4     },
      {"camera",  0, "length",             8192  },
  };
  const TempDirectory flash;
  SimulatedLine line;
  std::string words = "test-port --json --timeout 1,150 --flash-root " + flash.Path().string();
  for (const auto& [kind, address, field, number] : cases) {
    sim::Values& values = line.Add(kind, address).values();
    if (field == std::string("input_1")) values.PutNumber(field, number);
    words += std::string(" ") + kind + (address != 0 ? '@' + std::to_string(address) : "");
  }
  ASSERT_TRUE(line.Start());
  const std::vector<json> polls = Lines(ExpectTool(words + " --port " + line.Path(), 0, "").out);
  ASSERT_EQ(polls.size(), std::size(cases));
  for (std::size_t i = 0; i < std::size(cases); ++i) {
    const auto& [kind, address, field, number] = cases[i];
    EXPECT_EQ(polls[i]["kind"], kind);
    EXPECT_EQ(polls[i]["record"][field], number) << polls[i];
  }
}

TEST(TestPort, SaysWhatItHasNoRecordOrNoDriverFor) {
  SimulatedLine line;
  line.Add("envir", 7);
  line.Add("cybermate", 1);
  ASSERT_TRUE(line.Start());
  const std::string options = " --timeout 0,400 --port " + line.Path();
  ExpectTool("test-port cybermate" + options, 0, " ms\n  answered; the test port keeps no record of this kind\n");
  ExpectTool("test-port envir@8 envir@7" + options, 1, "envir at address 7, ", "envir at address 8: ");
  for (const std::string wrong : {"card", "camera-3ge", "envir@", "envir@256", "ups@1", "toaster"}) {
    ExpectTool("test-port " + wrong + options, 2, "");
  }
}

}  // namespace
}  // namespace fieldline::test
