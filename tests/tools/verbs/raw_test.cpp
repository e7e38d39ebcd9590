#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "tests/support/temp_directory.h"
#include "tests/tools/simulated_line.h"
#include "tests/tools/tool_process.h"

namespace fieldline {
namespace {

using nlohmann::json;
using test::kAnySpeed;
using test::RunTool;
using test::ToolProcess;
using test::ToolResult;
using testing::HasSubstr;

TEST(Raw, SendsWhatIsWrittenAndCompletesIt) {
  sim::Line silent(kAnySpeed);
  ASSERT_TRUE(silent.Start());
  const struct {
    std::vector<std::string> arguments;
    const char* request;
  } cases[] = {
      {{"01", "0203", "04 05"},                       "01 02 03 04 05"                                             },
      {{"--text", "AB\\x43\\r\\n\\\\"},               "41 42 43 0D 0A 5C"                                          },
      {{"010300000002", "--append", "crc16"},         "01 03 00 00 00 02 C4 0B"                                    },
      {{"--append", "alarm", "--", "32", "01", "01"}, "AA 00 02 32 01 01 32 55"                                    },
 // ~20014641E00201FD36 and a carriage return
      {{"20 01 46 41 01", "--append", "hex-ascii"},   "7E 32 30 30 31 34 36 34 31 45 30 30 32 30 31 46 44 33 36 0D"},
  };
  for (const auto& c : cases) {
    std::vector<std::string> arguments = {"raw", "--port", silent.Path(), "--timeout",
                                          "0,1", "--wait", "1ms",         "--json"};
    arguments.insert(arguments.end(), c.arguments.begin(), c.arguments.end());
    const ToolResult result = RunTool(arguments);
    EXPECT_EQ(result.status, 4) << result.err;
    EXPECT_EQ(json::parse(result.out)["error"]["request"], c.request);
  }
}

TEST(Raw, ShowsWhatComesBack) {
  sim::Line line(kAnySpeed);
  line.Add(test::MakeDevice("envir", 1));
  ASSERT_TRUE(line.Start());
  const std::vector<std::string> request = {"raw",      "--port", line.Path(), "01 03 00 00 00 02",
                                            "--append", "crc16",  "--timeout", "0,2000"};
  const ToolResult people = RunTool(request);
  EXPECT_EQ(people.status, 0) << people.err;
  EXPECT_EQ(people.out,
            "01 03 04 01 C2 00 EB 1A 7C                       ........|\n"
            "device 1: function 3 (read holding registers), 4 bytes, CRC good\n");
  EXPECT_EQ(people.err, "sent 01 03 00 00 00 02 C4 0B\n");

  std::vector<std::string> counted = request;
  counted.insert(counted.end(), {"--read", "3", "--json"});
  const ToolResult result = RunTool(counted);
  EXPECT_EQ(result.status, 0);
  const json reply = json::parse(result.out);
  EXPECT_EQ(reply["reply"], "01 03 04");
  EXPECT_EQ(reply["meaning"], nullptr);
}

TEST(Trace, GoesToTheFileAndSaysWhatTheBytesMean) {
  sim::Line line(kAnySpeed);
  line.Add(test::MakeDevice("envir", 1));
  ASSERT_TRUE(line.Start());
  const TempDirectory directory;
  const ToolResult result =
      RunTool({"poll", "--trace=" + directory.Path("trace"), "envir", "--port", line.Path(), "--timeout", "0,20000"});
  EXPECT_EQ(result.status, 0) << result.err;
  EXPECT_EQ(result.err, "");
  const std::string trace = directory.ReadFile("trace");
  EXPECT_THAT(trace, HasSubstr(" -> 01 03 00 00 00 02 C4 0B\n"));
  EXPECT_THAT(trace, HasSubstr(" device 1: function 3 (read holding registers), 4 bytes, CRC good\n"));

  // Without '=' the next word is an argument of its own.
  const ToolResult on_error = RunTool({"poll", "--trace", "envir", "--port", line.Path(), "--timeout", "0,20000"});
  EXPECT_EQ(on_error.status, 0) << on_error.err;
  EXPECT_THAT(on_error.err, HasSubstr("from 0, count 2, CRC good\n"));
  EXPECT_EQ(RunTool({"poll", "envir", "--port", line.Path(), "--trace=" + directory.Path("no/trace")}).status, 2);
}

// A field outside its record, or two in one place.
TEST(Record, FieldsLieSideBySideWithinTheirRecord) {
  const ToolResult kinds = RunTool("kinds --json");
  ASSERT_EQ(kinds.status, 0);
  std::istringstream lines(kinds.out);
  int records = 0;
  for (std::string line; std::getline(lines, line); ++records) {
    const json kind = json::parse(line);
    if (kind["record_size"].is_null()) continue;
    const ToolResult result = RunTool({"record", kind["kind"], "--json"});
    ASSERT_EQ(result.status, 0) << kind;
    const json record = json::parse(result.out);
    std::size_t free = 0;
    for (const json& field : record["fields"]) {
      EXPECT_GE(field["position"], free) << field;
      free = field["position"].get<std::size_t>() + field["bytes"].get<std::size_t>();
    }
    EXPECT_LE(free, kind["record_size"]) << kind;
  }
  EXPECT_GE(records, 14);
}

}  // namespace
}  // namespace fieldline
