#include "polling/watch/schedule.h"

#include <algorithm>

namespace fieldline {

Schedule::Schedule(std::span<const std::chrono::milliseconds> intervals, Clock::time_point start)
    : last_(intervals.size() - 1) {
  for (const std::chrono::milliseconds interval : intervals) entries_.push_back({interval, start, 2 * interval});
}

std::optional<Schedule::Turn> Schedule::Next(Clock::time_point now) const {
  std::optional<Turn> next;
  for (std::size_t i = 1; i <= entries_.size(); ++i) {
    const std::size_t device = (last_ + i) % entries_.size();
    const Entry& entry = entries_[device];
    if (entry.left) continue;
    if (entry.due <= now) return Turn{device, entry.due};
    if (!next || entry.due < next->due) next = Turn{device, entry.due};
  }
  return next;
}

void Schedule::Answered(std::size_t device, Clock::time_point now) {
  Entry& entry = entries_[device];
  entry.due = std::max(entry.due + entry.interval, now);
  entry.pause = 2 * entry.interval;
  last_ = device;
}

void Schedule::Silent(std::size_t device, Clock::time_point now, Clock::duration poll) {
  Entry& entry = entries_[device];
  const Clock::duration longest = std::max<Clock::duration>(kLongestPause, entry.interval);
  entry.pause = std::min(entry.pause, longest);
  entry.due = now + Spread(std::max(entry.pause, kRestPerSilence * poll));
  entry.pause *= 2;
  last_ = device;
}

Schedule::Clock::duration Schedule::Spread(Clock::duration pause) {
  constexpr unsigned kSteps = 256;
  return pause + pause / 4 * (random_() % kSteps) / kSteps;
}

void Schedule::Restart(Clock::time_point now) {
  for (Entry& entry : entries_) {
    entry.due = now;
    entry.pause = 2 * entry.interval;
  }
}

}  // namespace fieldline
