#pragma once

#include <gtest/gtest.h>

#include <memory>
#include <string_view>
#include <utility>
#include <vector>

#include "sim/line.h"
#include "tests/support/make_device.h"

namespace fieldline::test {

constexpr sim::LineOptions kAnySpeed = {.any_baud = true, .paced = false};

// A line with one simulated device at its usual address.
inline std::unique_ptr<sim::Line> StartDevice(std::string_view kind, sim::Faults faults = {}) {
  auto line = std::make_unique<sim::Line>(kAnySpeed);
  line->Add(MakeDevice(kind, FindKind(kind)->address));
  line->SetFaults(std::move(faults));
  EXPECT_TRUE(line->Start());
  return line;
}

// Answers whatever it hears with the same bytes, or with what it heard.
class Parrot final : public sim::Device {
 public:
  explicit Parrot(sim::Bytes answer = {}) : answer_(std::move(answer)) {}

  std::size_t Hear(std::span<const BYTE> received, bool silent, std::vector<sim::Reply>& replies) override {
    if (!silent) return 0;
    replies.push_back({answer_.empty() ? sim::Bytes(received.begin(), received.end()) : answer_});
    return received.size();
  }

 private:
  const sim::Bytes answer_;
};

}  // namespace fieldline::test
