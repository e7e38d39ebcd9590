#pragma once

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <utility>

#include "sim/line.h"
#include "tests/support/make_device.h"
#include "tests/support/scripted_port.h"

namespace fieldline::test {

// A line of any speed. Devices are added by the names of their kinds.
class SimulatedLine : public sim::Line {
 public:
  explicit SimulatedLine(sim::Faults faults = {}) : Line({.any_baud = true, .paced = false}) {
    SetFaults(std::move(faults));
  }
  // With one device that answers at its usual address.
  explicit SimulatedLine(std::string_view kind, sim::Faults faults = {}) : SimulatedLine(std::move(faults)) {
    Add(kind, FindKind(kind)->address);
    EXPECT_TRUE(Start());
  }

  using Line::Add;
  sim::Device& Add(std::string_view kind, int address) { return Add(MakeDevice(kind, address)); }
};

// Answers every request with the same bytes, or with the request itself.
class Parrot final : public sim::Device {
 public:
  explicit Parrot(sim::Bytes answer = {}) : answer_(std::move(answer)) {}

  std::size_t Receive(std::span<const BYTE> received, bool silent, std::vector<sim::Reply>& replies) override {
    if (!silent) return 0;
    replies.push_back({answer_.empty() ? sim::Bytes(received.begin(), received.end()) : answer_});
    return received.size();
  }

 private:
  const sim::Bytes answer_;
};

}  // namespace fieldline::test
