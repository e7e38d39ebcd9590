#include "service/alarm/action_tasks.h"

#include <iterator>
#include <sstream>
#include <utility>

#include "fieldline/platform/local_time.h"
#include "polling/text.h"
#include "service/alarm/message_text.h"

namespace fieldline::service {
namespace {

using Kind = AlarmTask::Kind;

constexpr std::size_t kMostSpoken = 500;  // bytes, which a frame of the board takes
constexpr char kUsualText[] = "{alarm}: {device} {value} since {since}";

std::vector<std::string> Words(const std::string& text) {
  std::istringstream words(text);
  return {std::istream_iterator<std::string>(words), {}};
}

std::string Fill(const std::string& text, const Occasion& occasion) {
  TextValues values{.unit = occasion.unit,
                    .alarm = occasion.rule.name,
                    .severity = std::string(SeverityName(occasion.rule.severity)),
                    .device = "no device",
                    .value = "no value",
                    .since = occasion.since ? LocalTimeText(*occasion.since / 1000) : std::string()};
  const auto& cause = occasion.status.cause;
  if (cause && !occasion.is_test) {
    values.device = cause->device;
    values.value = cause->text;
  }
  std::string prefix;
  if (occasion.is_test) prefix = "TEST: ";
  if (!occasion.is_test && occasion.status.state == AlarmState::kReturned) prefix = "Over: ";
  return ToBoardText(prefix + FillText(text, values));
}

std::string Spoken(const std::string& text, const Occasion& occasion) {
  return Fill(text, occasion).substr(0, kMostSpoken);
}

AlarmTask TaskFor(const Occasion& occasion, Kind kind, std::string target, std::string text) {
  return {.alarm = occasion.rule.name,
          .raised = occasion.raised,
          .kind = kind,
          .target = std::move(target),
          .text = std::move(text),
          .is_test = occasion.is_test};
}

// Another task of the same raise.
AlarmTask TaskLike(const AlarmTask& task, Kind kind, std::string target, std::string text) {
  return {.alarm = task.alarm,
          .raised = task.raised,
          .kind = kind,
          .target = std::move(target),
          .text = std::move(text),
          .is_test = task.is_test};
}

}  // namespace

std::vector<AlarmTask> TasksOf(const std::vector<AlarmAction>& actions, const Occasion& occasion) {
  std::vector<AlarmTask> tasks;
  const auto add = [&](Kind kind, const std::string& target, const std::string& text) {
    tasks.push_back(TaskFor(occasion, kind, target, text));
  };
  for (const AlarmAction& action : actions) {
    if (const auto* const sms = std::get_if<SmsAction>(&action)) {
      for (const std::string& number : sms->to) add(Kind::kSms, number, CutToSms(Fill(sms->text, occasion)));
    } else if (const auto* const dial = std::get_if<DialAction>(&action)) {
      add(Kind::kDial, dial->to, Spoken(dial->text, occasion));
    } else if (const auto* const speech = std::get_if<SpeechAction>(&action)) {
      add(Kind::kSpeech, {}, Spoken(speech->text, occasion));
    } else if (const auto* const picture = std::get_if<PictureAction>(&action)) {
      add(Kind::kPicture, picture->camera, Join(picture->mms, " "));
    } else if (const auto* const relay = std::get_if<RelayAction>(&action)) {
      tasks.push_back(RelayTask(relay->number, relay->on, occasion));
    } else if (const auto* const display = std::get_if<DisplayAction>(&action)) {
      add(Kind::kDisplay, std::to_string(display->page), {});
    }
  }
  return tasks;
}

AlarmTask RelayTask(int relay, bool on, const Occasion& occasion) {
  AlarmTask task = TaskFor(occasion, Kind::kRelay, std::to_string(relay), {});
  task.number = on ? 1 : 0;
  return task;
}

std::vector<AlarmTask> PictureMessages(const AlarmTask& taken, const std::string& path) {
  std::vector<AlarmTask> messages;
  for (const std::string& number : Words(taken.text)) messages.push_back(TaskLike(taken, Kind::kMms, number, path));
  return messages;
}

std::vector<AlarmTask> OtherWays(const AlarmTask& failed, const Occasion& occasion) {
  std::vector<AlarmTask> ways;
  if (failed.is_other_way) return ways;
  const auto add = [&](Kind kind, const std::string& number, const std::string& text) {
    ways.push_back(TaskLike(failed, kind, number, text));
    ways.back().is_other_way = true;
  };
  const std::string usual_text = CutToSms(Fill(kUsualText, occasion));
  if (failed.kind == Kind::kSms) add(Kind::kDial, failed.target, failed.text);
  if (failed.kind == Kind::kDial) add(Kind::kSms, failed.target, CutToSms(failed.text));
  if (failed.kind == Kind::kMms) add(Kind::kSms, failed.target, usual_text);
  if (failed.kind == Kind::kPicture) {
    for (const std::string& number : Words(failed.text)) add(Kind::kSms, number, usual_text);
  }
  return ways;
}

}  // namespace fieldline::service
