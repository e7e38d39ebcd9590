#include "fieldline/kinds.h"
#include "tests/tools/simulated_line.h"
#include "tests/tools/tool_process.h"

namespace fieldline::test {
namespace {

TEST(Raw, SendsWhatIsWrittenAndCompletesIt) {
  SimulatedLine silent;
  ASSERT_TRUE(silent.Start());
  // The last request is ~20014641E00201FD36 and a carriage return.
  const std::pair<std::vector<std::string>, const char*> cases[] = {
      {{"01", "0203", "04 05"},                       "01 02 03 04 05"                                             },
      {{"--text", "AB\\x43\\r\\n\\\\"},               "41 42 43 0D 0A 5C"                                          },
      {{"010300000002", "--append", "crc16"},         "01 03 00 00 00 02 C4 0B"                                    },
      {{"--append", "alarm", "--", "32", "01", "01"}, "AA 00 02 32 01 01 32 55"                                    },
      {{"20 01 46 41 01", "--append", "hex-ascii"},   "7E 32 30 30 31 34 36 34 31 45 30 30 32 30 31 46 44 33 36 0D"},
  };
  for (const auto& [words, request] : cases) {
    std::vector<std::string> arguments = {"raw", "--port", silent.Path(), "--timeout=0,1", "--wait=1ms", "--json"};
    arguments.insert(arguments.end(), words.begin(), words.end());
    const ToolResult result = RunTool(arguments);
    EXPECT_EQ(result.status, 4) << result.err;
    EXPECT_EQ(json::parse(result.out)["error"]["request"], request);
  }
}

TEST(Raw, ShowsWhatComesBack) {
  const SimulatedLine line("envir");
  const std::string request = "raw 01 03 00 00 00 02 --append crc16 --timeout 0,1000 --port " + line.Path();
  const ToolResult people = RunTool(request);
  EXPECT_EQ(people.status, 0) << people.err;
  EXPECT_EQ(people.out,
            "01 03 04 01 C2 00 EB 1A 7C                       ........|\n"
            "device 1: function 3 (read holding registers), 4 bytes, CRC good\n");
  EXPECT_EQ(people.err, "sent 01 03 00 00 00 02 C4 0B\n");

  const json reply = json::parse(ExpectTool(request + " --read 3 --json", 0, "").out);
  EXPECT_EQ(reply["reply"], "01 03 04");
  EXPECT_EQ(reply["meaning"], nullptr);
}

// A field outside its record, or two in one place.
TEST(Record, FieldsLieSideBySideWithinTheirRecord) {
  for (const Kind& kind : kKinds) {
    if (!kind.IsPolled()) continue;
    const json record = json::parse(RunTool({"record", std::string(kind.name), "--json"}).out);
    std::size_t free = 0;
    for (const json& field : record["fields"]) {
      EXPECT_GE(field["position"], free) << field;
      free = field["position"].get<std::size_t>() + field["bytes"].get<std::size_t>();
    }
    EXPECT_LE(free, static_cast<std::size_t>(kind.record_size)) << kind.name;
    EXPECT_GT(free, 0u) << kind.name;
  }
}

}  // namespace
}  // namespace fieldline::test
