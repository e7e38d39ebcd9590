#include "tests/support/temp_directory.h"
#include "tests/tools/tool_process.h"

namespace fieldline::test {
namespace {

constexpr char kSite[] = R"({"lines": {"ESL4": {"path": "/dev/b", "settings": "2400,n,8,1", "devices":
  {"ups": {"kind": "ups"}}}}, "alarms": {
    "mains failed": {"when": {"device": "ups", "field": "input_voltage", "below": 180}, "severity": "high"},
    "ups silent": {"when": {"device": "ups", "silent_for": "60s"}}}})";

constexpr char kFailed[] = R"("ok": false, "error": {"code": "no_answer"})";

std::string Poll(const std::string& clock, const std::string& outcome, const std::string& device = "ups") {
  return R"({"time": "2026-03-01T)" + clock + R"(.000Z", "device": ")" + device + R"(", "duration_ms": 0.5, )" +
         outcome + "}\n";
}
std::string Good(const std::string& clock, int voltage) {
  return Poll(clock, R"("ok": true, "record": {"input_voltage": )" + std::to_string(voltage) + '}');
}

TEST(Alarms, DamagedLinesAreNamedAndLeftOut) {
  const TempDirectory directory;
  directory.WriteFile("site.json", kSite);
  directory.WriteFile("log", Good("02:00:00", 2200) + "{\"time\": \n" +
                                 Poll("02:00:01", R"("ok": true, "record": {})") + Poll("02:00:02", R"("ok": false)") +
                                 Poll("25:00:00", R"("ok": true)") + Poll("02:00:03", R"("ok": true)", "ghost") +
                                 Good("02:00:04", 0) + "\n");
  const ToolResult result =
      ExpectTool("alarms --json " + directory.Path("site.json") + " --replay " + directory.Path("log"), 1, "");
  EXPECT_THAT(result.err, HasSubstr("log: line 2: this is not a JSON object\n"));
  EXPECT_THAT(result.err, HasSubstr("log: line 3: the record of ups has no number input_voltage\n"));
  EXPECT_THAT(result.err, HasSubstr("log: line 4: \"error\" is missing or has the wrong type\n"));
  EXPECT_THAT(result.err, HasSubstr("log: line 5: \"2026-03-01T25:00:00.000Z\" is not a time\n"));
  EXPECT_THAT(result.err, HasSubstr("log: line 8: this is not a JSON object\n"));
  EXPECT_THAT(result.err, HasSubstr("3 polls from 2026-03-01T02:00:00.000Z to 2026-03-01T02:00:04.000Z; raised 1"));
  EXPECT_THAT(result.err, HasSubstr("not in the site file: ghost\n"));
  const std::vector<json> changes = Lines(result.out);
  ASSERT_EQ(changes.size(), 1u);
  EXPECT_EQ(changes[0]["schema"], 1);
  EXPECT_EQ(changes[0]["alarm"], "mains failed");
  EXPECT_EQ(changes[0]["severity"], "high");
  EXPECT_EQ(changes[0]["from"], "cleared");
  EXPECT_EQ(changes[0]["to"], "raised");
  EXPECT_EQ(changes[0]["time"], "2026-03-01T02:00:04.000Z");
  EXPECT_EQ(changes[0]["value"], 0.0);
  EXPECT_EQ(changes[0]["text"], "0.0 V");
}

TEST(Alarms, ThePauseBetweenTwoRunsOfWatchIsNoSilence) {
  const TempDirectory directory;
  directory.WriteFile("site.json", kSite);
  directory.WriteFile("log", Good("02:00:00", 2200) + Good("03:00:00", 2200) + Poll("03:00:59", kFailed));
  ExpectTool("alarms " + directory.Path("site.json") + " --replay " + directory.Path("log"), 0, "",
             "log: line 2: nothing was logged for 3600 s before it; the alarms go on from there\n");
}

TEST(Alarms, AWrongFileIsRefused) {
  const TempDirectory directory;
  directory.WriteFile("site.json", kSite);
  directory.WriteFile("empty", "");
  ExpectTool("alarms " + directory.Path("site.json") + " --replay " + directory.Path("absent"), 2, "",
             "absent: the file can't be read");
  ExpectTool("alarms " + directory.Path("site.json") + " --replay " + directory.Path("empty"), 1, "",
             "there is no poll in the log");
  ExpectTool("alarms " FIELDLINE_EXAMPLES "/site.json --replay " + directory.Path("empty"), 2, "",
             "there is no alarm; \"alarms\" is missing or empty");
}

}  // namespace
}  // namespace fieldline::test
