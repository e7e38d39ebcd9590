#pragma once

#include <gtest/gtest.h>

#include <string>
#include <string_view>
#include <vector>

#include "fieldline/platform/pseudo_terminal.h"
#include "fieldline/platform/serial_device.h"

namespace fieldline {

using Bytes = std::vector<BYTE>;

inline Bytes EveryByteValue() {
  Bytes bytes(256);
  for (std::size_t i = 0; i < bytes.size(); ++i) bytes[i] = static_cast<BYTE>(i);
  return bytes;
}

// A serial line in software with nobody at its near end yet.
class SerialLineFixture : public testing::Test {
 protected:
  static constexpr int kPatienceMs = 20'000;  // only a failure lasts that long

  void SetUp() override {
    ASSERT_TRUE(far_.Open());
    const std::string_view path(far_.Path());
    name_.assign(path.begin(), path.end());
    name_ += L':';
  }
  void TearDown() override { near_.Close(); }

  void OpenNear(const SerialTimeouts& timeouts = {0, kPatienceMs, 0, kPatienceMs}) {
    ASSERT_EQ(SerialDevice::OpenResult::kOpened, near_.Open(name_.c_str()));
    ASSERT_TRUE(near_.SetTimeouts(timeouts));
  }

  Bytes ReadFar(std::size_t count) {
    Bytes bytes(count);
    std::size_t received = 0;
    while (received < count) {
      const int taken = far_.Read(bytes.data() + received, static_cast<int>(count - received), kPatienceMs);
      if (taken < 1) break;
      received += static_cast<std::size_t>(taken);
    }
    bytes.resize(received);
    return bytes;
  }

  Bytes ReadNear(int count) {
    Bytes bytes(static_cast<std::size_t>(count));
    bytes.resize(static_cast<std::size_t>(near_.Read(bytes.data(), count)));
    return bytes;
  }

  int WriteFar(const Bytes& bytes) { return far_.Write(bytes.data(), static_cast<int>(bytes.size())); }
  int WriteNear(const Bytes& bytes) { return near_.Write(bytes.data(), static_cast<int>(bytes.size())); }

  PseudoTerminal far_;
  SerialDevice near_;
  std::wstring name_;  // device name of the near end
};

}  // namespace fieldline
