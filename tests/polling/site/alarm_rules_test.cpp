#include "polling/site/alarm_rules.h"

#include <gmock/gmock.h>

#include "polling/site/site.h"
#include "polling/usage_error.h"
#include "tests/support/temp_directory.h"

namespace fieldline {
namespace {

using namespace std::chrono_literals;
using testing::HasSubstr;

// A site with these alarms, a probe with a scale and a UPS without; with or without an alarm board.
Site Read(const std::string& alarms, bool with_board = true) {
  const std::string board = R"("COM3": {"path": "/dev/c", "settings": "115200,n,8,1", "devices":
    {"board": {"kind": "alarm"}}}, "COM4": {"path": "/dev/d", "settings": "115200,n,8,1", "devices":
    {"camera-1": {"kind": "camera"}}},)";
  const TempDirectory directory;
  directory.WriteFile("site.json", R"({"lines": {)" + (with_board ? board : "") +
                                       R"("ESL1": {"path": "/dev/a", "settings": "2400,n,8,1", "devices": {
      "probe": {"kind": "envir", "interval": "10s", "scale": {"register_1":
        {"signed": 16, "factor": 10, "unit": "°C", "maximum": 80}}}}},
    "ESL4": {"path": "/dev/b", "settings": "2400,n,8,1", "devices": {"ups": {"kind": "ups"}}}},
    "alarms": )" + alarms + '}');
  return ReadSite(directory.Path("site.json"));
}

std::string Refusal(const std::string& alarms, bool with_board = true) {
  try {
    Read(alarms, with_board);
  } catch (const UsageError& error) {
    return error.what();
  }
  return "";
}

TEST(AlarmRules, AreReadWhole) {
  const Site site = Read(R"({
    "warm": {
      "when": {"device": "probe", "field": "register_1", "above": 28.0, "unit": "°C", "for": "60s"},
      "clear": {"below": 26.5, "for": "2m"}, "between": ["20:00", "06:30"], "depends_on": "line", "severity": "critical",
      "do": [{"sms": {"to": ["5550100", "+15550101"], "text": "{device} {value}"}}, {"speech": {"text": "warm"}},
             {"relay": {"number": 1, "state": "on", "while": "raised"}},
             {"picture": {"camera": "camera-1", "mms": ["5550100"]}}, {"mqtt": {}}],
      "repeat": "30m", "until": "returned", "escalate": {"after": "15m", "do": [{"dial": {"to": "5550102"}}]}},
    "line": {"when": {"line_gone": "ESL1"}},
    "any": {"when": {"any": [{"device": "ups", "silent_for": "120s"},
                             {"device": "ups", "field": "status", "bit": 3},
                             {"device": "probe", "field": "register_0", "changed_by": 4, "within": "1h"}], "for": 500}}
  })");
  ASSERT_EQ(site.alarms.rules.size(), 3u);
  EXPECT_EQ(site.alarms.rules[0].name, "line");  // before the one that depends on it
  const AlarmRule& warm = site.alarms.rules[2];
  ASSERT_EQ(warm.name, "warm");
  EXPECT_EQ(warm.when.type, AlarmCondition::Type::kAbove);
  EXPECT_EQ(warm.when.limit, 28);
  EXPECT_EQ(warm.on_delay, 60s);
  EXPECT_EQ(warm.clear->limit, 26.5);
  EXPECT_EQ(warm.clear->device, warm.when.device);
  EXPECT_EQ(warm.clear->number, warm.when.number);
  EXPECT_EQ(warm.off_delay, 2min);
  EXPECT_EQ(warm.between->to, 6 * 60 + 30);
  EXPECT_EQ(warm.depends_on, 0u);
  EXPECT_EQ(warm.severity, AlarmSeverity::kCritical);
  ASSERT_EQ(warm.plan.actions.size(), 5u);
  EXPECT_EQ(std::get<SmsAction>(warm.plan.actions[0]).to[1], "+15550101");
  EXPECT_EQ(std::get<RelayAction>(warm.plan.actions[2]).how_long, RelayAction::While::kRaised);
  EXPECT_EQ(warm.plan.repeat, 30min);
  EXPECT_EQ(warm.plan.until, RepeatUntil::kReturned);
  EXPECT_EQ(std::get<DialAction>(warm.plan.escalation->actions[0]).to, "5550102");

  const AlarmCondition& any = site.alarms.rules[1].when;
  ASSERT_EQ(any.parts.size(), 3u);
  EXPECT_EQ(any.parts[1].bit, 3);
  EXPECT_EQ(any.parts[2].time, 1h);
  EXPECT_EQ(site.alarms.rules[1].on_delay, 500ms);
  ASSERT_EQ(site.alarms.devices.size(), 3u);  // the board is not polled
  EXPECT_EQ(site.alarms.devices[0].numbers.size(), 2u);
}

TEST(AlarmRules, AreCheckedWhole) {
  const auto expect_refusal = [](const std::string& alarms, const char* message) {
    EXPECT_THAT(Refusal(alarms), HasSubstr(message)) << alarms;
  };
  const auto expect_refused_when = [&](const std::string& when, const char* message) {
    expect_refusal(R"({"a": {"when": {)" + when + "}}}", message);
  };
  const auto expect_refused_beside = [&](const std::string& members, const char* message) {
    expect_refusal(R"({"a": {"when": {"device": "probe", "field": "register_1", "above": 28}, )" + members + "}}",
                   message);
  };
  const std::string number = R"("device": "probe", "field": "register_1", )";

  expect_refusal(R"([])", "site.json: /alarms: an object is needed");
  expect_refusal(R"({"a": {}})", "/alarms/a: \"when\" is missing");
  expect_refusal(R"({"a": {}, "a": {}})", "duplicate key \"a\"");
  expect_refusal(R"({"a/b": {}})", "/alarms/a/b: the name of an alarm");
  expect_refusal(R"({"a": {"wen": {}}})", "/alarms/a/wen: there is no such key");
  expect_refusal(R"({"a": {"when": {"line_gone": "ESL1"}, "depends_on": "b"},
                     "b": {"when": {"line_gone": "ESL1"}, "depends_on": "a"}})",
                 "/alarms/a/depends_on: these alarms depend on each other");
  expect_refused_beside(R"("depends_on": "b")", "/alarms/a/depends_on: there is no alarm \"b\"");

  expect_refused_when("", "/alarms/a/when: a test is needed: one of all, any, above");
  expect_refused_when(number + R"("above": 1, "below": 2)", "/when/below: a condition has one test");
  expect_refused_when(number + R"("over": 1)", "/when/over: there is no such key");
  expect_refused_when(R"("device": "prob", "field": "register_1", "above": 1)",
                      "/when/device: there is no polled device \"prob\"; did you mean probe?");
  expect_refused_when(R"("device": "board", "silent_for": "1m")", "there is no polled device \"board\"");
  expect_refused_when(R"("device": "ups", "field": "maker", "equal": 1)", "/when/field: ups has no number \"maker\"");
  expect_refused_when(number + R"("above": "28")", "/when/above: a number from");
  expect_refused_when(number + R"("above": 28, "unit": "K")", "/when/unit: register_1 of probe is in °C");
  expect_refused_when(number + R"("above": 28, "for": "soon")", "/when/for: a time (");
  expect_refused_when(number + R"("outside": [30, 20])", "/when/outside: the second number must be above");
  expect_refused_when(number + R"("changed_by": 2)", "/when: \"within\" is missing");
  expect_refused_when(number + R"("bit": 32)", "/when/bit: a whole number from 0 to 31");
  expect_refused_when(number + R"("bit": 1, "equal": 2)", "/when/equal: a whole number from 0 to 1");
  expect_refused_when(R"("device": "probe", "field": "register_0", "implausible": true)",
                      "/when/implausible: register_0 has no minimum and no maximum");
  expect_refused_when(R"("device": "probe", "silent_for": "10s")", "/when/silent_for: a time above the interval");
  expect_refused_when(R"("line_gone": "COM3")", "/when/line_gone: there is no line \"COM3\" with polled devices");
  expect_refused_when(R"("all": [{"line_gone": "ESL1"}])", "/when/all: two or more");
  expect_refused_when(R"("any": [{"line_gone": "ESL1"}, {"device": "ups", "silent_for": "1m", "for": "1s"}])",
                      "/when/any/1/for: a delay belongs to the whole");

  expect_refused_beside(R"("clear": {"below": 29})", "/alarms/a/clear: the alarm would return while");
  expect_refused_beside(R"("clear": {})", "/alarms/a/clear: \"for\" is missing");
  expect_refused_beside(R"("between": ["20:00", "24:00"])", "/between/1: a time of the day");
  expect_refused_beside(R"("between": ["8:00", "20:00"])", "/between/0: a time of the day");
  expect_refused_beside(R"("severity": "red")", "/alarms/a/severity: \"critical\", \"high\"");
  expect_refused_beside(R"("do": [])", "/alarms/a/do: an action is needed");
  expect_refused_beside(R"("do": [{"fax": {}}])", "/alarms/a/do/0/fax: there is no such key");
  expect_refused_beside(R"("do": [{"mqtt": {}, "speech": {"text": "x"}}])", "/do/0: one action in each");
  expect_refused_beside(R"("do": [{"sms": {"to": ["12"], "text": "x"}}])", "/do/0/sms/to/0: a telephone number");
  expect_refused_beside(R"("do": [{"speech": {"text": "{valu}"}}])", "/speech/text: there is no placeholder {valu}");
  expect_refused_beside(R"("do": [{"relay": {"number": 256, "state": "on"}}])", "/relay/number: a whole number");
  expect_refused_beside(R"("do": [{"display": {"page": 1}}])", "/do/0/display: it needs a device of kind display");
  expect_refused_beside(R"("do": [{"picture": {"camera": "board", "mms": ["5550100"]}}])",
                        "/picture/camera: there is no camera \"board\"");
  expect_refused_beside(R"("repeat": "30m")", "/alarms/a/repeat: there is nothing to repeat");
  expect_refused_beside(R"("do": [{"mqtt": {}}], "until": "returned")", "/alarms/a/until: \"repeat\" is missing");
  expect_refused_beside(R"("escalate": {"do": [{"mqtt": {}}]})", "/alarms/a/escalate: \"after\" is missing");
  EXPECT_THAT(Refusal(R"({"a": {"when": {"line_gone": "ESL1"}, "do": [{"speech": {"text": "x"}}]}})", false),
              HasSubstr("/do/0/speech: it needs a device of kind alarm"));
}

}  // namespace
}  // namespace fieldline
