#include <algorithm>

#include "tests/tools/simulated_line.h"
#include "tests/tools/tool_process.h"

namespace fieldline::test {
namespace {

std::string Scan(const SimulatedLine& line, const std::string& words) {
  return "scan --port " + line.Path() + ":9600,n,8,1 " + words;
}

TEST(Scan, FindsDevicesByAddressAndKind) {
  SimulatedLine line;
  line.Add("envir", 3);
  line.Add("onoff", 5);
  ASSERT_TRUE(line.Start());
  const std::string words = "envir onoff --from 3 --to 5 --timeout 0,500 --json";
  const std::vector<json> found = Lines(ExpectTool(Scan(line, words), 0, "", "3 addresses probed on ").out);
  ASSERT_EQ(found.size(), 2u);
  EXPECT_EQ(found[0]["kind"], "envir");
  EXPECT_EQ(found[0]["address"], 3);
  EXPECT_EQ(found[0]["ok"], true);
  EXPECT_EQ(found[1]["kind"], "onoff");
  EXPECT_EQ(found[1]["address"], 5);
  EXPECT_EQ(found[1]["reply_bytes"], 17);
  EXPECT_EQ(found[1]["standard_bytes"], 29);
}

TEST(Scan, SaysWhenNothingAnswersAndWhatCantBeScanned) {
  SimulatedLine line;
  ASSERT_TRUE(line.Start());
  const ToolResult result = RunTool(Scan(line, "envir battery --from 1 --to 2 --timeout 0,5 --quiet"));
  EXPECT_EQ(result.status, 4);
  EXPECT_EQ(result.out + result.err, "");
  ExpectTool(Scan(line, "ups"), 2, "", "ups has no address to scan for");
  ExpectTool(Scan(line, "--from 9 --to 3"), 2, "");
}

TEST(Scan, WarnsOfAnEchoAndEnds) {
  SimulatedLine line;
  line.Add(std::make_unique<Parrot>());
  ASSERT_TRUE(line.Start());
  const ToolResult result = ExpectTool(Scan(line, "envir --timeout 0,500"), 5, "", "every address echoes the request");
  EXPECT_EQ(std::ranges::count(result.out, '\n'), 3) << result.out;
}

TEST(Scan, WarnsOfADeviceThatAnswersToAnyAddress) {
  SimulatedLine line;
  line.Add(std::make_unique<Parrot>(Hex("01 03 04 01 23 FE DC 4B FC")));
  ASSERT_TRUE(line.Start());
  const ToolResult result =
      ExpectTool(Scan(line, "envir --from 1 --to 8 --timeout 0,60"), 0, "address 1: envir, ", "every address answers");
  EXPECT_THAT(result.out, HasSubstr("device 1 answered a request to device 8"));
  EXPECT_THAT(result.err, HasSubstr(", 1 found"));
  ExpectTool(Scan(line, "envir --from 8 --to 8 --timeout 0,20000 --any-address"), 0, "address 8: envir, ",
             "warning: device 1 answered a request to device 8");
}

TEST(Scan, EndsOnCtrlCWithWhatWasFound) {
  const SimulatedLine line("envir");
  ToolProcess tool(Scan(line, "envir --timeout 0,2000"));
  ASSERT_TRUE(tool.WaitForOutput("address 1: envir, "));
  tool.Interrupt();
  const ToolResult result = tool.Finish();
  EXPECT_EQ(result.status, 1);
  EXPECT_THAT(result.err, HasSubstr("interrupted: "));
  EXPECT_THAT(result.err, HasSubstr(", 1 found\n"));
}

}  // namespace
}  // namespace fieldline::test
