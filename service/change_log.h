#pragma once

#include <mutex>
#include <span>
#include <string>
#include <vector>

#include "polling/poller.h"
#include "service/watched_device.h"

namespace fieldline::service {

// Says when a device begins to fail, fails for another reason, or is good again.
class ChangeLog {
 public:
  // `devices` must outlive this.
  explicit ChangeLog(std::span<const WatchedDevice> devices) : devices_(devices), states_(devices.size()) {}

  // From any thread.
  void Add(std::size_t device, const PollResult& result);

 private:
  struct State {
    std::string code;  // of its failure; empty while it is good
  };

  const std::span<const WatchedDevice> devices_;
  std::mutex mutex_;
  std::vector<State> states_;
};

}  // namespace fieldline::service
