#pragma once

#include <chrono>
#include <cstddef>
#include <optional>
#include <random>
#include <span>
#include <vector>

namespace fieldline {

// Decides which device of a line is polled next. Devices that are due take turns. A device that does not answer waits
// longer after each poll, and always long enough to take at most a twentieth of the line's time. The caller passes the
// time; no clock is read.
class Schedule {
 public:
  using Clock = std::chrono::steady_clock;

  static constexpr int kRestPerSilence = 19;                // times the silent poll's own duration
  static constexpr std::chrono::seconds kLongestPause{30};  // unless the interval or the silent poll requires more

  // All devices are due at `start`.
  Schedule(std::span<const std::chrono::milliseconds> intervals, Clock::time_point start);

  struct Turn {
    std::size_t device;
    Clock::time_point due;  // in the future when none is due
  };

  // Nothing when no device is polled any longer.
  std::optional<Turn> Next(Clock::time_point now) const;

  // The result of a poll of the device, which ended at `now`.
  void Answered(std::size_t device, Clock::time_point now);
  void Silent(std::size_t device, Clock::time_point now, Clock::duration poll);

  // Makes every device due, whatever its last polls gave. For a line that was opened again.
  void Restart(Clock::time_point now);

  // The device is no longer polled.
  void Leave(std::size_t device) { entries_[device].left = true; }

 private:
  struct Entry {
    Clock::duration interval;
    Clock::time_point due;
    Clock::duration pause;  // before the next poll if this one is silent too
    bool left = false;
  };

  // Adds up to a quarter at random, so that silent devices are not always polled before the same living one.
  Clock::duration Spread(Clock::duration pause);

  std::vector<Entry> entries_;
  std::size_t last_;  // device that was polled last
  std::minstd_rand random_;
};

}  // namespace fieldline
