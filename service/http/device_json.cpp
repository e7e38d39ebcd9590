#include "service/http/device_json.h"

#include "polling/record/poll_json.h"
#include "polling/record/record_json.h"
#include "polling/text.h"
#include "service/http/advice.h"

namespace fieldline::service {
namespace {

using nlohmann::ordered_json;
using Clock = DeviceState::Clock;

std::int64_t Age(Clock::time_point then, Clock::time_point now) {
  return std::chrono::floor<std::chrono::milliseconds>(now - then).count();
}

// The field that stands for the device.
ordered_json ShownValue(const SiteDevice& device, const PollResult& result) {
  if (result.record.empty()) return {};
  const RecordField& field = device.fields[device.shown];
  ordered_json json;
  json["field"] = field.name;
  if (IsText(field)) {
    json["text"] = RecordText(field, result.record.data());
    return json;
  }
  const double number = PhysicalNumber(field, result.record.data());
  json["number"] = number;
  json["unit"] = field.unit;
  json["text"] = PhysicalNumberText(field, result.record.data());
  if (!IsPlausible(field, number)) json["plausible"] = false;
  return json;
}

ordered_json LastGood(const SiteDevice& device, const DeviceState& state, Clock::time_point now) {
  if (!state.last_good) return {};
  ordered_json json;
  json["time"] = IsoTime(state.last_good->time);
  json["age_ms"] = Age(state.good_ended, now);
  json["value"] = ShownValue(device, *state.last_good);
  return json;
}

}  // namespace

ordered_json FailureToJson(std::string_view code, const std::string& message) {
  ordered_json json;
  json["code"] = code;
  json["message"] = message;
  json["advice"] = AdviceFor(code);
  return json;
}

ordered_json DeviceToJson(const WatchedDevice& watched, const DeviceState& state, Clock::time_point now) {
  const SiteDevice& device = *watched.device;
  const Condition condition = state.ConditionAt(now, device);
  ordered_json json;
  json["line"] = watched.line->name;
  json["device"] = device.name;
  json["kind"] = device.kind->name;
  json["condition"] = ToText(condition);
  json["since"] = state.since ? ordered_json(IsoTime(*state.since)) : ordered_json();
  json["age_ms"] = state.last ? ordered_json(Age(state.ended, now)) : ordered_json();
  json["value"] = condition == Condition::kGood ? ShownValue(device, *state.last) : ordered_json();
  json["warning"] = state.last && state.last->warning ? ordered_json(state.last->warning->message) : ordered_json();
  json["error"] = state.last && state.last->failure
                      ? FailureToJson(state.last->failure->code, state.last->failure->message)
                      : ordered_json();
  json["last_good"] = condition == Condition::kGood ? ordered_json() : LastGood(device, state, now);
  json["polls"] = state.polls;
  std::uint64_t failed = 0;
  for (const auto& [code, count] : state.failures) failed += count;
  json["failed_polls"] = failed;
  return json;
}

ordered_json LatestToJson(const WatchedDevice& watched, const DeviceState& state, Clock::time_point now) {
  const SiteDevice& device = *watched.device;
  ordered_json json;
  if (state.last) {
    json = PollHead(*device.kind, device.address, watched.line->name, device.name, *state.last);
  } else {
    json["device"] = device.name;
  }
  json["condition"] = ToText(state.ConditionAt(now, device));
  if (!state.last) return json;
  json["age_ms"] = Age(state.ended, now);
  AddOutcome(json, *state.last, device.fields);
  if (state.last->failure) {
    json["error"]["advice"] = AdviceFor(state.last->failure->code);
    if (state.last_good) {
      ordered_json& good = json["last_good"];
      good["time"] = IsoTime(state.last_good->time);
      good["age_ms"] = Age(state.good_ended, now);
      AddOutcome(good, *state.last_good, device.fields);
    }
  }
  return json;
}

std::string ToText(const ordered_json& json) {
  return json.dump(-1, ' ', false, ordered_json::error_handler_t::replace);
}

}  // namespace fieldline::service
