#include "service/live_state.h"

#include <algorithm>

namespace fieldline::service {
namespace {

using std::chrono::milliseconds;

// A device that is polled as it should be has a new result within this time, whatever its line's other devices do.
milliseconds Patience(const SiteDevice& device) {
  constexpr milliseconds kAtLeast(60'000);
  return std::max(kAtLeast, 3 * device.interval);
}

std::string_view CodeOf(const PollResult& result) { return result.failure ? result.failure->code : std::string_view(); }

// The value that stands for the device, of a good poll.
std::optional<double> ShownNumber(const SiteDevice& device, const PollResult& result) {
  if (result.failure || result.record.empty() || IsText(device.fields[device.shown])) return std::nullopt;
  return PhysicalNumber(device.fields[device.shown], result.record.data());
}

}  // namespace

std::string_view ToText(Condition condition) {
  switch (condition) {
    case Condition::kGood:
      return "good";
    case Condition::kWaiting:
      return "waiting";
    case Condition::kOverdue:
      return "overdue";
    case Condition::kFailed:
      return "failed";
    case Condition::kLineLost:
      return "line_lost";
  }
  return {};
}

Condition DeviceState::ConditionAt(Clock::time_point now, const SiteDevice& device) const {
  if (!last) return Condition::kWaiting;
  if (last->failure && last->failure->exit == ExitCode::kNoLine) return Condition::kLineLost;
  if (last->failure) return Condition::kFailed;
  return now - ended > Patience(device) ? Condition::kOverdue : Condition::kGood;
}

void LiveState::Add(std::size_t device, const PollResult& result) {
  {
    const std::lock_guard lock(mutex_);
    DeviceState& state = states_[device];
    if (!state.last || CodeOf(*state.last) != CodeOf(result)) state.since = result.time;
    state.last = result;
    state.last->exchanges.clear();
    state.ended = DeviceState::Clock::now();
    if (result.failure) {
      ++state.failures[std::string(result.failure->code)];
    } else {
      state.last_good = state.last;
      state.good_ended = state.ended;
    }
    state.recent.push_back(ShownNumber(*devices_[device].device, result));
    if (state.recent.size() > kRecentPolls) state.recent.pop_front();
    ++state.polls;
    state.total_duration += result.duration;
    state.version = ++version_;
  }
  changed_.notify_all();
}

void LiveState::Wake() {
  {
    const std::lock_guard lock(mutex_);
    ++version_;
  }
  changed_.notify_all();
}

DeviceState LiveState::Get(std::size_t device) const {
  const std::lock_guard lock(mutex_);
  return states_[device];
}

std::uint64_t LiveState::Version() const {
  const std::lock_guard lock(mutex_);
  return version_;
}

std::vector<std::size_t> LiveState::ChangedSince(std::uint64_t version) const {
  std::vector<std::size_t> changed;
  const std::lock_guard lock(mutex_);
  for (std::size_t i = 0; i < states_.size(); ++i) {
    if (states_[i].version > version) changed.push_back(i);
  }
  return changed;
}

void LiveState::WaitForChange(std::uint64_t version, milliseconds most) const {
  std::unique_lock lock(mutex_);
  changed_.wait_for(lock, most, [&] { return is_closed_ || version_ > version; });
}

void LiveState::WaitForClose(milliseconds most) const {
  std::unique_lock lock(mutex_);
  changed_.wait_for(lock, most, [this] { return is_closed_; });
}

void LiveState::Close() {
  {
    const std::lock_guard lock(mutex_);
    is_closed_ = true;
  }
  changed_.notify_all();
}

bool LiveState::IsClosed() const {
  const std::lock_guard lock(mutex_);
  return is_closed_;
}

}  // namespace fieldline::service
