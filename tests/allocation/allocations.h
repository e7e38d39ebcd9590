#pragma once

#include "tests/support/device_port.h"

namespace fieldline::test {

// This program's operator new counts, and fails on demand.
struct Allocations {
  int made = 0;   // since the last look
  int alive = 0;  // made and not freed
  bool fail = false;
  bool paused = false;  // neither count nor fail: what the test itself allocates
};

Allocations& Heap();

// Leaves out of the count what is allocated while it lives.
class Uncounted {
 public:
  Uncounted() : before_(Heap().paused) { Heap().paused = true; }
  Uncounted(const Uncounted&) = delete;
  Uncounted& operator=(const Uncounted&) = delete;
  ~Uncounted() { Heap().paused = before_; }

 private:
  bool before_;
};

// A simulated device whose own allocations are not counted.
class UncountedDevicePort final : public DevicePort {
 public:
  using DevicePort::DevicePort;

  int Read(BYTE* data, int count) override {
    const Uncounted uncounted;
    return DevicePort::Read(data, count);
  }
  int Write(const BYTE* data, int count) override {
    const Uncounted uncounted;
    return DevicePort::Write(data, count);
  }
};

}  // namespace fieldline::test
