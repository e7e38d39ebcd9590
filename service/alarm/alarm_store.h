#pragma once

#include <chrono>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "service/alarm/alarm_task.h"
#include "service/history/database.h"

namespace fieldline::service {

// A change of an alarm's state, for the log of events.
struct AlarmEvent {
  UnixTime time = 0;
  std::string alarm{};
  std::string severity{};
  std::string was{};
  std::string state{};
  std::string device{};  // of the cause
  std::string field{};
  std::string text{};
  std::string who{};
  std::string why{};
  bool is_test = false;
};

// Keeps alarms in the history's database: states, changes, and what is to be done. Holds a copy of all that is not
// finished, so that nothing is lost while the database can't be written, or when a new one is begun. One thread uses it
// at a time. Throws nothing but std::bad_alloc.
class AlarmStore {
 public:
  using Notice = std::function<void(const std::string&)>;

  AlarmStore(std::string path, Notice notice) : path_(std::move(path)), notice_(std::move(notice)) {}

  // What the database holds.
  struct Content {
    std::map<std::string, std::string> statuses;  // by alarm
    std::vector<AlarmTask> tasks;                 // all that have not ended, and those of the last raise of each alarm
    std::vector<AlarmTask> messages;              // of the last hour, and the last summary
    std::int64_t last_task = 0;                   // highest id
  };

  // Call this first. Waits some seconds for a database that is about to be set aside; then goes on without one.
  Content Load(UnixTime now);

  // These are written together by the next Flush().
  void PutStatus(const std::string& alarm, const std::string& status);
  void RemoveStatus(const std::string& alarm);
  void PutTask(const AlarmTask& task);
  void AddEvent(const AlarmEvent& event);

  // In one transaction. When that fails, all is kept for the next call.
  void Flush();

  // Another file is at the path by now.
  void Reopen();

  // Alarms that were asked for as a test since `from`. Forgets them.
  std::vector<std::string> TakeTests(UnixTime from);

 private:
  using Clock = std::chrono::steady_clock;

  void Open();
  Content Read(UnixTime now);
  std::vector<AlarmTask> ReadTasks(const std::string& condition, UnixTime from);
  void Write();
  void Fail(const std::string& reason);

  const std::string path_;
  const Notice notice_;
  std::optional<Database> database_;
  std::string trouble_;  // that was told last
  Clock::time_point next_try_{};

  std::map<std::string, std::string> statuses_;
  std::map<std::int64_t, AlarmTask> tasks_;  // that have not ended
  // To be written:
  std::map<std::string, std::optional<std::string>> changed_statuses_;
  std::map<std::int64_t, AlarmTask> changed_tasks_;
  std::vector<AlarmEvent> events_;
};

}  // namespace fieldline::service
