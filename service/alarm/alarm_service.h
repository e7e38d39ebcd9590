#pragma once

#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <deque>
#include <functional>
#include <mutex>
#include <optional>
#include <string>
#include <thread>
#include <vector>

#include "polling/alarm/alarm_evaluator.h"
#include "polling/poller.h"
#include "polling/site/site.h"
#include "service/alarm/action_tasks.h"
#include "service/alarm/alarm_clock.h"
#include "service/alarm/alarm_duty.h"
#include "service/alarm/alarm_store.h"
#include "service/alarm/alarm_view.h"
#include "service/alarm/device_hands.h"
#include "service/alarm/task_dispatcher.h"
#include "service/alarm/task_worker.h"

namespace fieldline::service {

// Decides on the alarms of a site with each poll, keeps them in the history's database, and has done what they ask for.
// Works on threads of its own, so that no poll waits for it.
class AlarmService {
 public:
  // Is told, in a sentence, what a person should know.
  using Notice = std::function<void(const std::string&)>;

  // Goes on where the database's last alarms ended. `site` must outlive this. `times_set_aside` counts how often
  // another database came in place of a damaged one.
  AlarmService(
      const Site& site, const std::string& history_path, ActingHands hands, Notice notice,
      std::function<int()> times_set_aside = [] { return 0; }, const TaskWorker::Limits& limits = {});

  // Stores the states. What was not done yet is done after the next start.
  ~AlarmService();
  AlarmService(const AlarmService&) = delete;
  AlarmService& operator=(const AlarmService&) = delete;

  // Hears of all alarms, and from then on of each change. It is called on any thread, one call after the other, and
  // must return at once without calling back: this is where alarms are handed over to a broker. After an empty one
  // nobody hears.
  using Listener = std::function<void(const AlarmView&)>;
  void Listen(Listener listener);

  // Is called after any change of what is shown, as a listener is.
  void WhenChanged(std::function<void()> changed);

  // A poll has ended. From any thread; never waits for more than another of these.
  void Add(std::size_t device, const PollResult& result);

  // The rest may be called from any thread.
  bool IsEmpty() const { return rules_.rules.empty(); }
  std::vector<AlarmView> Alarms() const;  // in the order of the rules
  std::vector<ActorView> ActorStates() const;
  std::uint64_t Version() const;  // of what is shown

  enum class Verdict {
    kDone,
    kUnknown,  // there is no such alarm
    kUseless,  // the alarm is in no state for it
  };
  Verdict Acknowledge(const std::string& alarm, const std::string& who);
  Verdict Shelve(const std::string& alarm, std::chrono::milliseconds time, const std::string& who,
                 const std::string& why);
  Verdict Unshelve(const std::string& alarm, const std::string& who);

  // Raises the alarm for a minute, marked as a test, whatever its condition.
  Verdict Test(const std::string& alarm);

 private:
  using Clock = std::chrono::steady_clock;

  struct Poll {
    std::size_t device;
    AlarmReading::Quality quality;
    Bytes record;
    Clock::time_point ended;
  };
  struct Alarm {
    AlarmDuty duty{};
    std::optional<Time> test_until{};
    std::uint64_t raises = 0;
  };

  // Does the step under the lock, stores what it changed, hands out what it began, and tells who listens.
  void Apply(const std::function<void()>& step);
  void Commit();

  void Run(const std::stop_token& stop);
  std::vector<Poll> TakePolls(const std::stop_token& stop);
  void Take(const Poll& poll);
  void TakeSwitch(const AlarmReading& reading, AlarmTime now);
  void Tick();
  void Restore();

  AlarmState StateOf(std::size_t alarm) const;
  AlarmView ViewOf(std::size_t alarm) const;
  void Follow(const AlarmEvaluator::Changes& changes);
  void Log(const AlarmChange& change);
  void BeginRaise(std::size_t alarm, Time now);
  void BeginTest(std::size_t alarm, Time now);
  void EndTest(std::size_t alarm, Time now, const std::string& who);
  void Remind(std::size_t alarm, Time now);
  void Save(std::size_t alarm);

  Occasion OccasionOf(std::size_t alarm) const;
  void AddTasks(std::size_t alarm, const std::vector<AlarmAction>& actions);
  void RepeatTasks(std::size_t alarm);
  void ReleaseRelays(std::size_t alarm, const std::vector<RelayAction>& before);
  bool IsHeldByAnother(std::size_t alarm, const RelayAction& relay) const;
  std::vector<RelayAction> RelaysOf(std::size_t alarm) const;
  void OnReport(ActingDevice device, const AlarmTask* task, const TaskWorker::Result& result);

  const std::string unit_;
  const AlarmRules& rules_;
  const Notice notice_;

  std::mutex polls_mutex_;
  std::condition_variable_any polls_came_;
  std::deque<Poll> polls_;

  mutable std::mutex mutex_;  // of all below
  AlarmClock clock_;
  AlarmEvaluator evaluator_;
  std::vector<Alarm> alarms_;  // by rule
  std::optional<AlarmConditionState> switch_;
  Truth switch_was_ = Truth::kUnknown;
  AlarmStore store_;
  Clock::time_point next_save_{};
  Clock::time_point next_tick_{};
  const std::function<int()> times_set_aside_;
  int known_set_aside_ = 0;

  std::uint64_t version_ = 1;
  bool has_changed_ = false;          // something that is shown, in this step
  std::vector<std::size_t> touched_;  // alarms that changed in it
  Listener listener_;
  std::function<void()> changed_;

  // Last: their threads use all of the above.
  TaskDispatcher tasks_;
  std::jthread thread_;
};

}  // namespace fieldline::service
