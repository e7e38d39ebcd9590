#include "service/http/http_service.h"

#include <gmock/gmock.h>
#include <httplib.h>

#include <nlohmann/json.hpp>

#include "service/history/history_store.h"
#include "service/http/metrics.h"
#include "tests/support/temp_directory.h"

namespace fieldline::service {
namespace {

using nlohmann::json;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

constexpr char kSite[] = R"({"unit": "room-7", "lines": {"A": {"path": "/dev/null", "settings": "9600,n,8,1",
  "devices": {"cold \"aisle\"": {"kind": "envir", "interval": "1s",
                                 "scale": {"register_1": {"factor": 10, "unit": "°C", "maximum": 60}}},
              "other": {"kind": "envir", "address": 2}}}},
  "alarms": {"too warm": {"when": {"device": "cold \"aisle\"", "field": "register_1", "above": 28}}}})";
constexpr char kName[] = "cold \"aisle\"";

PollResult PollAt(int second) {
  PollResult result;
  result.time = Time(std::chrono::seconds(1'700'000'000 + second));
  result.duration = std::chrono::milliseconds(250);
  return result;
}

// A probe's record with this in register 1, and 0 in register 0.
PollResult Good(WORD tenths) {
  PollResult result = PollAt(0);
  result.record = {static_cast<BYTE>(tenths & 0xFF), static_cast<BYTE>(tenths >> 8), 0, 0, 0, 0, 0, 0};
  return result;
}

PollResult Failed(ExitCode exit, std::string_view code) {
  PollResult result = PollAt(60);
  result.failure = Failure{exit, code, "nothing answered within 118 ms"};
  return result;
}

class Served : public testing::Test {
 protected:
  static Site WriteAndReadSite(const TempDirectory& directory) {
    directory.WriteFile("site.json", kSite);
    return ReadSite(directory.Path("site.json"));
  }

  void Serve(HttpSettings settings = {}) {
    settings.port = 0;
    service_.emplace(settings, site_.service.unit, api_, live_, [](const std::string&) {});
    ASSERT_NE(service_->port(), 0);
    client_.emplace("127.0.0.1", service_->port());
  }

  json Get(const std::string& path, int status = 200) {
    const auto reply = client_->Get(path);
    if (!reply) return "no answer";
    EXPECT_EQ(reply->status, status) << path << ": " << reply->body;
    return json::parse(reply->body, nullptr, false);
  }

  const TempDirectory directory_;
  const Site site_ = WriteAndReadSite(directory_);
  const std::vector<WatchedDevice> devices_ = DevicesOf(site_);
  bool is_alive_ = true;
  LiveState live_{devices_};
  AlarmService alarms_{site_, directory_.Path("alarms.db"), {}, [](const std::string&) {}};
  const PictureShelf shelf_{directory_.Path("pictures"), {}};
  const Api api_{site_, live_, alarms_, directory_.Path("history.db"), shelf_, [this] { return is_alive_; }};
  std::optional<HttpService> service_;
  std::optional<httplib::Client> client_;
};

TEST_F(Served, AValueIsShownOnlyWhileItIsFresh) {
  Serve();
  json device = Get("/api/v1/devices")["devices"][0];
  EXPECT_EQ(device["condition"], "waiting");
  EXPECT_TRUE(device["value"].is_null());

  live_.Add(0, Good(235));
  device = Get("/api/v1/devices")["devices"][0];
  EXPECT_EQ(device["device"], kName);
  EXPECT_EQ(device["condition"], "good");
  EXPECT_EQ(device["value"]["text"], "23.5 °C");
  EXPECT_EQ(device["recent"], json({23.5}));
  EXPECT_EQ(Get("/api/v1/latest?device=cold%20%22aisle%22")["physical"]["register_1"]["value"], 23.5);

  live_.Add(0, Failed(ExitCode::kNoAnswer, "no_answer"));
  device = Get("/api/v1/devices")["devices"][0];
  EXPECT_EQ(device["condition"], "failed");
  EXPECT_TRUE(device["value"].is_null());
  EXPECT_EQ(device["since"], "2023-11-14T22:14:20.000Z");
  EXPECT_THAT(device["error"]["advice"], HasSubstr("Is it switched on?"));
  EXPECT_EQ(device["last_good"]["value"]["text"], "23.5 °C");
  EXPECT_EQ(device["recent"], json({23.5, nullptr}));
  const json latest = Get("/api/v1/latest?device=cold%20%22aisle%22");
  EXPECT_FALSE(latest.contains("record"));
  EXPECT_EQ(latest["last_good"]["record"]["register_1"], 235);

  live_.Add(0, Failed(ExitCode::kNoLine, "line_gone"));
  EXPECT_EQ(Get("/api/v1/devices")["devices"][0]["condition"], "line_lost");
}

TEST(DeviceState, IsOverdueWhenPollsDoNotComeBack) {
  const TempDirectory directory;
  directory.WriteFile("site.json", kSite);
  const Site site = ReadSite(directory.Path("site.json"));
  const SiteDevice& device = site.lines[0].devices[0];
  DeviceState state;
  state.last = Good(1);
  EXPECT_EQ(state.ConditionAt(state.ended + std::chrono::seconds(60), device), Condition::kGood);
  EXPECT_EQ(state.ConditionAt(state.ended + std::chrono::seconds(61), device), Condition::kOverdue);
}

TEST_F(Served, MetricsAreInBaseUnits) {
  live_.Add(0, Good(235));
  live_.Add(1, Failed(ExitCode::kNoAnswer, "no_answer"));
  const std::string text = Metrics("room-7", live_, alarms_, DeviceState::Clock::now());
  EXPECT_THAT(text, HasSubstr(R"(# TYPE fieldline_up gauge
fieldline_up{line="A",device="cold \"aisle\"",kind="envir"} 1
fieldline_up{line="A",device="other",kind="envir"} 0
)"));
  EXPECT_THAT(text, HasSubstr(R"(# TYPE fieldline_reading_celsius gauge
fieldline_reading_celsius{line="A",device="cold \"aisle\"",kind="envir",field="register_1"} 23.5
)"));
  EXPECT_THAT(text,
              HasSubstr(R"(fieldline_poll_failures_total{line="A",device="other",kind="envir",code="no_answer"} 1)"));
  EXPECT_THAT(text, HasSubstr(R"(fieldline_poll_duration_seconds_sum{line="A",device="other",kind="envir"} 0.25)"));
  EXPECT_THAT(text, Not(HasSubstr(R"(device="other",kind="envir",field)")));
  EXPECT_EQ(BaseUnitOf("kWh").suffix, "joules");
  EXPECT_EQ(BaseUnitOf("kWh").factor, 3.6e6);
  EXPECT_EQ(BaseUnitOf("m³/h \n\"").suffix, "m_h");
}

TEST_F(Served, HistoryIsReadFromTheDatabase) {
  Serve();
  const std::string path =
      "/api/v1/history?device=other&field=register_1&from=2023-11-14T22:13:20Z&to=2023-11-14T22:13:40Z";
  EXPECT_EQ(Get(path)["points"], json::array());
  {
    HistoryStore store(directory_.Path("history.db"), devices_);
    HistoryEntry good = EntryOf(1, Good(7));
    store.Write(std::span(&good, 1));
    HistoryEntry failed = EntryOf(1, Failed(ExitCode::kNoAnswer, "no_answer"));
    failed.clock = good.clock + std::chrono::seconds(60);
    store.Write(std::span(&failed, 1));
  }
  EXPECT_EQ(Get(path + "&points=2")["points"],
            json::parse("[[1700000000000, 7.0, 7.0, 7.0], [1700000010000, null, null, null]]"));
  const json events = Get("/api/v1/events?from=2023-11-14")["events"];
  ASSERT_EQ(events.size(), 2u);
  EXPECT_EQ(events[0]["device"], "other");
  EXPECT_EQ(events[0]["error"]["code"], "no_answer");
  EXPECT_EQ(events[1]["line"], "A");
  for (const char* const wrong :
       {"/api/v1/history", "/api/v1/history?device=other", "/api/v1/history?device=x&field=register_1",
        "/api/v1/history?device=other&field=x", "/api/v1/events?from=yesterday", "/api/v1/events?limit=0",
        "/api/v1/events?from=1h&to=2h", "/api/v1/events?devise=other", "/api/v1/latest?device=x"}) {
    EXPECT_EQ(Get(wrong, 400)["error"]["code"], "bad_request") << wrong;
  }
  directory_.WriteFile("history.db", "this is no database");
  EXPECT_EQ(Get(path, 503)["error"]["code"], "no_history");
}

TEST_F(Served, NothingWithoutTheToken) {
  directory_.WriteFile("token", "0123456789abcdef");
  Serve({.token_file = directory_.Path("token")});
  for (const char* const path : {"/app.js", "/metrics", "/healthz", "/session", "/api/v1/site", "/api/v1/devices",
                                 "/api/v1/follow", "/api/v1/latest?device=other", "/nothing"}) {
    EXPECT_EQ(Get(path, 401)["error"]["code"], "no_token") << path;
  }
  EXPECT_EQ(client_->Get("/")->get_header_value("Location"), "/login");
  EXPECT_EQ(client_->Get("/login")->status, 200);

  const auto session = client_->Get("/session", {
                                                    {"Authorization", "Bearer 0123456789abcdef"}
  });
  EXPECT_EQ(session->status, 204);
  const std::string cookie = session->get_header_value("Set-Cookie");
  const auto page = client_->Get("/", {
                                          {"Cookie", cookie.substr(0, cookie.find(';'))}
  });
  EXPECT_EQ(page->status, 200);
  EXPECT_THAT(page->body, HasSubstr("<script src=\"app.js\""));
  EXPECT_THAT(page->get_header_value("Content-Security-Policy"), StartsWith("default-src 'none'; script-src 'self';"));
  EXPECT_EQ(page->get_header_value("X-Frame-Options"), "DENY");
}

TEST_F(Served, AFollowerHearsOfChanges) {
  Serve();
  std::string heard;
  const auto follow = [&](const char* data, std::size_t size) {
    const bool is_first = heard.empty();
    heard.append(data, size);
    // After the first message, with all devices, a device changes.
    if (is_first) live_.Add(1, Good(7));
    const std::size_t second = heard.find("data: [", 1);
    return second == std::string::npos || heard.find("\n\n", second) == std::string::npos;
  };
  client_->Get("/api/v1/follow", follow);
  const std::size_t end = heard.find("\n\n");
  ASSERT_THAT(heard, StartsWith("data: ["));
  EXPECT_EQ(json::parse(heard.substr(6, end - 6)).size(), 2u);
  EXPECT_THAT(heard.substr(end + 2), StartsWith("event: alarms\ndata: {}\n\n"));
  const std::size_t next = heard.find("data: [", 1) + 6;
  const json second = json::parse(heard.substr(next, heard.find("\n\n", next) - next));
  ASSERT_EQ(second.size(), 1u);
  EXPECT_EQ(second[0]["device"], "other");
  EXPECT_EQ(second[0]["value"]["text"], "7");
}

TEST_F(Served, AnAlarmIsAcknowledgedByItsOwnPageAlone) {
  directory_.WriteFile("token", "0123456789abcdef");
  Serve({.token_file = directory_.Path("token")});
  const std::string host = "127.0.0.1:" + std::to_string(service_->port());
  const httplib::Headers token = {
      {"Authorization", "Bearer 0123456789abcdef"}
  };
  const auto post = [&](const char* operation, const char* body, httplib::Headers headers,
                        const char* type = "application/json") {
    const std::string path = std::string("/api/v1/alarms/too%20warm/") + operation;
    const auto reply = client_->Post(path, headers, body, type);
    return reply ? reply->status : -1;
  };
  const auto with = [&](const char* name, const std::string& value) {
    httplib::Headers headers = token;
    headers.emplace(name, value);
    return headers;
  };
  alarms_.Add(0, Good(285));
  const auto is_raised = [this] { return alarms_.Alarms()[0].state == AlarmState::kRaised; };
  while (!is_raised()) std::this_thread::yield();

  constexpr char kWho[] = R"({"who": "jo"})";
  EXPECT_EQ(post("acknowledge", kWho, {}), 401);
  EXPECT_EQ(post("acknowledge", kWho, with("Origin", "http://evil.example")), 403);
  EXPECT_EQ(post("acknowledge", kWho, with("Origin", "null")), 403);
  EXPECT_EQ(post("acknowledge", kWho, with("Sec-Fetch-Site", "cross-site")), 403);
  EXPECT_EQ(post("acknowledge", kWho, token, "text/plain"), 415);
  for (const char* const body :
       {"", "[]", "{}", R"({"who": ""})", R"({"who": "a\nb"})", R"({"who": 1})", R"({"who": "jo", "why": "x"})"}) {
    EXPECT_EQ(post("acknowledge", body, token), 400) << body;
  }
  EXPECT_EQ(post("shelve", R"({"who": "jo", "why": "works", "for": "0s"})", token), 400);
  EXPECT_EQ(post("forget", kWho, token), 405);
  ASSERT_TRUE(is_raised());
  EXPECT_EQ(post("acknowledge", kWho, with("Origin", "http://" + host)), 200);
  EXPECT_EQ(alarms_.Alarms()[0].acknowledged_by, "jo");
  EXPECT_EQ(post("acknowledge", kWho, token), 409);
  EXPECT_EQ(post("shelve", R"({"who": "jo", "why": "works", "for": "2h"})", token), 200);
  EXPECT_EQ(alarms_.Alarms()[0].shelving->why, "works");
  EXPECT_EQ(client_->Post("/api/v1/alarms/x/acknowledge", token, kWho, "application/json")->status, 404);
}

TEST_F(Served, SaysWhenALineHangs) {
  Serve();
  EXPECT_EQ(client_->Get("/healthz")->body, "ok\n");
  is_alive_ = false;
  EXPECT_EQ(Get("/healthz", 503)["error"]["code"], "line_hangs");
  EXPECT_EQ(Get("/nothing", 404)["error"]["code"], "not_found");
}

}  // namespace
}  // namespace fieldline::service
