
#include "tests/support/temp_directory.h"
#include "tests/tools/tool_process.h"
#include "tools/simulation/scenario_file.h"

namespace fieldline::test {
namespace {

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
  ToolProcess sim("sim --links " + links + " --scenario " + directory.Path("scenario.json"));
  ASSERT_TRUE(sim.WaitForOutput("poll di --map EIO1=" + links + "/EIO1\n"));
  EXPECT_THAT(sim.output(), HasSubstr("seed 42\n"));
  EXPECT_THAT(sim.output(), HasSubstr("fieldline poll elec --address 1 --port " + links + "/ESL3:9600,n,8,1\n"));
  ASSERT_TRUE(sim.WaitForOutput("0.5 s  a cable is torn off\n  ESL1 is unplugged\n"));
  ASSERT_TRUE(sim.WaitForOutput("2.0 s  the line comes back\n  ESL1 is /dev/pts/"));
  ExpectTool("poll envir --address 3" + (kPatiently + links) + "/ESL1:2400,n,8,1", 0, "register_1  185\n");
  ExpectTool("poll elec --address 1 --timeout 0,1000 --port " + links + "/ESL3", 0, " 4000\n");
  ExpectTool("poll elec --address 9 --timeout 0,200 --port " + links + "/ESL3", 4, "");
  ExpectTool("poll envir --address 3 --timeout 0,400 --port " + links + "/ESL1:19200,n,8,1", 4, "");
  ExpectTool("poll di --map EIO1=" + links + "/EIO1", 0, " 0 0 4 0 0 0 0 0\n");
  sim.Interrupt();
  EXPECT_EQ(sim.Finish().status, 0);
  EXPECT_FALSE(std::filesystem::exists(links));
}

TEST(SimulatedRoom, StartsNothingThatIsWrongInPart) {
  const std::pair<const char*, const char*> cases[] = {
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
      {R"({"faults": {"ESL1": [{"fault": "drop", "delay": 5}]}})",
       "/0/delay: only the faults \"delay\" and \"deaf\" have a time"                                                       },
  };
  const TempDirectory directory;
  const std::string file = directory.Path("scenario.json");
  const std::string links = directory.Path("links");
  for (const auto& [scenario, message] : cases) {
    directory.WriteFile("scenario.json", scenario);
    const ToolResult result = ExpectTool("sim --all --links " + links + " --scenario " + file, 2, "", message);
    EXPECT_THAT(result.err, HasSubstr(file + ": ")) << scenario;
    EXPECT_EQ(result.out, "") << scenario;
    EXPECT_FALSE(std::filesystem::exists(links)) << scenario;
  }
  for (const std::string shipped : {"quiet-day.json", "bad-night.json"}) {
    EXPECT_NO_THROW(tool::ReadScenario(FIELDLINE_EXAMPLES "/scenarios/" + shipped, sim::MachineRoom()));
  }
  directory.WriteFile("COM3", "not ours");
  ExpectTool("sim --links " + directory.Path().string(), 2, "", "COM3\" exists, and no simulator made it");
  EXPECT_EQ(directory.ReadFile("COM3"), "not ours");
}

}  // namespace
}  // namespace fieldline::test
