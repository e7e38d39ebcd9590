#include "service/http/alarm_post.h"

#include <algorithm>
#include <nlohmann/json.hpp>

#include "polling/record/poll_json.h"
#include "polling/site/duration.h"
#include "polling/text.h"
#include "polling/usage_error.h"
#include "service/alarm/alarm_json.h"
#include "service/http/device_json.h"

namespace fieldline::service {
namespace {

using nlohmann::ordered_json;
using Verdict = AlarmService::Verdict;

constexpr std::chrono::milliseconds kLongestShelving = std::chrono::days(30);

ordered_json RequireObject(const std::string& body, std::initializer_list<std::string_view> keys) {
  ordered_json json = ordered_json::parse(body, nullptr, false);
  if (!json.is_object()) throw UsageError("a JSON object is needed");
  for (const auto& [key, value] : json.items()) {
    if (std::ranges::find(keys, key) != keys.end()) continue;
    throw UsageError("there is no '" + Escaped(key) + "'; there are " +
                     Join(std::vector<std::string>(keys.begin(), keys.end())));
  }
  return json;
}

std::string RequireText(const ordered_json& json, const std::string& key) {
  constexpr std::size_t kMost = 200;  // bytes
  const auto found = json.find(key);
  if (found == json.end() || !found->is_string()) throw UsageError("'" + key + "' is needed, a text");
  std::string text = found->get<std::string>();
  const auto is_control = [](unsigned char c) { return c < ' ' || c == 0x7F; };
  const bool is_blank = text.find_first_not_of(' ') == std::string::npos;
  if (is_blank || text.size() > kMost || std::ranges::any_of(text, is_control)) {
    throw UsageError("'" + key + "' is a text of 1 to " + std::to_string(kMost) + " bytes, without control characters");
  }
  return text;
}

Reply ReplyFor(AlarmService& alarms, const std::string& name, Verdict verdict) {
  if (verdict == Verdict::kUnknown) return ErrorReply(404, "no_alarm", "there is no alarm '" + Escaped(name) + "'");
  if (verdict == Verdict::kUseless) {
    return ErrorReply(409, "wrong_state", "the alarm '" + Escaped(name) + "' is in no state for this");
  }
  ordered_json json;
  json["schema"] = kJsonSchema;
  for (const AlarmView& alarm : alarms.Alarms()) {
    if (alarm.rule->name == name) json["alarm"] = AlarmToJson(alarm);
  }
  return {200, "application/json", ToText(json) + '\n'};
}

}  // namespace

std::optional<Reply> PostToAlarm(AlarmService& alarms, const std::string& path, const std::string& body) {
  constexpr std::string_view kAlarms = "/api/v1/alarms/";
  const std::size_t slash = path.rfind('/');
  if (!path.starts_with(kAlarms) || slash < kAlarms.size()) return std::nullopt;
  const std::string name = path.substr(kAlarms.size(), slash - kAlarms.size());
  const std::string operation = path.substr(slash + 1);
  if (operation == "acknowledge") {
    const ordered_json json = RequireObject(body, {"who"});
    return ReplyFor(alarms, name, alarms.Acknowledge(name, RequireText(json, "who")));
  }
  if (operation == "unshelve") {
    const ordered_json json = RequireObject(body, {"who"});
    return ReplyFor(alarms, name, alarms.Unshelve(name, RequireText(json, "who")));
  }
  if (operation == "shelve") {
    const ordered_json json = RequireObject(body, {"for", "who", "why"});
    const auto time = ParseDuration(RequireText(json, "for"), kLongestShelving);
    if (!time || time->count() == 0) throw UsageError("'for' is a time such as \"2h\", at most 30 days");
    return ReplyFor(alarms, name, alarms.Shelve(name, *time, RequireText(json, "who"), RequireText(json, "why")));
  }
  return std::nullopt;
}

}  // namespace fieldline::service
