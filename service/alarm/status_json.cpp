#include "service/alarm/status_json.h"

#include <nlohmann/json.hpp>

#include "service/history/unix_time.h"

namespace fieldline::service {
namespace {

using nlohmann::json;

class Writer {
 public:
  explicit Writer(std::chrono::milliseconds offset) : offset_(offset) {}

  json ToJson(Time time) const { return ToUnixTime(time + offset_); }
  json ToJson(const std::optional<Time>& time) const { return time ? ToJson(*time) : json(); }

  json ToJson(const AlarmStatus& status) const {
    json all;
    all["state"] = StateName(status.state);
    all["changed"] = ToJson(status.changed);
    all["active"] = status.is_active;
    all["holds_since"] = ToJson(status.holds_since);
    all["returns_since"] = ToJson(status.returns_since);
    all["acknowledged_by"] = status.acknowledged_by;
    if (status.cause) {
      json& cause = all["cause"];
      cause["device"] = status.cause->device;
      cause["field"] = status.cause->field;
      cause["number"] = status.cause->number ? json(*status.cause->number) : json();
      cause["text"] = status.cause->text;
    }
    if (status.shelving) {
      json& shelving = all["shelving"];
      shelving["until"] = ToJson(status.shelving->until);
      shelving["who"] = status.shelving->who;
      shelving["why"] = status.shelving->why;
    }
    for (const auto& window : status.windows) {
      json& parts = all["windows"].emplace_back(json::array());
      for (const ChangeWindow::Part& part : window) parts.push_back({ToJson(part.from), part.least, part.most});
    }
    return all;
  }

 private:
  const std::chrono::milliseconds offset_;
};

Time ReadTime(const json& time) { return ToTime(time.get<UnixTime>()); }

std::optional<Time> ReadOptionalTime(const json& time) {
  return time.is_null() ? std::nullopt : std::optional(ReadTime(time));
}

AlarmState ReadState(const std::string& name) {
  using enum AlarmState;
  for (const AlarmState state : {kWaiting, kRaised, kAcknowledged, kReturned, kShelved}) {
    if (StateName(state) == name) return state;
  }
  return kCleared;
}

AlarmStatus ReadStatus(const json& all) {
  AlarmStatus status;
  status.state = ReadState(all.at("state").get<std::string>());
  status.changed = ReadTime(all.at("changed"));
  status.is_active = all.at("active").get<bool>();
  status.holds_since = ReadOptionalTime(all.at("holds_since"));
  status.returns_since = ReadOptionalTime(all.at("returns_since"));
  status.acknowledged_by = all.at("acknowledged_by").get<std::string>();
  if (const auto cause = all.find("cause"); cause != all.end()) {
    const json& number = cause->at("number");
    status.cause = {cause->at("device").get<std::string>(), cause->at("field").get<std::string>(),
                    number.is_null() ? std::nullopt : std::optional(number.get<double>()),
                    cause->at("text").get<std::string>()};
  }
  if (const auto shelving = all.find("shelving"); shelving != all.end()) {
    status.shelving = {ReadTime(shelving->at("until")), shelving->at("who").get<std::string>(),
                       shelving->at("why").get<std::string>()};
  }
  if (const auto windows = all.find("windows"); windows != all.end()) {
    for (const json& parts : *windows) {
      auto& window = status.windows.emplace_back();
      for (const json& part : parts) {
        window.push_back({ReadTime(part.at(0)), part.at(1).get<double>(), part.at(2).get<double>()});
      }
    }
  }
  return status;
}

}  // namespace

std::string ToJsonText(const SavedAlarm& alarm, std::chrono::milliseconds offset) {
  const Writer writer(offset);
  json all = writer.ToJson(alarm.status);
  all["raised"] = writer.ToJson(alarm.duty.raised);
  all["told"] = writer.ToJson(alarm.duty.told);
  all["escalated"] = alarm.duty.is_escalated;
  all["test_until"] = writer.ToJson(alarm.test_until);
  return all.dump(-1, ' ', false, json::error_handler_t::replace);
}

std::optional<SavedAlarm> ParseSavedAlarm(const std::string& text) {
  try {
    const json all = json::parse(text);
    SavedAlarm alarm{ReadStatus(all)};
    alarm.duty.raised = ReadOptionalTime(all.at("raised"));
    alarm.duty.told = ReadTime(all.at("told"));
    alarm.duty.is_escalated = all.at("escalated").get<bool>();
    alarm.test_until = ReadOptionalTime(all.at("test_until"));
    return alarm;
  } catch (const json::exception&) {
    return std::nullopt;
  }
}

}  // namespace fieldline::service
