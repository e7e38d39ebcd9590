#include "service/alarm/task_worker.h"

#include <algorithm>
#include <exception>
#include <utility>

namespace fieldline::service {
namespace {

using Kind = AlarmTask::Kind;
using Outcome = AlarmTask::Outcome;
using std::chrono::milliseconds;

UnixTime Now() { return ToUnixTime(std::chrono::system_clock::now()); }

bool Replaces(const AlarmTask& task, const AlarmTask& earlier) {
  if (task.kind != earlier.kind) return false;
  const bool has_same_target = task.target == earlier.target;
  switch (task.kind) {
    case Kind::kDisplay:
      return true;
    case Kind::kRelay:
      return has_same_target;
    case Kind::kSpeech:
    case Kind::kPicture:
      return has_same_target && task.alarm == earlier.alarm;
    default:
      return false;
  }
}

}  // namespace

TaskWorker::TaskWorker(Hands hands, Report report, const Limits& limits)
    : hands_(std::move(hands)),
      report_(std::move(report)),
      limits_(limits),
      thread_([this](const std::stop_token& stop) { Run(stop); }) {}

TaskWorker::~TaskWorker() {
  thread_.request_stop();
  thread_.join();
}

std::vector<AlarmTask> TaskWorker::Add(const AlarmTask& task) {
  std::vector<AlarmTask> replaced;
  {
    const std::lock_guard lock(mutex_);
    std::erase_if(waiting_, [&](const Entry& entry) {
      if (!Replaces(task, entry.task)) return false;
      replaced.push_back(entry.task);
      return true;
    });
    if (current_ && Replaces(task, current_->task)) is_current_void_ = true;
    const UnixTime age = std::clamp<UnixTime>(Now() - task.created, 0, limits_.most_age);
    waiting_.push_back({task, Clock::now() + milliseconds(limits_.most_age - age)});
  }
  wake_.notify_one();
  return replaced;
}

void TaskWorker::Run(const std::stop_token& stop) {
  while (!stop.stop_requested()) {
    std::optional<Entry> entry;
    {
      std::unique_lock lock(mutex_);
      entry = Next(lock, stop);
    }
    if (entry) {
      Try(std::move(*entry));
    } else if (!stop.stop_requested() && Clock::now() >= next_check_) {
      CheckDevice();
    }
  }
}

// The next task that is due; nothing when it is time for something else.
std::optional<TaskWorker::Entry> TaskWorker::Next(std::unique_lock<std::mutex>& lock, const std::stop_token& stop) {
  constexpr std::chrono::seconds kLongest(10);
  const Clock::time_point now = Clock::now();
  Clock::time_point wake = now + kLongest;
  if (hands_.check) wake = std::min(wake, next_check_);
  if (now < absent_until_) {
    wake = std::min(wake, absent_until_);
  } else {
    for (auto entry = waiting_.begin(); entry != waiting_.end(); ++entry) {
      wake = std::min(wake, entry->due);
      if (entry->due > now) continue;
      current_ = *entry;
      is_current_void_ = false;
      waiting_.erase(entry);
      return current_;
    }
  }
  const std::size_t known = waiting_.size();
  const bool is_absent = now < absent_until_;
  wake_.wait_until(lock, stop, wake, [&] { return !is_absent && waiting_.size() != known; });
  return std::nullopt;
}

TaskWorker::Result TaskWorker::Execute(const AlarmTask& task) const {
  try {
    return hands_.execute(task);
  } catch (const std::exception& error) {
    return {Result::Kind::kRefused, error.what()};
  }
}

void TaskWorker::Try(Entry entry) {
  const Result result = Execute(entry.task);
  FollowPresence(result.kind);
  AlarmTask& task = entry.task;
  ++task.tries;
  task.reason = result.reason;
  {
    const std::lock_guard lock(mutex_);
    current_.reset();
    task.outcome = OutcomeOf(entry, result.kind);
    if (task.outcome == Outcome::kWaiting) Retry(entry, result.kind);
  }
  if (task.outcome != Outcome::kWaiting) task.ended = Now();
  report_(&task, result);
}

AlarmTask::Outcome TaskWorker::OutcomeOf(const Entry& entry, Result::Kind kind) const {
  if (kind == Result::Kind::kDone) return Outcome::kDone;
  if (is_current_void_) return Outcome::kReplaced;
  const bool is_given_up =
      kind == Result::Kind::kRefused ? entry.refusals + 1 >= limits_.most_refusals : Clock::now() >= entry.expires;
  return is_given_up ? Outcome::kFailed : Outcome::kWaiting;
}

// Keeps the order: what could not be done since the device is absent comes first again.
void TaskWorker::Retry(Entry entry, Result::Kind kind) {
  entry.due = Clock::now();
  if (kind == Result::Kind::kRefused) {
    milliseconds pause = limits_.refused_pause;
    for (int i = 0; i < entry.refusals; ++i) pause *= 3;
    entry.due += pause;
    ++entry.refusals;
  }
  waiting_.push_front(std::move(entry));
}

void TaskWorker::CheckDevice() {
  next_check_ = Clock::now() + limits_.check_pause;
  if (!hands_.check || Clock::now() < absent_until_) return;
  const Result result = hands_.check();
  FollowPresence(result.kind);
  report_(nullptr, result);
}

void TaskWorker::FollowPresence(Result::Kind kind) {
  const Clock::time_point now = Clock::now();
  if (kind == Result::Kind::kAbsent) {
    absent_pause_ = std::clamp(2 * absent_pause_, limits_.absent_pause, limits_.longest_absent_pause);
    absent_until_ = now + absent_pause_;
  } else {
    absent_pause_ = {};
    absent_until_ = {};
    next_check_ = now + limits_.check_pause;
  }
}

}  // namespace fieldline::service
