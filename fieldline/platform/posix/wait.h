#pragma once

#include <poll.h>
#include <time.h>

#include <algorithm>
#include <cerrno>
#include <cstdint>

namespace fieldline {

// A point in time on the monotonic clock, `ms` milliseconds after construction.
class Deadline {
 public:
  explicit Deadline(std::int64_t ms) : end_ns_(NowNs() + std::clamp<std::int64_t>(ms, 0, kLongestMs) * kNsPerMs) {}

  std::int64_t RemainingNs() const { return std::max<std::int64_t>(end_ns_ - NowNs(), 0); }

 private:
  static constexpr std::int64_t kNsPerMs = 1'000'000;
  static constexpr std::int64_t kLongestMs = INT64_MAX / kNsPerMs / 2;  // 146 years; added to now it can't overflow

  static std::int64_t NowNs() {
    timespec now;
    clock_gettime(CLOCK_MONOTONIC, &now);
    return std::int64_t{now.tv_sec} * 1'000'000'000 + now.tv_nsec;
  }

  std::int64_t end_ns_;
};

// Waits until `fd` reports one of `events` (POLLIN, POLLOUT) or a failure. Returns the reported events, 0 when the
// deadline passed first. Signals do not end the wait. With a negative `fd`, only waits for the deadline.
inline short WaitFor(int fd, short events, const Deadline& deadline) {
  // Waits at most one day at a time, because a 32-bit kernel can't take every duration.
  constexpr std::int64_t kLongestWaitNs = std::int64_t{24} * 3600 * 1'000'000'000;

  for (;;) {
    const std::int64_t wait_ns = std::min(deadline.RemainingNs(), kLongestWaitNs);
    const timespec wait = {static_cast<time_t>(wait_ns / 1'000'000'000), static_cast<long>(wait_ns % 1'000'000'000)};
    pollfd polled = {fd, events, 0};
    const int ready = ppoll(&polled, 1, &wait, nullptr);
    if (ready > 0) return polled.revents;
    if (ready < 0 && errno != EINTR) return POLLERR;
    if (deadline.RemainingNs() == 0) return 0;
  }
}

inline bool IsGone(short events) { return (events & (POLLHUP | POLLERR | POLLNVAL)) != 0; }

}  // namespace fieldline
