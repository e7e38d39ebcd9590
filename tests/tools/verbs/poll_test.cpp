
#include "fieldline/platform/serial_device.h"
#include "tests/support/temp_directory.h"
#include "tests/tools/simulated_line.h"
#include "tests/tools/tool_process.h"

namespace fieldline::test {
namespace {

TEST(Poll, ShowsTheRecordAndATrace) {
  const SimulatedLine line("envir");
  // Without '=' the word after --trace is a separate argument.
  const ToolResult result = ExpectTool("poll --trace envir" + (kPatiently + line.Path()), 0,
                                       "\n  register_1  235\n  register_0  450\n", " -> 01 03 00 00 00 02 C4 0B\n");
  EXPECT_THAT(result.out, StartsWith("envir at address 1 on " + line.Path() + ":2400,n,8,1, "));
  EXPECT_THAT(result.err, HasSubstr(" device 1: function 3 (read holding registers) from 0, count 2, CRC good\n"));
  EXPECT_THAT(result.err, HasSubstr(" <- 01 03 04 01 C2 00 EB 1A 7C\n"));

  const TempDirectory directory;
  const std::string poll = "poll envir" + (kPatiently + line.Path()) + " --trace=";
  EXPECT_EQ(ExpectTool(poll + directory.Path("trace"), 0, "").err, "");
  EXPECT_THAT(directory.ReadFile("trace"), HasSubstr(", 4 bytes, CRC good\n"));
  ExpectTool(poll + directory.Path("no/trace"), 2, "");
}

TEST(Poll, JsonHoldsEachFieldUnderItsName) {
  const SimulatedLine emerson("emerson");
  const ToolResult result = ExpectTool("poll emerson --json --count 2 --interval 0" + (kPatiently + emerson.Path()), 0,
                                       "", "2 polls, 2 good, 0 failed; ");
  const json poll = Lines(result.out).at(0);
  EXPECT_EQ(poll["schema"], 1);
  EXPECT_EQ(poll["kind"], "emerson");
  EXPECT_EQ(poll["address"], 1);
  EXPECT_EQ(poll["port"], emerson.Path() + ":9600,n,8,1");
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
  const SimulatedLine ups("ups");
  const json poll = json::parse(ExpectTool("poll ups --json --timeout 0,400 --port " + ups.Path(), 0, "").out);
  EXPECT_EQ(poll["record"]["battery_voltage"], 273);
  EXPECT_EQ(poll["physical"]["battery_voltage"], json::parse(R"({"value": 27.3, "unit": "V"})"));
  EXPECT_EQ(poll["record"]["maker"], "Fieldline");
}

TEST(Poll, FindsLinesByEveryKindOfName) {
  const SimulatedLine line("envir");
  const TempDirectory directory;
  const std::string name = directory.Path("pci-0000:00:14.0-usb-0:1:1.0-and-a-name-beyond-fifty-characters");
  std::filesystem::create_symlink(line.Path(), name);
  for (const std::string& option : {name, name + ":2400,N,8,1", "COM3 --map COM3:=" + name,
                                    "probe:2400,n,8,1 --map ESL1=/dev/null --map probe=" + name}) {
    ExpectTool("poll envir" + (kPatiently + option), 0, "");
  }
}

TEST(Poll, TellsApartWhyALineDoesNotOpen) {
  const SimulatedLine line("envir");
  SerialDevice other;
  const std::string path = line.Path() + ':';
  ASSERT_EQ(other.Open(std::wstring(path.begin(), path.end()).c_str()), SerialDevice::OpenResult::kOpened);
  const std::pair<std::string, const char*> cases[] = {
      {line.Path(),         "line_in_use"    },
      {"/dev/null",         "line_not_serial"},
      {"/dev/no-such-line", "line_absent"    },
  };
  for (const auto& [port, code] : cases) {
    const json poll = json::parse(ExpectTool("poll envir --json --port " + port, 3, "").out);
    EXPECT_EQ(poll["ok"], false);
    EXPECT_EQ(poll["error"]["code"], code) << poll;
  }
  other.Close();
}

TEST(Poll, TellsApartWhyAReplyIsRefused) {
  // The battery monitor's replies: ~200146000000 with its checksum FDB3 and a carriage return; then a wrong checksum, a
  // return code, and a length beyond what came.
  const std::tuple<const char*, const char*, const char*, const char*> cases[] = {
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
  std::vector<std::unique_ptr<SimulatedLine>> lines;
  std::vector<std::unique_ptr<ToolProcess>> tools;
  for (const auto& [kind, reply, code, message] : cases) {
    SimulatedLine& line = *lines.emplace_back(std::make_unique<SimulatedLine>());
    if (*reply != '\0') line.Add(std::make_unique<Parrot>(Hex(reply)));
    ASSERT_TRUE(line.Start());
    const std::string poll = "poll " + std::string(kind) + " --json --timeout 0,2000 --port " + line.Path();
    tools.push_back(std::make_unique<ToolProcess>(poll));
  }
  for (std::size_t i = 0; i < std::size(cases); ++i) {
    const auto& [kind, reply, code, message] = cases[i];
    const ToolResult result = tools[i]->Finish();
    EXPECT_EQ(result.status, *reply ? 5 : 4) << reply;
    const json error = json::parse(result.out)["error"];
    EXPECT_EQ(error["code"], code) << error;
    EXPECT_THAT(error["message"].get<std::string>(), HasSubstr(message));
    EXPECT_EQ(error["reply"], *reply ? json(reply) : json());
  }
}

TEST(Poll, EndsOnCtrlCWithStatistics) {
  const SimulatedLine line("envir");
  ToolProcess tool("poll envir --count 0 --interval 3600s" + (kPatiently + line.Path()));
  ASSERT_TRUE(tool.WaitForOutput("register_0"));
  tool.Interrupt();
  const ToolResult result = tool.Finish();
  EXPECT_EQ(result.status, 0);
  EXPECT_THAT(result.err, StartsWith("1 poll, 1 good, 0 failed; "));
}

TEST(Poll, TellsOfAPulledPlug) {
  SimulatedLine line("envir");
  ToolProcess tool("poll envir --count 0 --interval 10ms" + (kPatiently + line.Path()));
  ASSERT_TRUE(tool.WaitForOutput("register_0"));
  line.Stop();
  const ToolResult result = tool.Finish();
  EXPECT_EQ(result.status, 3);
  EXPECT_THAT(result.err, HasSubstr("the line is gone"));
  EXPECT_THAT(result.err, HasSubstr("1 failed (1 line_gone)"));
}

}  // namespace
}  // namespace fieldline::test
