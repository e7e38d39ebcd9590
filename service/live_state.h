#pragma once

#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <deque>
#include <map>
#include <mutex>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "polling/poller.h"
#include "service/watched_device.h"

namespace fieldline::service {

// How a device is, the worst last.
enum class Condition {
  kGood,
  kWaiting,   // no poll has ended yet
  kOverdue,   // the last result is so old that it says nothing any more
  kFailed,    // the last poll failed
  kLineLost,  // its line can't be used
};

// "good", "waiting" ...
std::string_view ToText(Condition condition);

// What is known of a device.
struct DeviceState {
  using Clock = std::chrono::steady_clock;

  std::optional<PollResult> last{};     // of the last poll; without the bytes of its exchanges
  Clock::time_point ended{};            // when that came back
  std::optional<PollResult> last_good;  // of the last good one, which may be the same
  Clock::time_point good_ended{};
  std::optional<Time> since{};  // from when on it has been good, or has failed with this code

  std::deque<std::optional<double>> recent{};  // the shown value of the last polls, nothing of those that failed

  std::uint64_t polls = 0;
  std::map<std::string, std::uint64_t, std::less<>> failures{};  // by code
  std::chrono::duration<double> total_duration{};                // of all polls
  std::uint64_t version = 0;                                     // of the last change, see LiveState::Version()

  // A reading is only shown as the device's value while this is kGood.
  Condition ConditionAt(Clock::time_point now, const SiteDevice& device) const;
};

// Polls whose values a device's state holds.
constexpr std::size_t kRecentPolls = 40;

// The latest result of each device, for all who show it. Everything may be called from any thread.
class LiveState {
 public:
  // `devices` must outlive this.
  explicit LiveState(std::span<const WatchedDevice> devices) : devices_(devices), states_(devices.size()) {}

  std::span<const WatchedDevice> devices() const { return devices_; }

  void Add(std::size_t device, const PollResult& result);

  // Something else that is shown has changed: who waits for a change looks.
  void Wake();

  DeviceState Get(std::size_t device) const;

  // Counts the changes. Device states carry the version in which they were changed last.
  std::uint64_t Version() const;

  // The devices that changed after `version`.
  std::vector<std::size_t> ChangedSince(std::uint64_t version) const;

  // Until something changed after `version`, at most `most`, or until Close().
  void WaitForChange(std::uint64_t version, std::chrono::milliseconds most) const;

  // Sleeps, until Close() at the latest.
  void WaitForClose(std::chrono::milliseconds most) const;

  // From now on nobody waits.
  void Close();
  bool IsClosed() const;

 private:
  const std::span<const WatchedDevice> devices_;
  mutable std::mutex mutex_;  // of all below
  mutable std::condition_variable changed_;
  std::vector<DeviceState> states_;
  std::uint64_t version_ = 0;
  bool is_closed_ = false;
};

}  // namespace fieldline::service
