#include "service/alarm/alarm_json.h"

#include "polling/text.h"

namespace fieldline::service {
namespace {

using nlohmann::ordered_json;

ordered_json TextOrNull(const std::string& text) { return text.empty() ? ordered_json() : ordered_json(text); }

ordered_json TimeOrNull(const std::optional<Time>& time) {
  return time ? ordered_json(IsoTime(*time)) : ordered_json();
}

ordered_json TaskToJson(const AlarmTask& task) {
  ordered_json json;
  json["action"] = NameOf(task.kind);
  const bool is_relay = task.kind == AlarmTask::Kind::kRelay;
  json["to"] = TextOrNull(task.target + (!is_relay ? "" : task.number != 0 ? " on" : " off"));
  json["outcome"] = NameOf(task.outcome);
  json["time"] = IsoTime(ToTime(task.ended != 0 ? task.ended : task.created));
  json["tries"] = task.tries;
  json["reason"] = TextOrNull(task.reason);
  return json;
}

}  // namespace

ordered_json AlarmToJson(const AlarmView& alarm) {
  ordered_json json;
  json["alarm"] = alarm.rule->name;
  json["severity"] = SeverityName(alarm.rule->severity);
  json["state"] = StateName(alarm.state);
  json["test"] = alarm.is_test;
  json["since"] = IsoTime(alarm.changed);
  json["raised"] = TimeOrNull(alarm.raised);
  json["device"] = alarm.cause ? ordered_json(alarm.cause->device) : ordered_json();
  json["field"] = alarm.cause ? TextOrNull(alarm.cause->field) : ordered_json();
  json["value"] = alarm.cause && alarm.cause->number ? ordered_json(*alarm.cause->number) : ordered_json();
  json["text"] = alarm.cause ? ordered_json(alarm.cause->text) : ordered_json();
  json["acknowledged_by"] = TextOrNull(alarm.acknowledged_by);
  json["shelved"] = ordered_json();
  if (alarm.shelving) {
    json["shelved"] = {
        {"until", IsoTime(alarm.shelving->until)},
        {"who",   alarm.shelving->who           },
        {"why",   alarm.shelving->why           }
    };
  }
  json["told"] = ordered_json::array();
  for (const AlarmTask& task : alarm.told) json["told"].push_back(TaskToJson(task));
  return json;
}

ordered_json ActorToJson(const ActorView& actor) {
  ordered_json json;
  json["device"] = actor.name;
  json["trouble"] = TextOrNull(actor.trouble);
  json["since"] = actor.trouble.empty() ? ordered_json() : ordered_json(IsoTime(actor.since));
  json["waiting"] = actor.waiting;
  return json;
}

ordered_json AlarmEventToJson(const HistoryEvent& event) {
  ordered_json json;
  json["alarm"] = event.alarm;
  json["time"] = IsoTime(ToTime(event.began));
  json["severity"] = event.severity;
  json["was"] = event.was;
  json["state"] = event.state;
  json["test"] = event.is_test;
  json["device"] = TextOrNull(event.device);
  json["field"] = TextOrNull(event.field);
  json["text"] = TextOrNull(event.text);
  json["who"] = TextOrNull(event.who);
  json["why"] = TextOrNull(event.why);
  return json;
}

}  // namespace fieldline::service
