#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <latch>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "sim/devices/alarm_board.h"
#include "sim/devices/display.h"
#include "tests/support/temp_directory.h"
#include "tests/tools/simulated_line.h"
#include "tests/tools/tool_process.h"

namespace fieldline {
namespace {

using nlohmann::json;
using test::kAnySpeed;
using test::ToolResult;
using testing::HasSubstr;

class BoardVerbTest : public testing::Test {
 protected:
  BoardVerbTest() {
    display_.SetListener([this](sim::Display&) { display_changes_.count_down(); });
    EXPECT_TRUE(board_line_.Start() && display_line_.Start());
  }

  static ToolResult Run(std::vector<std::string> arguments, const sim::Line& line,
                        const std::string& timeout = "0,20000") {
    arguments.insert(arguments.end(), {"--timeout", timeout, "--port", line.Path()});
    return test::RunTool(arguments);
  }

  void SetValue(const char* name, const char* value) {
    std::string error;
    EXPECT_TRUE(board_.values().Set(name, value, &error)) << error;
  }

  std::latch display_changes_{4};  // outlives the line

  sim::Line board_line_{kAnySpeed};
  sim::Line display_line_{kAnySpeed};
  sim::AlarmBoard& board_ = board_line_.Add(std::make_unique<sim::AlarmBoard>());
  sim::Display& display_ = display_line_.Add(std::make_unique<sim::Display>());
};

TEST_F(BoardVerbTest, EachAlarmOperationReachesTheBoard) {
  SetValue("signal_quality", "200");
  SetValue("inputs", "4060108408");
  SetValue("sms_result", "7");
  const TempDirectory directory;
  directory.WriteFile("check", "123456789");
  const struct {
    std::vector<std::string> arguments;
    const char* record;
  } cases[] = {
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
    arguments.insert(arguments.begin(), "alarm");
    arguments.emplace_back("--json");
    const ToolResult result = Run(arguments, board_line_);
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

TEST_F(BoardVerbTest, SaysWhyAnAlarmOperationFailed) {
  SetValue("mms_status", "9");
  const TempDirectory directory;
  directory.WriteFile("empty", "");
  const struct {
    std::vector<std::string> arguments;
    int status;
    const char* message;
  } cases[] = {
      {{"mms", "text", directory.Path("empty")},              5, "the board refuses the MMS with status 9"  },
      {{"mms", "text", directory.Path("none")},               2, "can't be read"                            },
      {{"mms", "text", directory.Path().string()},            2, "can't be read"                            },
      {{"relay", "256", "1"},                                 2, "a number from 0 to 255"                   },
      {{"speak", std::string(506, 'x')},                      2, "507 bytes with the final zero, and 506 go"},
      {{"sms", std::string(250, '1'), std::string(255, 'x')}, 2, "NUMBER and TEXT together"                 },
      {{},                                                    2, "subcommand is required"                   },
  };
  for (auto [arguments, status, message] : cases) {
    arguments.insert(arguments.begin(), "alarm");
    const ToolResult result = Run(arguments, board_line_);
    EXPECT_EQ(result.status, status) << message;
    EXPECT_THAT(result.err, HasSubstr(message));
    EXPECT_EQ(result.out, "");
  }
  const ToolResult result = Run({"alarm", "id"}, display_line_, "0,50");
  EXPECT_EQ(result.status, 4);
  EXPECT_THAT(result.err, HasSubstr("nothing answered"));
  EXPECT_TRUE(board_.Outbox().empty());
}

TEST_F(BoardVerbTest, TheDisplayShowsWhatIsSent) {
  const std::vector<std::string> operations[] = {
      {"set", "0x1000", "258"},
      {"set",     "1",         "-2"},
      {"page", "3"},
      {"clock",  "2024-05-17 13:45:09"         }
  };
  for (auto arguments : operations) {
    arguments.insert(arguments.begin(), "display");
    EXPECT_EQ(Run(arguments, display_line_).status, 0) << arguments[1];
  }
  for (const char* time : {"2024-02-30 00:00:00", "2024-05-17 24:00:00", "1999-01-01 00:00:00", "now"}) {
    EXPECT_EQ(Run({"display", "clock", time}, display_line_).status, 2) << time;
  }
  display_changes_.wait();
  EXPECT_EQ(display_.Screen(),
            "+--------------------------------------+\n"
            "| page 3   24-05-17 13:45:09, day 5    |\n"
            "| 0001  65534      -2  0xFFFE          |\n"
            "| 1000    258     258  0x0102          |\n"
            "+--------------------------------------+\n");
}

}  // namespace
}  // namespace fieldline
