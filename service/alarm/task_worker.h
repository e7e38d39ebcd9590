#pragma once

#include <chrono>
#include <condition_variable>
#include <deque>
#include <functional>
#include <mutex>
#include <optional>
#include <string>
#include <thread>
#include <vector>

#include "service/alarm/alarm_task.h"

namespace fieldline::service {

// Carries out the tasks of one device, one after the other, on a thread of its own. While the device does not answer,
// all wait, with growing pauses between tries. A task that the device refuses is tried again later, and lets the others
// pass; after some refusals it is given up.
class TaskWorker {
 public:
  struct Result {
    enum class Kind {
      kDone,
      kRefused,  // the device is there, and does not do it
      kAbsent,   // the device can't be reached
    };
    Kind kind = Kind::kDone;
    std::string reason{};
  };

  // How a device is used. Both are called on the worker's thread.
  struct Hands {
    std::function<Result(const AlarmTask&)> execute;
    std::function<Result()> check;  // whether the device is there; may be empty
  };

  // Called on the worker's thread, after each try and each check: `task` is null after a check.
  using Report = std::function<void(const AlarmTask* task, const Result& result)>;

  struct Limits {
    std::chrono::milliseconds absent_pause{1000};  // doubles up to the longest
    std::chrono::milliseconds longest_absent_pause{60'000};
    std::chrono::milliseconds refused_pause{10'000};  // triples
    int most_refusals = 5;
    std::chrono::milliseconds check_pause{60'000};  // between two checks while there is nothing to do
    UnixTime most_age = 24 * kHour;                 // of a task whose device is absent
  };

  TaskWorker(Hands hands, Report report, const Limits& limits);

  // Ends after the task that is under way. What waits stays undone.
  ~TaskWorker();
  TaskWorker(const TaskWorker&) = delete;
  TaskWorker& operator=(const TaskWorker&) = delete;

  // From any thread. Returns those that wait and that this one makes void: another state of the same relay, another
  // page, speech and picture of the same alarm. So few wait, however often alarms come while the device is absent.
  std::vector<AlarmTask> Add(const AlarmTask& task);

 private:
  using Clock = std::chrono::steady_clock;

  struct Entry {
    AlarmTask task;
    Clock::time_point expires;  // while the device is absent
    Clock::time_point due{};
    int refusals = 0;
  };

  void Run(const std::stop_token& stop);
  std::optional<Entry> Next(std::unique_lock<std::mutex>& lock, const std::stop_token& stop);
  Result Execute(const AlarmTask& task) const;
  void Try(Entry entry);
  void CheckDevice();
  AlarmTask::Outcome OutcomeOf(const Entry& entry, Result::Kind kind) const;
  void Retry(Entry entry, Result::Kind kind);
  void FollowPresence(Result::Kind kind);

  const Hands hands_;
  const Report report_;
  const Limits limits_;

  std::mutex mutex_;  // of the tasks
  std::condition_variable_any wake_;
  std::deque<Entry> waiting_;     // without the one that is tried
  std::optional<Entry> current_;  // that is tried
  bool is_current_void_ = false;

  // Of the thread alone:
  std::chrono::milliseconds absent_pause_{0};  // 0: the device is there
  Clock::time_point absent_until_{};
  Clock::time_point next_check_{};

  std::jthread thread_;  // last: it uses all of the above
};

}  // namespace fieldline::service
