#pragma once

#include <algorithm>
#include <memory>
#include <vector>

#include "sim/device.h"
#include "tests/allocation/allocations.h"
#include "tests/support/stub_port.h"

namespace fieldline::test {

// A port with a simulated device behind it and no line between. What the device allocates is not counted.
class DevicePort final : public StubPort {
 public:
  explicit DevicePort(std::unique_ptr<sim::Device> device) : device_(std::move(device)) {}

  int Purge() override {
    pending_.clear();
    return 1;
  }

  int Read(BYTE* data, int count) override {
    const Uncounted uncounted;
    const int given = std::min(count, static_cast<int>(pending_.size()));
    std::copy_n(pending_.begin(), given, data);
    pending_.erase(pending_.begin(), pending_.begin() + given);
    return given;
  }

  int Write(const BYTE* data, int count) override {
    const Uncounted uncounted;
    std::vector<sim::Reply> replies;
    device_->Hear({data, static_cast<std::size_t>(count)}, true, replies);
    for (const sim::Reply& reply : replies) pending_.insert(pending_.end(), reply.bytes.begin(), reply.bytes.end());
    return count;
  }

 private:
  std::unique_ptr<sim::Device> device_;
  std::vector<BYTE> pending_;
};

}  // namespace fieldline::test
