#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <vector>

#include "tests/support/temp_directory.h"
#include "tests/tools/tool_process.h"
#include "tools/simulation/scenario_file.h"

namespace fieldline {
namespace {

using test::RunTool;
using test::ToolProcess;
using test::ToolResult;
using testing::HasSubstr;

TEST(SimulatedRoom, IsReachedThroughLinksThatStay) {
  const TempDirectory directory;
  directory.WriteFile("scenario.json", R"({
    "seed": 42,
    "set": {"battery-room": {"temperature": 18.5}, "mains": {"q1_total": 4000}},
    "events": [
      {"at": "2s", "note": "the line comes back", "replug": ["ESL1"], "set": {"inputs": {"input_3": 1}}},
      {"at": 500, "note": "a cable is torn off", "unplug": ["ESL1"]}
    ]})");
  const std::string links = directory.Path("links");
  ToolProcess sim({"sim", "--links", links, "--scenario", directory.Path("scenario.json")});
  ASSERT_TRUE(sim.WaitForOutput("poll di --map EIO1=" + links + "/EIO1\n"));
  EXPECT_THAT(sim.output(), HasSubstr("seed 42\n"));
  EXPECT_THAT(sim.output(), HasSubstr("fieldline poll elec --address 1 --port " + links + "/ESL3:9600,n,8,1\n"));
  ASSERT_TRUE(sim.WaitForOutput("0.5 s  a cable is torn off\n  ESL1 is unplugged\n"));
  ASSERT_TRUE(sim.WaitForOutput("2.0 s  the line comes back\n  ESL1 is /dev/pts/"));

  const auto poll = [&](const char* kind, const char* address, const std::string& line) {
    return RunTool({"poll", kind, "--address", address, "--port", links + line, "--timeout", "0,1500"});
  };
  EXPECT_THAT(poll("envir", "3", "/ESL1:2400,n,8,1").out, HasSubstr("register_1  185\n"));
  EXPECT_THAT(poll("elec", "1", "/ESL3").out, HasSubstr(" 4000\n"));
  EXPECT_EQ(poll("elec", "9", "/ESL3").status, 4);
  EXPECT_EQ(poll("elec", "1", "/ESL3:19200,n,8,1").status, 4);
  EXPECT_THAT(RunTool({"poll", "di", "--map", "EIO1=" + links + "/EIO1"}).out, HasSubstr(" 0 0 4 0 0 0 0 0\n"));

  sim.Interrupt();
  EXPECT_EQ(sim.Finish().status, 0);
  EXPECT_FALSE(std::filesystem::exists(links));
}

TEST(SimulatedRoom, StartsNothingThatIsWrongInPart) {
  const struct {
    const char* scenario;
    const char* message;
  } cases[] = {
      {"{\"seed\": 1,\n \"drift\": tru }",                         "parse error at line 2, column 14"                       },
      {R"({"seed": 1, "seed": 2})",                                "duplicate key \"seed\""                                 },
      {R"([])",                                                    ": /: an object is needed, not []"                       },
      {R"({"evnts": []})",                                         ": /evnts: there is no such key; the keys are seed, "    },
      {R"({"seed": 1.5})",                                         ": /seed: a whole number from 0 to "                     },
      {R"({"set": {"moon": {}}})",                                 ": /set/moon: there is no such device; there are cold-"  },
      {R"({"set": {"floor": {"heat": 1}}})",                       ": /set/floor/heat: no value 'heat'; expected one of: "  },
      {R"({"set": {"floor": {"leak": 4}}})",                       ": /set/floor/leak: leak: '4' is not a number from 0 to "},
      {R"({"events": [{"at": 1}, {}]})",                           ": /events/1: \"at\" is missing"                         },
      {R"({"events": [{"at": "soon"}]})",                          ": /events/0/at: a time (milliseconds, or 250ms, 5s"     },
      {R"({"events": [{"at": 1, "unplug": ["EIO1"]}]})",           ": /events/0/unplug/0: there is no serial line \"EIO1\"" },
      {R"({"faults": {"ESL1": [{"fault": "melt"}]}})",             ": /faults/ESL1/0/fault: drop, corrupt, truncate, "      },
      {R"({"faults": {"ESL1": [{"fault": "drop", "delay": 5}]}})", "/0/delay: only the fault \"delay\" has a time"          },
  };
  const TempDirectory directory;
  const std::string file = directory.Path("scenario.json");
  const std::string links = directory.Path("links");
  for (const auto& c : cases) {
    directory.WriteFile("scenario.json", c.scenario);
    const ToolResult result = RunTool({"sim", "--all", "--links", links, "--scenario", file});
    EXPECT_EQ(result.status, 2) << c.scenario;
    EXPECT_EQ(result.out, "") << c.scenario;
    EXPECT_THAT(result.err, HasSubstr(file + ": ")) << c.scenario;
    EXPECT_THAT(result.err, HasSubstr(c.message)) << c.scenario;
    EXPECT_FALSE(std::filesystem::exists(links)) << c.scenario;
  }
  for (const char* shipped : {"quiet-day.json", "bad-night.json"}) {
    EXPECT_NO_THROW(tool::ReadScenario(FIELDLINE_EXAMPLES "/scenarios/" + std::string(shipped), sim::MachineRoom()));
  }
  directory.WriteFile("COM3", "not ours");
  const ToolResult result = RunTool({"sim", "--links", directory.Path().string()});
  EXPECT_EQ(result.status, 2);
  EXPECT_THAT(result.err, HasSubstr("COM3\" exists, and no simulator made it"));
  EXPECT_EQ(directory.ReadFile("COM3"), "not ours");
}

}  // namespace
}  // namespace fieldline
