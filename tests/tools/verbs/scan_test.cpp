#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "tests/support/scripted_port.h"
#include "tests/tools/simulated_line.h"
#include "tests/tools/tool_process.h"

namespace fieldline {
namespace {

using nlohmann::json;
using test::Hex;
using test::kAnySpeed;
using test::Parrot;
using test::ToolProcess;
using test::ToolResult;
using testing::HasSubstr;

ToolResult Scan(const sim::Line& line, std::vector<std::string> arguments) {
  arguments.insert(arguments.begin(), {"scan", "--port", line.Path() + ":9600,n,8,1"});
  return test::RunTool(arguments);
}

TEST(Scan, FindsDevicesByAddressAndKind) {
  sim::Line line(kAnySpeed);
  line.Add(test::MakeDevice("envir", 3));
  line.Add(test::MakeDevice("onoff", 5));
  ASSERT_TRUE(line.Start());
  const ToolResult result = Scan(line, {"envir", "onoff", "--from", "3", "--to", "5", "--timeout", "0,1000", "--json"});
  EXPECT_EQ(result.status, 0) << result.err;
  const std::size_t end = result.out.find('\n');
  ASSERT_EQ(std::count(result.out.begin(), result.out.end(), '\n'), 2) << result.out;
  const json probe = json::parse(result.out.substr(0, end));
  EXPECT_EQ(probe["kind"], "envir");
  EXPECT_EQ(probe["address"], 3);
  EXPECT_EQ(probe["ok"], true);
  const json module = json::parse(result.out.substr(end));
  EXPECT_EQ(module["kind"], "onoff");
  EXPECT_EQ(module["address"], 5);
  EXPECT_EQ(module["reply_bytes"], 17);
  EXPECT_EQ(module["standard_bytes"], 29);
  EXPECT_THAT(result.err, HasSubstr("3 addresses probed on "));
}

TEST(Scan, SaysWhenNothingAnswersAndWhatCantBeScanned) {
  sim::Line line(kAnySpeed);
  ASSERT_TRUE(line.Start());
  const ToolResult result = Scan(line, {"envir", "battery", "--from", "1", "--to", "2", "--timeout", "0,5", "--quiet"});
  EXPECT_EQ(result.status, 4);
  EXPECT_EQ(result.out + result.err, "");
  EXPECT_THAT(Scan(line, {"ups"}).err, HasSubstr("ups has no address to look for"));
  EXPECT_EQ(Scan(line, {"--from", "9", "--to", "3"}).status, 2);
}

TEST(Scan, WarnsOfAnEchoAndEnds) {
  sim::Line line(kAnySpeed);
  line.Add(std::make_unique<Parrot>());
  ASSERT_TRUE(line.Start());
  const ToolResult result = Scan(line, {"envir", "--timeout", "0,500"});
  EXPECT_EQ(result.status, 5);
  EXPECT_EQ(std::count(result.out.begin(), result.out.end(), '\n'), 3) << result.out;
  EXPECT_THAT(result.err, HasSubstr("every address gives the request back"));
}

TEST(Scan, WarnsOfADeviceThatAnswersToAnyAddress) {
  sim::Line line(kAnySpeed);
  line.Add(std::make_unique<Parrot>(Hex("01 03 04 01 23 FE DC 4B FC")));
  ASSERT_TRUE(line.Start());
  ToolResult result = Scan(line, {"envir", "--from", "1", "--to", "8", "--timeout", "0,60"});
  EXPECT_EQ(result.status, 0) << result.err;
  EXPECT_THAT(result.out, HasSubstr("address 1: envir, "));
  EXPECT_THAT(result.out, HasSubstr("device 1 answered a request to device 8"));
  EXPECT_THAT(result.err, HasSubstr("every address answers"));
  EXPECT_THAT(result.err, HasSubstr(", 1 found"));

  result = Scan(line, {"envir", "--from", "8", "--to", "8", "--timeout", "0,20000", "--any-address"});
  EXPECT_THAT(result.out, HasSubstr("address 8: envir, "));
  EXPECT_THAT(result.err, HasSubstr("warning: device 1 answered a request to device 8"));
}

TEST(Scan, EndsOnCtrlCWithWhatWasFound) {
  sim::Line line(kAnySpeed);
  line.Add(test::MakeDevice("envir", 1));
  ASSERT_TRUE(line.Start());
  ToolProcess tool({"scan", "envir", "--port", line.Path() + ":9600,n,8,1", "--timeout", "0,2000"});
  ASSERT_TRUE(tool.WaitForOutput("address 1: envir, "));
  tool.Interrupt();
  const ToolResult result = tool.Finish();
  EXPECT_EQ(result.status, 0);
  EXPECT_THAT(result.err, HasSubstr("interrupted: "));
  EXPECT_THAT(result.err, HasSubstr(", 1 found\n"));
}

}  // namespace
}  // namespace fieldline
