#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <nlohmann/json.hpp>
#include <sstream>
#include <string>

#include "tests/support/temp_directory.h"
#include "tests/tools/simulated_line.h"
#include "tests/tools/tool_process.h"

namespace fieldline {
namespace {

using nlohmann::json;
using test::kAnySpeed;
using test::RunTool;
using test::ToolResult;
using testing::HasSubstr;
using testing::StartsWith;

// One line with a device of each kind whose record the port keeps.
TEST(TestPort, KeepsTheRecordOfEveryMainKind) {
  const struct {
    const char* kind;
    int address;
    const char* field;
    int number;
  } cases[] = {
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
  sim::Line line(kAnySpeed);
  std::string words = "test-port --json --timeout 1,150 --flash-root " + flash.Path().string();
  for (const auto& c : cases) {
    sim::Values& values = line.Add(test::MakeDevice(c.kind, c.address)).values();
    if (c.field == std::string("input_1")) values.PutNumber(c.field, c.number);
    words += std::string(" ") + c.kind + (c.address != 0 ? '@' + std::to_string(c.address) : "");
  }
  ASSERT_TRUE(line.Start());
  const ToolResult result = RunTool(words + " --port " + line.Path());
  EXPECT_EQ(result.status, 0) << result.err;
  std::istringstream lines(result.out);
  for (const auto& c : cases) {
    std::string text;
    ASSERT_TRUE(std::getline(lines, text)) << c.kind;
    const json poll = json::parse(text);
    EXPECT_EQ(poll["kind"], c.kind);
    EXPECT_EQ(poll["record"][c.field], c.number) << poll;
  }
}

TEST(TestPort, SaysWhatItHasNoRecordOrNoDriverFor) {
  sim::Line line(kAnySpeed);
  line.Add(test::MakeDevice("envir", 7));
  line.Add(test::MakeDevice("cybermate", 1));
  ASSERT_TRUE(line.Start());
  const std::string options = " --timeout 0,500 --port " + line.Path();
  ToolResult result = RunTool("test-port cybermate" + options);
  EXPECT_EQ(result.status, 0) << result.err;
  EXPECT_THAT(result.out, HasSubstr(" ms\n  answered; the test port keeps no record of this kind\n"));

  result = RunTool("test-port envir@8 envir@7" + options);
  EXPECT_EQ(result.status, 1);
  EXPECT_THAT(result.err, HasSubstr("envir at address 8: "));
  EXPECT_THAT(result.out, StartsWith("envir at address 7, "));
  for (const char* wrong : {"card", "camera-3ge", "envir@", "envir@256", "ups@1", "toaster"}) {
    EXPECT_EQ(RunTool(std::string("test-port ") + wrong + options).status, 2) << wrong;
  }
}

}  // namespace
}  // namespace fieldline
