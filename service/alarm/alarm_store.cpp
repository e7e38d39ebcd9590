#include "service/alarm/alarm_store.h"

#include <thread>

#include "service/history/schema.h"

namespace fieldline::service {
namespace {

using namespace std::chrono_literals;

constexpr auto kBetweenTries = 5s;
constexpr std::size_t kMostEvents = 10'000;  // that wait to be written

void WriteTask(const AlarmTask& task, Statement& write) {
  write.Bind(task.id, task.alarm, task.raised, task.created, NameOf(task.kind), task.target, task.text, task.number,
             static_cast<int>(task.is_test), static_cast<int>(task.is_other_way), NameOf(task.outcome), task.tries,
             task.reason, task.ended);
  write.Run();
}

}  // namespace

AlarmStore::Content AlarmStore::Load(UnixTime now) {
  constexpr int kTries = 10;
  constexpr auto kPause = 300ms;
  std::string reason;
  for (int i = 0; i < kTries; ++i) {
    if (i > 0) std::this_thread::sleep_for(kPause);
    try {
      Open();
      Content content = Read(now);
      statuses_ = content.statuses;
      for (const AlarmTask& task : content.tasks) {
        if (task.ended == 0) tasks_[task.id] = task;
      }
      return content;
    } catch (const DatabaseError& error) {
      database_.reset();
      reason = error.what();
    }
  }
  Fail(reason);
  return {};
}

void AlarmStore::Open() {
  if (database_) return;
  database_.emplace(path_, Database::Mode::kWrite);
  try {
    // What has to be done survives a power failure, too.
    database_->Run("PRAGMA synchronous = FULL");
    Transaction transaction(*database_);
    PrepareTables(*database_);
    transaction.Commit();
  } catch (...) {
    database_.reset();
    throw;
  }
}

AlarmStore::Content AlarmStore::Read(UnixTime now) {
  Content content;
  Statement statuses(*database_, "SELECT alarm, status FROM alarm_status");
  while (statuses.Step()) content.statuses[statuses.Text(0)] = statuses.Text(1);
  content.tasks = ReadTasks(
      "ended IS NULL OR (alarm <> '' AND raised = (SELECT max(raised) FROM alarm_task AS latest "
      "WHERE latest.alarm = alarm_task.alarm)) AND raised >= ?",
      0);
  content.messages = ReadTasks("kind IN ('sms', 'mms', 'dial') AND created >= ?", now - kHour);
  content.last_task = database_->Query("SELECT max(id) FROM alarm_task");
  return content;
}

std::vector<AlarmTask> AlarmStore::ReadTasks(const std::string& condition, UnixTime from) {
  Statement find(
      *database_,
      "SELECT id, alarm, raised, created, kind, target, text, number, test, other_way, outcome, tries, reason, "
      "ended FROM alarm_task WHERE " +
          condition + " ORDER BY id");
  find.Bind(from);
  std::vector<AlarmTask> tasks;
  while (find.Step()) {
    const AlarmTask::Kind* const kind = FindTaskKind(find.Text(4));
    const AlarmTask::Outcome* const outcome = FindTaskOutcome(find.Text(10));
    if (kind == nullptr || outcome == nullptr) continue;  // of another version
    tasks.push_back({.id = find.Integer(0),
                     .alarm = find.Text(1),
                     .raised = find.Integer(2),
                     .created = find.Integer(3),
                     .kind = *kind,
                     .target = find.Text(5),
                     .text = find.Text(6),
                     .number = static_cast<int>(find.Integer(7)),
                     .is_test = find.Integer(8) != 0,
                     .is_other_way = find.Integer(9) != 0,
                     .outcome = *outcome,
                     .tries = static_cast<int>(find.Integer(11)),
                     .reason = find.Text(12),
                     .ended = find.Integer(13)});
  }
  return tasks;
}

void AlarmStore::PutStatus(const std::string& alarm, const std::string& status) {
  std::string& known = statuses_[alarm];
  if (known == status) return;
  known = status;
  changed_statuses_[alarm] = status;
}

void AlarmStore::RemoveStatus(const std::string& alarm) {
  statuses_.erase(alarm);
  changed_statuses_[alarm] = std::nullopt;
}

void AlarmStore::PutTask(const AlarmTask& task) {
  changed_tasks_[task.id] = task;
  if (task.ended == 0) {
    tasks_[task.id] = task;
  } else {
    tasks_.erase(task.id);
  }
}

void AlarmStore::AddEvent(const AlarmEvent& event) {
  if (events_.size() < kMostEvents) events_.push_back(event);
}

void AlarmStore::Flush() {
  if (changed_statuses_.empty() && changed_tasks_.empty() && events_.empty()) return;
  if (!database_ && Clock::now() < next_try_) return;
  try {
    Open();
    Write();
    if (!trouble_.empty()) notice_("the alarms are stored again");
    trouble_.clear();
  } catch (const DatabaseError& error) {
    Fail(error.what());
  }
}

void AlarmStore::Write() {
  Transaction transaction(*database_);
  Statement put(*database_, "INSERT OR REPLACE INTO alarm_status (alarm, status) VALUES (?, ?)");
  Statement remove(*database_, "DELETE FROM alarm_status WHERE alarm = ?");
  for (const auto& [alarm, status] : changed_statuses_) {
    if (status) {
      put.Bind(alarm, *status).Run();
    } else {
      remove.Bind(alarm).Run();
    }
  }
  Statement write(*database_,
                  "INSERT OR REPLACE INTO alarm_task (id, alarm, raised, created, kind, target, text, number, test, "
                  "other_way, outcome, tries, reason, ended) "
                  "VALUES (?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, nullif(?, 0))");
  for (const auto& [id, task] : changed_tasks_) WriteTask(task, write);
  Statement add(*database_,
                "INSERT INTO alarm_change (time, alarm, severity, was, state, device, field, text, who, why, test) "
                "VALUES (?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?)");
  for (const AlarmEvent& event : events_) {
    add.Bind(event.time, event.alarm, event.severity, event.was, event.state, event.device, event.field, event.text,
             event.who, event.why, static_cast<int>(event.is_test));
    add.Run();
  }
  transaction.Commit();
  changed_statuses_.clear();
  changed_tasks_.clear();
  events_.clear();
}

void AlarmStore::Reopen() {
  database_.reset();
  next_try_ = {};
  for (const auto& [alarm, status] : statuses_) changed_statuses_[alarm] = status;
  for (const auto& [id, task] : tasks_) changed_tasks_[id] = task;
  Flush();
}

std::vector<std::string> AlarmStore::TakeTests(UnixTime from) {
  std::vector<std::string> alarms;
  if (!database_ && Clock::now() < next_try_) return alarms;
  try {
    Open();
    {
      Statement find(*database_, "SELECT alarm, time FROM alarm_test ORDER BY time");
      bool is_any = false;
      while (find.Step()) {
        is_any = true;
        if (find.Integer(1) >= from) alarms.push_back(find.Text(0));
      }
      if (!is_any) return alarms;
    }
    database_->Run("DELETE FROM alarm_test");
  } catch (const DatabaseError& error) {
    Fail(error.what());
    alarms.clear();
  }
  return alarms;
}

void AlarmStore::Fail(const std::string& reason) {
  database_.reset();
  next_try_ = Clock::now() + kBetweenTries;
  if (trouble_ == reason) return;
  trouble_ = reason;
  notice_("the alarms can't be stored: " + reason + "; they go on, but a restart forgets them");
}

}  // namespace fieldline::service
