#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "fieldline/platform/serial_device.h"
#include "tests/support/scripted_port.h"
#include "tests/support/temp_directory.h"
#include "tests/tools/simulated_line.h"
#include "tests/tools/tool_process.h"

namespace fieldline {
namespace {

using nlohmann::json;
using test::Hex;
using test::kAnySpeed;
using test::RunTool;
using test::StartDevice;
using test::ToolProcess;
using test::ToolResult;
using testing::EndsWith;
using testing::HasSubstr;
using testing::StartsWith;

// Read time-outs of 0,20000 are for replies that come whole, and shorter ones for those that are waited for in vain.

TEST(Poll, ShowsTheRecord) {
  const auto line = StartDevice("envir");
  const ToolResult result = RunTool("poll envir --timeout 0,20000 --trace --port " + line->Path());
  EXPECT_EQ(result.status, 0) << result.err;
  EXPECT_THAT(result.out, StartsWith("envir at address 1 on " + line->Path() + ":2400,n,8,1, "));
  EXPECT_THAT(result.out, EndsWith("\n  register_1  235\n  register_0  450\n"));
  EXPECT_THAT(result.err, HasSubstr(" -> 01 03 00 00 00 02 C4 0B\n"));
  EXPECT_THAT(result.err, HasSubstr(" <- 01 03 04 01 C2 00 EB 1A 7C\n"));
}

TEST(Poll, JsonHoldsEachFieldUnderItsName) {
  const auto emerson = StartDevice("emerson");
  const ToolResult result =
      RunTool("poll emerson --json --count 2 --interval 0 --timeout 0,20000 --port " + emerson->Path());
  ASSERT_EQ(result.status, 0) << result.err;
  EXPECT_THAT(result.err, StartsWith("2 polls, 2 good, 0 failed; "));
  const json poll = json::parse(result.out.substr(0, result.out.find('\n')));
  EXPECT_EQ(poll["schema"], 1);
  EXPECT_EQ(poll["kind"], "emerson");
  EXPECT_EQ(poll["address"], 1);
  EXPECT_EQ(poll["port"], emerson->Path() + ":9600,n,8,1");
  EXPECT_EQ(poll["ok"], true);
  EXPECT_GT(poll["duration_ms"], 0);
  EXPECT_THAT(poll["time"], testing::ContainsRegex("^20..-..-..T..:..:..\\....Z$"));
  // The simulated unit's register n holds 10 n.
  const json& record = poll["record"];
  EXPECT_EQ(record.size(), 92u + 109u);
  for (const auto& [name, value] : record.items()) {
    const int number = std::stoi(name.substr(name.find('_') + 1));
    EXPECT_EQ(value, name.starts_with("register_") ? 10 * number : 0) << name;
  }
}

TEST(Poll, ShowsPhysicalValuesAndTexts) {
  const auto ups = StartDevice("ups");
  const ToolResult result = RunTool("poll ups --json --timeout 0,1000 --port " + ups->Path());
  ASSERT_EQ(result.status, 0) << result.out;
  const json poll = json::parse(result.out);
  EXPECT_EQ(poll["record"]["battery_voltage"], 273);
  EXPECT_EQ(poll["physical"]["battery_voltage"], json::parse(R"({"value": 27.3, "unit": "V"})"));
  EXPECT_EQ(poll["record"]["maker"], "Fieldline");
  EXPECT_EQ(poll["record"]["version"], "1.0");
}

TEST(Poll, ReadsTheUnitsOwnInputs) {
  const TempDirectory directory;
  directory.WriteFile("inputs", "\x81");
  const std::string poll = "poll di --map EIO1=" + directory.Path("inputs");
  ToolResult result = RunTool(poll);
  EXPECT_EQ(result.status, 0) << result.err;
  EXPECT_THAT(result.out, EndsWith("\n  input_1..8  1 0 0 0 0 0 0 128\n"));
  std::filesystem::remove(directory.Path("inputs"));
  result = RunTool(poll);
  EXPECT_EQ(result.status, 3);
  EXPECT_THAT(result.err, HasSubstr("EIO1: can't be read"));
}

TEST(Poll, FindsLinesByEveryKindOfName) {
  const auto line = StartDevice("envir");
  const TempDirectory directory;
  const std::string name = directory.Path("pci-0000:00:14.0-usb-0:1:1.0-and-a-name-beyond-fifty-characters");
  std::filesystem::create_symlink(line->Path(), name);
  const std::string options[] = {
      name,
      name + ":2400,N,8,1",
      "COM3 --map COM3:=" + name,
      "probe:2400,n,8,1 --map ESL1=/dev/null --map probe=" + name,
  };
  for (const std::string& option : options) {
    const ToolResult result = RunTool("poll envir --timeout 0,20000 --port " + option);
    EXPECT_EQ(result.status, 0) << option << ": " << result.err;
  }
}

TEST(Poll, TellsApartWhyALineDoesNotOpen) {
  const auto line = StartDevice("envir");
  SerialDevice other;
  const std::string path = line->Path() + ':';
  ASSERT_EQ(other.Open(std::wstring(path.begin(), path.end()).c_str()), SerialDevice::OpenResult::kOpened);
  const struct {
    std::string port;
    std::string code;
  } cases[] = {
      {line->Path(),        "line_in_use"    },
      {"/dev/null",         "line_not_serial"},
      {"/dev/no-such-line", "line_absent"    },
  };
  for (const auto& c : cases) {
    const ToolResult result = RunTool("poll envir --json --port " + c.port);
    EXPECT_EQ(result.status, 3) << c.port;
    const json poll = json::parse(result.out);
    EXPECT_EQ(poll["ok"], false);
    EXPECT_EQ(poll["error"]["code"], c.code) << poll;
  }
  other.Close();
}

TEST(Poll, TellsApartWhyAReplyIsRefused) {
  // The battery monitor's replies: ~200146000000 with its checksum FDB3 and a carriage return; then a wrong checksum, a
  // return code, and a length beyond what came.
  const struct {
    const char* kind;
    const char* reply;
    const char* code;
    const char* message;
  } cases[] = {
      {"envir",   "",                                                      "no_answer",        "nothing answered "    },
      {"envir",   "01 03 04 01 23",                                        "short_reply",      "5 of 9 bytes came"    },
      {"envir",   "01 03 04 01 23 FE DC FC 4B",                            "checksum",         "came where 4B FC"     },
      {"envir",   "01 83 02 C0 F1",                                        "modbus_exception", "illegal data address" },
      {"envir",   "01 03 00 00 00 02 C4 0B",                               "echo",             "the request came back"},
      {"envir",   "01 03 02 00 64 B9 AF",                                  "reply_length",     "whole reply of 7"     },
      {"onoff",   "01 04 0C 01 00 00 01 00 00 00 00 00 00 00 01 A4 25",    "checksum",         "came where A4 24"     },
      {"ups",     "28 32 0D",                                              "reply_format",     "\"(2\""               },
      {"ups",     "28 32",                                                 "short_reply",      "without the carriage" },
      {"battery", "7E 32 30 30 31 34 36 30 30 30 30 30 30 46 44 42 33 0D", "reply_length",     "reply of 18 bytes"    },
      {"battery", "7E 32 30 30 31 34 36 30 30 30 30 30 30 46 44 42 37 0D", "checksum",         "came where FDB3"      },
      {"battery", "7E 32 30 30 31 34 36 30 34 30 30 30 30 46 44 42 32 0D", "device_refused",   "(unknown command)"    },
      {"battery", "7E 32 30 30 31 34 36 30 30 45 30 30 32 46 44 42 36 0D", "short_reply",      "18 of 20 bytes came"  },
      {"battery", "0D 0D",                                                 "reply_start",      "and not with 7E"      },
  };
  // All at once, since a reply that is too short is waited for.
  std::vector<std::unique_ptr<sim::Line>> lines;
  std::vector<std::unique_ptr<ToolProcess>> tools;
  for (const auto& c : cases) {
    sim::Line& line = *lines.emplace_back(std::make_unique<sim::Line>(kAnySpeed));
    if (*c.reply != '\0') line.Add(std::make_unique<test::Parrot>(Hex(c.reply)));
    ASSERT_TRUE(line.Start());
    const std::string poll = "poll " + std::string(c.kind) + " --json --timeout 0,2000 --port " + line.Path();
    tools.push_back(std::make_unique<ToolProcess>(poll));
  }
  for (std::size_t i = 0; i < std::size(cases); ++i) {
    const ToolResult result = tools[i]->Finish();
    EXPECT_EQ(result.status, *cases[i].reply ? 5 : 4) << cases[i].reply;
    const json error = json::parse(result.out)["error"];
    EXPECT_EQ(error["code"], cases[i].code) << error;
    EXPECT_THAT(error["message"].get<std::string>(), HasSubstr(cases[i].message));
    EXPECT_EQ(error["reply"], *cases[i].reply ? json(cases[i].reply) : json());
  }
}

TEST(Poll, CountsWhatSucceedsAndWhatFails) {
  const auto line = StartDevice("envir", sim::Faults(1, {
                                                            {.fault = sim::Fault::kDrop, .every = 2}
  }));
  const ToolResult result = RunTool("poll envir --count 3 --interval 1ms --timeout 0,1000 --port " + line->Path());
  EXPECT_EQ(result.status, 1);
  EXPECT_THAT(result.err, HasSubstr("fieldline: envir at address 1: nothing answered within "));
  EXPECT_THAT(result.err, HasSubstr("3 polls, 2 good, 1 failed (1 no_answer); "));
}

TEST(Poll, EndsOnCtrlCWithStatistics) {
  const auto line = StartDevice("envir");
  ToolProcess tool("poll envir --count 0 --interval 3600s --timeout 0,20000 --port " + line->Path());
  ASSERT_TRUE(tool.WaitForOutput("register_0"));
  tool.Interrupt();
  const ToolResult result = tool.Finish();
  EXPECT_EQ(result.status, 0);
  EXPECT_THAT(result.err, StartsWith("1 poll, 1 good, 0 failed; "));
}

TEST(Poll, TellsOfAPulledPlug) {
  const auto line = StartDevice("envir");
  ToolProcess tool("poll envir --count 0 --interval 10ms --timeout 0,20000 --port " + line->Path());
  ASSERT_TRUE(tool.WaitForOutput("register_0"));
  line->Stop();
  const ToolResult result = tool.Finish();
  EXPECT_EQ(result.status, 3);
  EXPECT_THAT(result.err, HasSubstr("the line vanished"));
  EXPECT_THAT(result.err, HasSubstr("1 failed (1 line_gone)"));
}

}  // namespace
}  // namespace fieldline
