#include "service/alarm/task_dispatcher.h"

#include <algorithm>

#include "polling/text.h"
#include "service/alarm/message_text.h"

namespace fieldline::service {
namespace {

using Kind = AlarmTask::Kind;
using Outcome = AlarmTask::Outcome;

constexpr std::size_t kMostShown = 100;  // tasks of a raise, which may be repeated for months

}  // namespace

TaskDispatcher::TaskDispatcher(const std::string& unit, const AlarmRules& rules, const AlarmClock& clock,
                               AlarmStore& store, Notice notice)
    : rules_(rules),
      clock_(clock),
      store_(store),
      notice_(std::move(notice)),
      limit_(rules.settings.messages_per_hour, unit),
      tasks_(rules.rules.size()) {}

void TaskDispatcher::Employ(ActingHands hands, const Report& report, const TaskWorker::Limits& limits) {
  for (std::size_t i = 0; i < kActingDevices; ++i) {
    auto& [name, each] = hands[i];
    if (!each.execute) continue;
    const auto device = static_cast<ActingDevice>(i);
    TaskWorker::Limits own = limits;
    if (device == ActingDevice::kCameras) {  // a picture is of the moment
      own.refused_pause /= 2;
      own.most_refusals = 3;
    }
    actors_[i].name = std::move(name);
    actors_[i].worker = std::make_unique<TaskWorker>(
        std::move(each),
        [report, device](const AlarmTask* task, const TaskWorker::Result& result) { report(device, task, result); },
        own);
  }
}

TaskDispatcher::Actor& TaskDispatcher::ActorFor(Kind kind) {
  if (kind == Kind::kDisplay) return ActorOf(ActingDevice::kDisplay);
  return ActorOf(kind == Kind::kPicture ? ActingDevice::kCameras : ActingDevice::kBoard);
}

void TaskDispatcher::Restore(const AlarmStore::Content& content) {
  last_task_ = content.last_task;
  for (const AlarmTask& message : content.messages) {
    if (message.alarm.empty()) limit_.RestoreSummary(ToTime(message.created));
    const bool was_sent = message.outcome != Outcome::kHeld && message.outcome != Outcome::kSummarised;
    if (!message.alarm.empty() && was_sent) limit_.RestoreMessage(ToTime(message.created));
  }
  for (const AlarmTask& task : content.tasks) RestoreTask(task);
  has_changed_ = true;
}

void TaskDispatcher::RestoreTask(const AlarmTask& task) {
  const auto alarm = FindRule(rules_, task.alarm);
  if (alarm) tasks_[*alarm].push_back(task);
  if (task.outcome == Outcome::kHeld) {
    limit_.Hold(task, alarm ? rules_.rules[*alarm].severity : AlarmSeverity::kLow, clock_.Start());
  } else if (task.outcome == Outcome::kWaiting) {
    ActorFor(task.kind).waiting[task.id] = task;
    begun_.push_back(task);
  }
}

void TaskDispatcher::BeginRaise(std::size_t alarm) {
  std::erase_if(tasks_[alarm], [](const AlarmTask& task) { return task.ended != 0; });
}

void TaskDispatcher::Add(AlarmTask task) {
  const AlarmTime now = clock_.Now();
  task.id = ++last_task_;
  task.created = clock_.WallTime(now.time);
  const auto alarm = FindRule(rules_, task.alarm);
  // Who tests waits for the message; a summary is what the limit is about.
  if (IsMessage(task.kind) && alarm && !limit_.Admit(now.time) && !task.is_test) {
    task.outcome = Outcome::kHeld;
    limit_.Hold(task, rules_.rules[*alarm].severity, now.time);
  } else {
    begun_.push_back(task);
  }
  if (alarm) {
    std::vector<AlarmTask>& tasks = tasks_[*alarm];
    const auto oldest = std::ranges::find_if(tasks, [](const AlarmTask& each) { return each.ended != 0; });
    if (tasks.size() >= kMostShown && oldest != tasks.end()) tasks.erase(oldest);
    tasks.push_back(task);
  }
  Keep(task);
}

void TaskDispatcher::AddUnlessWaiting(AlarmTask task) {
  const auto alarm = FindRule(rules_, task.alarm);
  const auto is_same = [&](const AlarmTask& other) {
    return other.ended == 0 && other.kind == task.kind && other.target == task.target;
  };
  if (!alarm || std::ranges::none_of(tasks_[*alarm], is_same)) Add(std::move(task));
}

void TaskDispatcher::Summarise() {
  MessageLimit::Summaries summaries = limit_.Take(clock_.Now().time);
  for (AlarmTask& task : summaries.told) End(std::move(task), Outcome::kSummarised);
  for (AlarmTask& message : summaries.messages) {
    message.text = CutToSms(ToBoardText(message.text));
    Add(std::move(message));
  }
}

void TaskDispatcher::HandOut() {
  for (const AlarmTask& task : std::exchange(begun_, {})) {
    TaskWorker* const worker = ActorFor(task.kind).worker.get();
    if (worker == nullptr) continue;
    for (AlarmTask& replaced : worker->Add(task)) End(std::move(replaced), Outcome::kReplaced);
  }
}

void TaskDispatcher::TakeReport(ActingDevice device, const AlarmTask* task, const TaskWorker::Result& result) {
  FollowPresence(ActorOf(device), result);
  if (task == nullptr) return;
  AlarmTask kept = *task;
  if (kept.outcome == Outcome::kDone) kept.reason.clear();
  Keep(kept);
  if (result.kind != TaskWorker::Result::Kind::kRefused) return;
  const std::string name = std::string(NameOf(kept.kind)) + (kept.target.empty() ? "" : ' ' + kept.target);
  notice_("alarm \"" + Escaped(kept.alarm) + "\": " + name + " failed: " + result.reason +
          (kept.outcome == Outcome::kFailed ? "; given up" : "; it is tried again"));
}

void TaskDispatcher::FollowPresence(Actor& actor, const TaskWorker::Result& result) {
  const bool is_absent = result.kind == TaskWorker::Result::Kind::kAbsent;
  if (is_absent && actor.trouble.empty()) {
    actor.since = clock_.Now().time;
    notice_(Escaped(actor.name) + ": " + result.reason + "; what it is to do for alarms waits");
  } else if (!is_absent && !actor.trouble.empty()) {
    notice_(Escaped(actor.name) + " can be used again");
  }
  const std::string trouble = is_absent ? result.reason : std::string();
  if (actor.trouble != trouble) has_changed_ = true;
  actor.trouble = trouble;
}

void TaskDispatcher::End(AlarmTask task, Outcome outcome) {
  task.outcome = outcome;
  task.ended = WallNow();
  Keep(task);
}

void TaskDispatcher::Keep(const AlarmTask& task) {
  has_changed_ = true;
  store_.PutTask(task);
  Actor& actor = ActorFor(task.kind);
  if (task.outcome == Outcome::kWaiting) {
    actor.waiting[task.id] = task;
  } else {
    actor.waiting.erase(task.id);
  }
  if (const auto alarm = FindRule(rules_, task.alarm)) {
    std::vector<AlarmTask>& tasks = tasks_[*alarm];
    if (const auto known = std::ranges::find(tasks, task.id, &AlarmTask::id); known != tasks.end()) *known = task;
  }
}

std::vector<std::unique_ptr<TaskWorker>> TaskDispatcher::Dismiss() {
  std::vector<std::unique_ptr<TaskWorker>> workers;
  for (Actor& actor : actors_) workers.push_back(std::move(actor.worker));
  return workers;
}

std::vector<ActorView> TaskDispatcher::Actors() const {
  std::vector<ActorView> views;
  for (const Actor& actor : actors_) {
    if (actor.worker) views.push_back({actor.name, actor.trouble, clock_.OnWall(actor.since), actor.waiting.size()});
  }
  return views;
}

}  // namespace fieldline::service
