#pragma once

#include <array>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "polling/alarm/alarm_rule.h"
#include "service/alarm/alarm_clock.h"
#include "service/alarm/alarm_store.h"
#include "service/alarm/alarm_view.h"
#include "service/alarm/device_hands.h"
#include "service/alarm/message_limit.h"
#include "service/alarm/task_worker.h"

namespace fieldline::service {

// Gives the tasks of alarms to the workers of the devices that do them, limits messages, and keeps each task and what
// became of it in the database. Not thread-safe: what the workers report on their threads is passed on to the user of
// this, who takes care that one call is under way at a time.
class TaskDispatcher {
 public:
  // Is told, in a sentence, what a person should know.
  using Notice = std::function<void(const std::string&)>;

  // All but `unit` must outlive this.
  TaskDispatcher(const std::string& unit, const AlarmRules& rules, const AlarmClock& clock, AlarmStore& store,
                 Notice notice);

  // Called on the threads of the workers; leads to TakeReport with the same arguments.
  using Report = std::function<void(ActingDevice device, const AlarmTask* task, const TaskWorker::Result& result)>;

  // Starts a worker for each device that the site has.
  void Employ(ActingHands hands, const Report& report, const TaskWorker::Limits& limits);

  // Goes on with what the database holds from before the start.
  void Restore(const AlarmStore::Content& content);

  // The alarm is raised again: what was done for an earlier raise is not shown any more.
  void BeginRaise(std::size_t alarm);

  // Numbers the task, stores it and begins it with the next HandOut(); a message above the hourly limit is held back.
  void Add(AlarmTask task);
  void AddUnlessWaiting(AlarmTask task);  // when no other for the same target waits

  // Sends what was held back as a summary, when it is time for that.
  void Summarise();

  // Gives the workers what was begun. The store must have been flushed: so a task is done once or twice when the
  // program is killed, and never not at all.
  void HandOut();

  // Keeps what became of a task. `task` is null after a check whether the device is there.
  void TakeReport(ActingDevice device, const AlarmTask* task, const TaskWorker::Result& result);

  // Nothing is handed out any more. A worker ends when it is destroyed, which waits for its last report.
  std::vector<std::unique_ptr<TaskWorker>> Dismiss();

  // Whether anything that is shown has changed since the last call.
  bool TakeChanged() { return std::exchange(has_changed_, false); }

  // Those of the last raise, and what waits.
  const std::vector<AlarmTask>& TasksOf(std::size_t alarm) const { return tasks_[alarm]; }
  std::vector<ActorView> Actors() const;

 private:
  struct Actor {
    std::string name{};
    std::string trouble{};
    Time since{};
    std::map<std::int64_t, AlarmTask> waiting{};
    std::unique_ptr<TaskWorker> worker{};
  };

  Actor& ActorOf(ActingDevice device) { return actors_[static_cast<std::size_t>(device)]; }
  Actor& ActorFor(AlarmTask::Kind kind);
  void RestoreTask(const AlarmTask& task);
  void End(AlarmTask task, AlarmTask::Outcome outcome);
  void Keep(const AlarmTask& task);
  void FollowPresence(Actor& actor, const TaskWorker::Result& result);
  UnixTime WallNow() const { return clock_.WallTime(clock_.Now().time); }

  const AlarmRules& rules_;
  const AlarmClock& clock_;
  AlarmStore& store_;
  const Notice notice_;

  MessageLimit limit_;
  std::int64_t last_task_ = 0;
  std::vector<std::vector<AlarmTask>> tasks_;  // by alarm
  std::vector<AlarmTask> begun_;               // that are stored before they are handed out
  std::array<Actor, kActingDevices> actors_;
  bool has_changed_ = false;
};

}  // namespace fieldline::service
