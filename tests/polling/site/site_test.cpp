#include "polling/site/site.h"

#include <gmock/gmock.h>

#include "polling/usage_error.h"
#include "tests/support/temp_directory.h"

namespace fieldline {
namespace {

using testing::HasSubstr;

Site Read(const std::string& text) {
  const TempDirectory directory;
  directory.WriteFile("site.json", text);
  return ReadSite(directory.Path("site.json"));
}

std::string Refusal(const std::string& text) {
  try {
    Read(text);
  } catch (const UsageError& error) {
    return error.what();
  }
  return "";
}

TEST(Site, EveryNumberMayHaveAScale) {
  const Site site = Read(R"({"lines": {"A": {"path": "/dev/a", "settings": "9600,e,8,1", "timeout": "2,80", "devices": {
    "air": {"kind": "airc", "address": 9, "interval": "250ms", "show": "register_1",
            "scale": {"register_1": {"factor": 10, "unit": "K"}}}, "other": {"kind": "airc"}}}}})");
  ASSERT_EQ(site.lines.size(), 1u);
  EXPECT_EQ(site.lines[0].port.definition, L"A:9600,e,8,1");
  EXPECT_EQ(site.lines[0].port.timeout->constant, 80);
  const SiteDevice& air = site.lines[0].devices[0];
  EXPECT_EQ(air.address, 9);
  EXPECT_EQ(air.interval.count(), 250);
  EXPECT_EQ(air.shown, 1u);
  // The record begins with a run: registers 0 to 2, of two bytes each.
  for (std::size_t i = 0; i < 3; ++i) {
    EXPECT_EQ(air.fields[i].name, "register_" + std::to_string(i));
    EXPECT_EQ(air.fields[i].position, 2 * i);
    EXPECT_EQ(air.fields[i].factor, i == 1 ? 10 : 1);
  }
  EXPECT_EQ(air.fields[1].unit, "K");
  EXPECT_EQ(site.lines[0].devices[1].fields[1].factor, 1);
}

TEST(Site, CamerasStandBesideTheWatchedLines) {
  const Site site = Read(R"({"pictures": {"keep": "7d", "most": 50}, "lines": {
    "B": {"path": "/dev/b", "settings": "115200,n,8,1", "devices": {"door": {"kind": "camera"}}},
    "A": {"path": "/dev/a", "settings": "9600,n,8,1", "devices": {"entrance": {"kind": "card"}}},
    "C": {"path": "/dev/c", "settings": "115200,n,8,1", "timeout": "2,200",
          "devices": {"yard": {"kind": "camera-3ge", "interval": "10s"}}}}})");
  ASSERT_EQ(site.lines.size(), 1u);
  EXPECT_EQ(site.lines[0].devices[0].name, "entrance");
  ASSERT_EQ(site.cameras.size(), 2u);
  EXPECT_EQ(site.cameras[0].devices[0].interval, std::chrono::hours(1));
  EXPECT_EQ(site.cameras[1].devices[0].interval, std::chrono::seconds(10));
  EXPECT_EQ(site.cameras[1].devices[0].options.timeout.constant, 200);
  ASSERT_EQ(site.controlled.size(), 2u);  // alarms take pictures, too
  EXPECT_EQ(site.service.pictures.keep, std::chrono::days(7));
  EXPECT_EQ(site.service.pictures.most, 50u);
}

TEST(Site, IsCheckedWhole) {
  // Files with these members of a line, or of a device.
  const auto line = [](const std::string& members) {
    return R"({"lines": {"A": {"path": "/dev/a", )" + members + "}}}";
  };
  const auto device = [&](const std::string& members) {
    return line(R"("settings": "2400,n,8,1", "devices": {"probe": {)" + members + "}}");
  };
  const std::string deep = R"({"lines": {"A": )" + std::string(100, '[') + std::string(100, ']') + "}}";
  const std::string large = "{\"lines\": \"" + std::string(1 << 20, 'x') + "\"}";
  const auto expect_refusal = [](const std::string& text, const char* message) {
    EXPECT_THAT(Refusal(text), HasSubstr(message)) << text;
  };
  expect_refusal(R"({"lines": 1e999})", "line 1: the number 1e999 is out of range");
  expect_refusal(deep, "/lines/A: more than 64 objects");
  expect_refusal(large, "the file is too large; at most 1048576 bytes");
  expect_refusal("{\n  \"lines\": {]\n}", "line 2, column 13");
  expect_refusal(R"({"lines": {"A": {}, "A": {}}})", "duplicate key \"A\"");
  expect_refusal(R"({"lines": {}, "line": 1})", "/line: there is no such key; the keys are unit, ");
  expect_refusal(R"({"lines": {}})", "/lines: a line with a device that is polled is needed");
  expect_refusal(R"({"lines": {"A/B": {}}})", "/lines/A/B: the name of a line has");
  expect_refusal(R"({"lines": {"A": {"settings": "2400,n,8,1", "devices": {}}}})", "/lines/A: \"path\" is missing");
  expect_refusal(R"({"lines": {"EIO1": {"path": "/dev/a", "settings": "2400,n,8,1"}}})",
                 "/lines/EIO1/settings: there is no such");
  expect_refusal(R"({"lines": {"EIO1": {"path": "/dev/a", "devices": {"x": {"kind": "envir"}}}}})",
                 "only di is at EIO1");
  expect_refusal(line(R"("devices": {})"), "/lines/A: \"settings\" is missing");
  expect_refusal(line(R"("settings": "2400,n,8", "devices": {})"),
                 "/lines/A/settings: line settings \"2400,n,8\": four fields");
  expect_refusal(line(R"("settings": "2400,n,8,1", "timeout": 6, "devices": {})"),
                 "/lines/A/timeout: a text is needed");
  expect_refusal(line(R"("settings": "2400,n,8,1", "timeout": "6", "devices": {})"), "PER_BYTE,CONSTANT");
  expect_refusal(line(R"("settings": "2400,n,8,1", "devices": {})"), "/lines/A/devices: a device is needed");
  expect_refusal(device(""), "/lines/A/devices/probe: \"kind\" is missing");
  expect_refusal(device(R"("kind": "toaster")"), "/probe/kind: there is no kind \"toaster\"; the kinds are envir, ");
  expect_refusal(device(R"("kind": "di")"), "di is on no line");
  expect_refusal(device(R"("kind": "camera", "interval": "9s")"), "/probe/interval: at least 10s");
  expect_refusal(line(R"("settings": "9600,n,8,1", "devices": {"x": {"kind": "ups"}, "eye": {"kind": "camera"}})"),
                 "/devices/eye: camera needs a line of its own");
  expect_refusal(R"({"pictures": {"most": 0}, "lines": {}})", "/pictures/most: a whole number from 1 to 100000");
  expect_refusal(line(R"("settings": "9600,n,8,1", "devices": {"x": {"kind": "ups"}, "board": {"kind": "alarm"}})"),
                 "/devices/board: alarm needs a line of its own");
  expect_refusal(R"({"lines": {"A": {"path": "/dev/a", "settings": "9600,n,8,1", "devices": {"x": {"kind": "alarm"}}},
                     "B": {"path": "/dev/b", "settings": "9600,n,8,1", "devices": {"y": {"kind": "alarm"}}}}})",
                 "/lines/B/devices/y: duplicate of x");
  expect_refusal(device(R"("kind": "ups", "address": 1)"), "/probe/address: ups has no address");
  expect_refusal(device(R"("kind": "envir", "address": 256)"),
                 "/probe/address: a whole number from 0 to 255 is needed");
  expect_refusal(device(R"("kind": "envir", "interval": "25h")"), "/probe/interval: a time ");
  expect_refusal(device(R"("kind": "ups", "show": "maker")"), "/probe/show: ups has no number \"maker\"");
  expect_refusal(device(R"("kind": "envir", "scale": {"register_1": {"factor": 0}})"),
                 "/register_1/factor: a number above 0");
  expect_refusal(device(R"("kind": "envir", "scale": {"heat": {}})"), "/scale/heat: envir has no number \"heat\"");
  expect_refusal(R"({"lines": {"A": {"path": "/dev/a", "settings": "2400,n,8,1", "devices": {"x": {"kind": "ups"}}},
                     "B": {"path": "/dev/a", "settings": "2400,n,8,1", "devices": {"y": {"kind": "ups"}}}}})",
                 "/lines/B/path: duplicate path: A has the same");
  expect_refusal(R"({"lines": {"A": {"path": "/dev/a", "settings": "2400,n,8,1", "devices": {"x": {"kind": "ups"}}},
                     "B": {"path": "/dev/b", "settings": "2400,n,8,1", "devices": {"x": {"kind": "ups"}}}}})",
                 "/lines/B/devices/x: duplicate name: a device on A has the same");
}

TEST(Site, ListensWhereItIsTold) {
  const auto with_http = [](const std::string& http) {
    return R"({"lines": {"EIO1": {"path": "/dev/null", "devices": {"own": {"kind": "di"}}}}, "http": )" + http + "}";
  };
  EXPECT_FALSE(Read(R"({"lines": {"EIO1": {"path": "/dev/null", "devices": {"own": {"kind": "di"}}}}})").service.http);
  const Site site = Read(with_http(R"({"listen": "[::]:443", "token_file": "/no/such/file"})"));
  EXPECT_EQ(site.service.http->host, "::");
  EXPECT_EQ(site.service.http->port, 443);
  EXPECT_FALSE(site.service.http->IsLoopback());
  for (const char* const inside : {"127.0.0.1:1", "127.9.9.9:1", "localhost:1", "[::1]:1"}) {
    EXPECT_TRUE(ParseListen(inside)->IsLoopback()) << inside;
  }
  for (const char* const wrong : {"", ":", "8080", ":8080", "127.0.0.1", "127.0.0.1:", "127.0.0.1:65536", "127.1:80",
                                  "127.0.0.256:80", "127.0.0.1.5:80", "127.evil.example:80", "::1:80", "[::1]80",
                                  "[1.2.3.4]:80", "unit.example:80", "127.0.0.1:+80"}) {
    EXPECT_FALSE(ParseListen(wrong)) << wrong;
  }
  EXPECT_THAT(Refusal(with_http(R"({"listen": "0.0.0.0:8080"})")), HasSubstr("/http: other machines can reach"));
  EXPECT_THAT(Refusal(with_http(R"({"listen": "8080"})")), HasSubstr("/http/listen: an address and a port"));
}

}  // namespace
}  // namespace fieldline
