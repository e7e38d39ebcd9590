#pragma once

#include <chrono>
#include <cstddef>
#include <optional>
#include <random>
#include <span>
#include <vector>

namespace fieldline {

// Whose turn it is on a line. Devices that are due take turns; one that does not answer waits longer and longer, and at
// least so long that it takes no more than a twentieth of the line's time. Reads no clock: it is told the time.
class Schedule {
 public:
  using Clock = std::chrono::steady_clock;

  static constexpr int kRestPerSilence = 19;                // times the silent poll's own duration
  static constexpr std::chrono::seconds kLongestPause{30};  // unless the interval or the poll makes it longer

  // All devices are due at `start`.
  Schedule(std::span<const std::chrono::milliseconds> intervals, Clock::time_point start);

  struct Turn {
    std::size_t device;
    Clock::time_point due;  // in the future when none is due
  };

  // Nothing when all devices have left.
  std::optional<Turn> Next(Clock::time_point now) const;

  // What came of a poll of the device that ended at `now`.
  void Answered(std::size_t device, Clock::time_point now);
  void Silent(std::size_t device, Clock::time_point now, Clock::duration poll);

  // Every device is due, whatever came of its last polls: the line is new.
  void Restart(Clock::time_point now);

  // The device has no turn any more.
  void Leave(std::size_t device) { entries_[device].left = true; }

 private:
  struct Entry {
    Clock::duration interval;
    Clock::time_point due;
    Clock::duration pause;  // before the next poll if this one is silent, too
    bool left = false;
  };

  // Up to a quarter longer, so that silent devices do not keep coming before the same living one.
  Clock::duration Spread(Clock::duration pause);

  std::vector<Entry> entries_;
  std::size_t last_;  // whose turn it was last
  std::minstd_rand random_;
};

}  // namespace fieldline
