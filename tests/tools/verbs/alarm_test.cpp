#include <latch>

#include "sim/devices/alarm/alarm_board.h"
#include "sim/devices/display/display.h"
#include "tests/support/temp_directory.h"
#include "tests/tools/simulated_line.h"
#include "tests/tools/tool_process.h"

namespace fieldline::test {
namespace {

ToolResult RunOn(const char* verb, std::vector<std::string> arguments, const sim::Line& line) {
  arguments.insert(arguments.begin(), {verb, "--timeout", "0,20000", "--port", line.Path()});
  return RunTool(arguments);
}

class AlarmVerb : public testing::Test {
 protected:
  AlarmVerb() { EXPECT_TRUE(line_.Start()); }

  SimulatedLine line_;
  sim::AlarmBoard& board_ = line_.Add(std::make_unique<sim::AlarmBoard>());
};

TEST_F(AlarmVerb, EachOperationReachesTheBoard) {
  board_.values().PutNumber("signal_quality", 200);
  board_.values().PutNumber("inputs", 4060108408);
  board_.values().PutNumber("sms_result", 7);
  const TempDirectory directory;
  directory.WriteFile("check", "123456789");
  const std::pair<std::vector<std::string>, const char*> cases[] = {
      {{"id"},                                        R"({"id": "41 42 30 31"})"                                                      },
      {{"status"},                                    R"({"status": "00 00 00 00"})"                                                  },
      {{"signal"},                                    R"({"signal_quality": 200})"                                                    },
      {{"requests"},                                  R"({"requests": "00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00"})"},
      {{"inputs"},                                    R"({"inputs": 4060108408})"                                                     },
      {{"relay", "3", "1"},                           "{}"                                                                            },
      {{"sms", "5550100", "Door open"},               R"({"result": 7})"                                                              },
      {{"mms", "Door open", directory.Path("check")}, R"({"bytes": 9})"                                                               },
      {{"dial", "5550100", "Fire"},                   "{}"                                                                            },
      {{"speak", "Water"},                            "{}"                                                                            },
      {{"set-text", "Smoke"},                         "{}"                                                                            },
      {{"clear-text"},                                "{}"                                                                            },
      {{"snapshot", "1"},                             "{}"                                                                            },
      {{"reset-gsm"},                                 "{}"                                                                            },
      {{"reset-pstn"},                                "{}"                                                                            },
  };
  for (auto [arguments, record] : cases) {
    const std::string operation = arguments[0];
    arguments.emplace_back("--json");
    const ToolResult result = RunOn("alarm", arguments, line_);
    ASSERT_EQ(result.status, 0) << operation << result.err;
    const json line = json::parse(result.out);
    EXPECT_EQ(line["operation"], operation);
    EXPECT_EQ(line["ok"], true);
    EXPECT_EQ(line["record"], json::parse(record)) << operation;
  }
  std::string outbox;
  for (const sim::AlarmMessage& message : board_.Outbox()) outbox += sim::ToText(message) + '\n';
  EXPECT_EQ(outbox,
            "relay 3 set to 1\n"
            "SMS \"5550100\" \"Door open\"\n"
            "MMS \"Door open\", 9 bytes, CRC-32 cbf43926\n"
            "call to 5550100: \"Fire\"\n"
            "speech: \"Water\"\n");
}

TEST_F(AlarmVerb, SaysWhyAnOperationFailed) {
  board_.values().PutNumber("mms_status", 9);
  const TempDirectory directory;
  directory.WriteFile("empty", "");
  const std::tuple<std::vector<std::string>, int, const char*> cases[] = {
      {{"mms", "text", directory.Path("empty")},              5, "the board refuses the MMS with status 9"       },
      {{"mms", "text", directory.Path("none")},               2, "can't be read"                                 },
      {{"mms", "text", directory.Path().string()},            2, "can't be read"                                 },
      {{"relay", "256", "1"},                                 2, "a number from 0 to 255"                        },
      {{"speak", std::string(506, 'x')},                      2, "507 bytes with the final zero; at most 506 fit"},
      {{"sms", std::string(250, '1'), std::string(255, 'x')}, 2, "NUMBER and TEXT together"                      },
      {{},                                                    2, "subcommand is required"                        },
  };
  for (const auto& [arguments, status, message] : cases) {
    const ToolResult result = RunOn("alarm", arguments, line_);
    EXPECT_EQ(result.status, status) << message;
    EXPECT_THAT(result.err, HasSubstr(message));
    EXPECT_EQ(result.out, "");
  }
  EXPECT_TRUE(board_.Outbox().empty());
  SimulatedLine silent;
  ASSERT_TRUE(silent.Start());
  ExpectTool("alarm id --timeout 0,50 --port " + silent.Path(), 4, "", "nothing answered");
}

TEST(DisplayVerb, ShowsWhatIsSent) {
  std::latch changes(4);  // outlives the line
  SimulatedLine line;
  sim::Display& display = line.Add(std::make_unique<sim::Display>());
  display.SetListener([&](sim::Display&) { changes.count_down(); });
  ASSERT_TRUE(line.Start());
  const std::string port = " --port " + line.Path();
  for (const char* words : {"set 0x1000 258", "set 1 -2", "page 3"}) {
    ExpectTool("display" + port + ' ' + words, 0, "");
  }
  EXPECT_EQ(RunOn("display", {"clock", "2024-05-17 13:45:09"}, line).status, 0);
  for (const char* time : {"2024-02-30 00:00:00", "2024-05-17 24:00:00", "1999-01-01 00:00:00", "now"}) {
    EXPECT_EQ(RunOn("display", {"clock", time}, line).status, 2) << time;
  }
  changes.wait();
  EXPECT_EQ(display.Screen(),
            "+--------------------------------------+\n"
            "| page 3   24-05-17 13:45:09, day 5    |\n"
            "| 0001  65534      -2  0xFFFE          |\n"
            "| 1000    258     258  0x0102          |\n"
            "+--------------------------------------+\n");
}

}  // namespace
}  // namespace fieldline::test
