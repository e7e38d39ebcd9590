#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <map>
#include <nlohmann/json.hpp>
#include <sstream>
#include <string>
#include <vector>

#include "tests/support/temp_directory.h"
#include "tests/tools/simulated_line.h"
#include "tests/tools/tool_process.h"
#include "tools/output/watch_table.h"

namespace fieldline {
namespace {

using nlohmann::json;
using test::kAnySpeed;
using test::ToolProcess;
using test::ToolResult;
using testing::HasSubstr;

std::vector<json> Lines(const std::string& text) {
  std::vector<json> lines;
  std::istringstream stream(text);
  for (std::string line; std::getline(stream, line);) lines.push_back(json::parse(line));
  return lines;
}

TEST(Watch, PollsEveryDeviceOfEveryLine) {
  const TempDirectory directory;
  sim::Line probes(kAnySpeed);
  probes.Add(test::MakeDevice("envir", 1)).values().PutNumber("temperature", 11.5);
  probes.Add(test::MakeDevice("envir", 2)).values().PutNumber("temperature", 21.5);
  sim::Line more_probes(kAnySpeed);
  more_probes.Add(test::MakeDevice("envir", 1)).values().PutNumber("temperature", 31.5);
  ASSERT_TRUE(probes.Start() && more_probes.Start());
  directory.WriteFile("inputs", "\x05");
  const auto probe = [](int address) {
    const json scale = {
        {"register_1", {{"factor", 10}, {"unit", "°C"}}}
    };
    return json{
        {"kind",     "envir"},
        {"address",  address},
        {"interval", 0      },
        {"scale",    scale  }
    };
  };
  const auto line = [](const std::string& path, const json& devices) {
    return json{
        {"path",     path        },
        {"settings", "2400,n,8,1"},
        {"timeout",  "0,5000"    },
        {"devices",  devices     }
    };
  };
  const json site = {
      {"lines",
       {{"A", line(probes.Path(), {{"a1", probe(1)}, {"a2", probe(2)}})},
        {"B", line(more_probes.Path(), {{"b1", probe(1)}})},
        {"C", line(directory.Path("absent"), {{"c1", probe(1)}})},
        {"EIO1", {{"path", directory.Path("inputs")}, {"devices", {{"own", {{"kind", "di"}, {"interval", 0}}}}}}}}}
  };
  directory.WriteFile("site.json", site.dump());
  const ToolResult result = test::RunTool("watch --count 3 " + directory.Path("site.json"));

  EXPECT_EQ(result.status, 3);
  EXPECT_THAT(result.err, HasSubstr("a2: 3 polls, 3 good, 0 failed"));
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
      EXPECT_EQ(poll["physical"]["register_1"], json({
                                                    {"value", expected},
                                                    {"unit",  "°C"   }
      }));
    }
  }
  EXPECT_EQ(polls, (std::map<std::string, int>{
                       {"a1",  3},
                       {"a2",  3},
                       {"b1",  3},
                       {"c1",  3},
                       {"own", 3}
  }));
}

TEST(Watch, ReopensALineThatVanished) {
  const TempDirectory directory;
  const std::string link = directory.Path("line");
  sim::Line line(kAnySpeed);
  sim::Device& probe = line.Add(test::MakeDevice("envir", 1));
  ASSERT_TRUE(line.Start());
  std::filesystem::create_symlink(line.Path(), link);
  const json device = {
      {"kind",     "envir"},
      {"interval", "3600s"}
  };
  const json site = {
      {"lines",
       {{"A", {{"path", link}, {"settings", "2400,n,8,1"}, {"timeout", "0,5000"}, {"devices", {{"p", device}}}}}}}
  };
  directory.WriteFile("site.json", site.dump());
  ToolProcess watch({"watch", directory.Path("site.json")});
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
  using Lines = std::vector<std::string>;
  const Lines table = {"head", "a", "b", "c", "d", "e"};
  EXPECT_EQ(tool::OnePage(table, 7, std::chrono::seconds(0)), table);
  EXPECT_EQ(tool::OnePage(table, 6, std::chrono::seconds(4)), (Lines{"head", "a", "b", "c", "page 1 of 2"}));
  EXPECT_EQ(tool::OnePage(table, 6, std::chrono::seconds(5)), (Lines{"head", "d", "e", "page 2 of 2"}));
  EXPECT_EQ(tool::OnePage(table, 6, std::chrono::seconds(10)), (Lines{"head", "a", "b", "c", "page 1 of 2"}));
  EXPECT_EQ(tool::OnePage(table, 1, std::chrono::seconds(5)), (Lines{"head", "b", "page 2 of 5"}));
}

}  // namespace
}  // namespace fieldline
