#pragma once

#include <algorithm>
#include <memory>
#include <utility>
#include <vector>

#include "sim/device.h"
#include "tests/support/stub_port.h"

namespace fieldline::test {

// A port connected directly to a simulated device, without a line. One thread uses it at a time, as any port.
class DevicePort : public StubPort {
 public:
  explicit DevicePort(std::unique_ptr<sim::Device> device) : device_(std::move(device)) {}
  virtual ~DevicePort() = default;

  sim::Device& device() { return *device_; }

  int Purge() override {
    waiting_.clear();
    return 1;
  }
  int Read(BYTE* data, int count) override {
    const int given = std::min(count, static_cast<int>(waiting_.size()));
    std::copy_n(waiting_.begin(), given, data);
    waiting_.erase(waiting_.begin(), waiting_.begin() + given);
    return given;
  }
  int Write(const BYTE* data, int count) override {
    std::vector<sim::Reply> replies;
    device_->Receive({data, static_cast<std::size_t>(count)}, true, replies);
    for (const sim::Reply& reply : replies) waiting_.insert(waiting_.end(), reply.bytes.begin(), reply.bytes.end());
    return count;
  }

 private:
  const std::unique_ptr<sim::Device> device_;
  std::vector<BYTE> waiting_;
};

}  // namespace fieldline::test
