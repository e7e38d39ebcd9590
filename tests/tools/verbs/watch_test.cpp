#include <map>

#include "tests/support/temp_directory.h"
#include "tests/tools/simulated_line.h"
#include "tests/tools/tool_process.h"
#include "tools/output/watch_table.h"

namespace fieldline::test {
namespace {

// A line of a site file.
std::string Line(const std::string& name, const std::string& path, const std::string& devices) {
  return '"' + name + R"(": {"path": ")" + path + R"(", "settings": "2400,n,8,1", "timeout": "0,5000", "devices": {)" +
         devices + "}}";
}

std::string Probe(const std::string& name, int address, const std::string& interval) {
  return '"' + name + R"(": {"kind": "envir", "address": )" + std::to_string(address) + R"(, "interval": )" + interval +
         R"(, "scale": {"register_1": {"factor": 10, "unit": "°C"}}})";
}

TEST(Watch, PollsEveryDeviceOfEveryLine) {
  SimulatedLine probes;
  probes.Add("envir", 1).values().PutNumber("temperature", 11.5);
  probes.Add("envir", 2).values().PutNumber("temperature", 21.5);
  SimulatedLine more_probes;
  more_probes.Add("envir", 1).values().PutNumber("temperature", 31.5);
  ASSERT_TRUE(probes.Start() && more_probes.Start());
  const TempDirectory directory;
  directory.WriteFile("inputs", "\x05");
  directory.WriteFile("site.json",
                      R"({"lines": {)" + Line("A", probes.Path(), Probe("a1", 1, "0") + ", " + Probe("a2", 2, "0")) +
                          ", " + Line("B", more_probes.Path(), Probe("b1", 1, "0")) + ", " +
                          Line("C", directory.Path("absent"), Probe("c1", 1, "0")) + R"(, "EIO1": {"path": ")" +
                          directory.Path("inputs") + R"(", "devices": {"own": {"kind": "di", "interval": 0}}}}})");
  const ToolResult result =
      ExpectTool("watch --count 3 " + directory.Path("site.json"), 3, "", "a2: 3 polls, 3 good, 0 failed");
  EXPECT_THAT(result.err, HasSubstr("c1: 3 polls, 0 good, 3 failed (3 line_absent)"));
  std::map<std::string, int> polls;
  for (const json& poll : Lines(result.out)) {
    const std::string device = poll["device"];
    ++polls[device];
    EXPECT_EQ(poll["schema"], 1);
    if (device == "c1") {
      EXPECT_EQ(poll["error"]["code"], "line_absent");
    } else if (device == "own") {
      EXPECT_EQ(poll["record"]["input_3"], 4);
    } else {
      // Read while the other line used the same driver.
      const double expected = device == "a1" ? 11.5 : device == "a2" ? 21.5 : 31.5;
      EXPECT_EQ(poll["line"], device == "b1" ? "B" : "A");
      EXPECT_EQ(poll["address"], device == "a2" ? 2 : 1);
      EXPECT_EQ(poll["record"]["register_1"], expected * 10);
      EXPECT_EQ(poll["physical"]["register_1"]["value"], expected);
      EXPECT_EQ(poll["physical"]["register_1"]["unit"], "°C");
    }
  }
  for (const char* device : {"a1", "a2", "b1", "c1", "own"}) EXPECT_EQ(polls[device], 3) << device;
}

TEST(Watch, ReopensALineThatWasGone) {
  const TempDirectory directory;
  const std::string link = directory.Path("line");
  SimulatedLine line;
  sim::Device& probe = line.Add("envir", 1);
  ASSERT_TRUE(line.Start());
  std::filesystem::create_symlink(line.Path(), link);
  directory.WriteFile("site.json", R"({"lines": {)" + Line("A", link, Probe("p", 1, R"("3600s")")) + "}}");
  ToolProcess watch("watch " + directory.Path("site.json"));
  ASSERT_TRUE(watch.WaitForOutput("\"ok\":true"));
  line.Stop();
  std::filesystem::remove(link);
  ASSERT_TRUE(watch.WaitForOutput("line_absent"));
  probe.values().PutNumber("temperature", 30);
  ASSERT_TRUE(line.Start());
  std::filesystem::create_symlink(line.Path(), link);
  ASSERT_TRUE(watch.WaitForOutput("\"register_1\":300"));
  watch.Interrupt();
  const ToolResult result = watch.Finish();
  EXPECT_EQ(result.status, 3);
  EXPECT_THAT(result.err, HasSubstr(" 2 good, "));
}

TEST(Watch, DrawsReadingsAsBars) {
  EXPECT_EQ(tool::Sparkline({1, {}, 8, 4.5}), "▁·█▅");
  EXPECT_EQ(tool::Sparkline({7, 7}), "▁▁");
  EXPECT_EQ(tool::Clipped("21 °C", 4), "21 °");
  EXPECT_EQ(tool::Clipped("21 °C", 80), "21 °C");
}

TEST(Watch, TurnsThePagesOfATableThatIsTooHigh) {
  using Table = std::vector<std::string>;
  const Table table = {"head", "a", "b", "c", "d", "e"};
  EXPECT_EQ(tool::OnePage(table, 7, std::chrono::seconds(0)), table);
  EXPECT_EQ(tool::OnePage(table, 6, std::chrono::seconds(4)), (Table{"head", "a", "b", "c", "page 1 of 2"}));
  EXPECT_EQ(tool::OnePage(table, 6, std::chrono::seconds(5)), (Table{"head", "d", "e", "page 2 of 2"}));
  EXPECT_EQ(tool::OnePage(table, 6, std::chrono::seconds(10)), (Table{"head", "a", "b", "c", "page 1 of 2"}));
  EXPECT_EQ(tool::OnePage(table, 1, std::chrono::seconds(5)), (Table{"head", "b", "page 2 of 5"}));
}

}  // namespace
}  // namespace fieldline::test
