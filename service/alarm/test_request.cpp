#include "service/alarm/test_request.h"

#include <algorithm>
#include <chrono>
#include <filesystem>
#include <map>
#include <set>
#include <vector>

#include "fieldline/platform/console.h"
#include "polling/text.h"
#include "polling/usage_error.h"
#include "service/history/database.h"
#include "service/history/unix_time.h"

namespace fieldline::service {
namespace {

using namespace std::chrono_literals;
using Clock = std::chrono::steady_clock;

constexpr int kPause = 200;        // ms
constexpr auto kAnswerTime = 10s;  // for a service to take the request
constexpr auto kTestTime = 1min;

void RequireAlarm(const Site& site, const std::string& alarm) {
  std::vector<std::string> names;
  for (const AlarmRule& rule : site.alarms.rules) names.push_back(rule.name);
  if (std::ranges::find(names, alarm) != names.end()) return;
  throw UsageError("the site has no alarm '" + Escaped(alarm) + '\'' + DidYouMean(alarm, names));
}

// False when none takes it.
bool WaitUntilTaken(Database& database) {
  for (const auto end = Clock::now() + kAnswerTime; Clock::now() < end && SleepUnlessInterrupted(kPause);) {
    if (database.Query("SELECT count(*) FROM alarm_test") == 0) return true;
  }
  return false;
}

struct Task {
  std::string what;
  std::string outcome;
  bool has_ended;
};

std::map<std::int64_t, Task> ReadTasks(Database& database, const std::string& alarm, UnixTime from) {
  std::map<std::int64_t, Task> tasks;
  Statement find(database,
                 "SELECT id, kind, target, outcome, reason, ended FROM alarm_task "
                 "WHERE alarm = ? AND test = 1 AND raised >= ?");
  find.Bind(alarm, from);
  while (find.Step()) {
    const std::string reason = find.Text(4).empty() ? std::string() : " (" + find.Text(4) + ')';
    tasks[find.Integer(0)] = {find.Text(1) + (find.Text(2).empty() ? "" : ' ' + find.Text(2)), find.Text(3) + reason,
                              !find.IsNull(5)};
  }
  return tasks;
}

}  // namespace

ExitCode RequestTest(const Site& site, const std::string& history_path, const std::string& alarm, std::ostream& out) {
  RequireAlarm(site, alarm);
  std::error_code error;
  if (!std::filesystem::exists(history_path, error)) {
    throw UsageError("there is no " + history_path + ": does fieldlined run with this --state?");
  }
  Database database(history_path, Database::Mode::kWrite);
  const UnixTime from = ToUnixTime(std::chrono::system_clock::now());
  Statement(database, "INSERT INTO alarm_test (alarm, time) VALUES (?, ?)").Bind(alarm, from).Run();
  if (!WaitUntilTaken(database)) {
    Statement(database, "DELETE FROM alarm_test WHERE time = ?").Bind(from).Run();
    throw UsageError("no fieldlined runs with this --state");
  }
  std::map<std::int64_t, std::string> told;
  bool is_any = false;
  for (const auto end = Clock::now() + kTestTime; Clock::now() < end && SleepUnlessInterrupted(kPause);) {
    const std::map<std::int64_t, Task> tasks = ReadTasks(database, alarm, from);
    for (const auto& [id, task] : tasks) {
      if (told[id] == task.outcome) continue;
      told[id] = task.outcome;
      out << ForTerminal(task.what + ": " + task.outcome) << std::endl;
    }
    is_any = !tasks.empty();
    if (is_any && std::ranges::all_of(tasks, [](const auto& each) { return each.second.has_ended; })) {
      return ExitCode::kGood;
    }
    const bool is_raised =
        database.Query("SELECT count(*) FROM alarm_change WHERE test = 1 AND time >= " + std::to_string(from)) > 0;
    if (!is_raised && Clock::now() > end - kTestTime + 2s) {
      throw UsageError("the alarm is raised already, or its service has another site file");
    }
    const bool has_actions = std::ranges::any_of(
        site.alarms.rules, [&](const AlarmRule& rule) { return rule.name == alarm && !rule.plan.actions.empty(); });
    if (is_raised && !has_actions) {
      out << "raised; it has no actions" << std::endl;
      return ExitCode::kGood;
    }
  }
  out << (is_any ? "not all was done within a minute; it is tried on" : "nothing was done") << std::endl;
  return ExitCode::kSomeFailed;
}

}  // namespace fieldline::service
