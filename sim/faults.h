#pragma once

#include <chrono>
#include <cstdint>
#include <random>
#include <vector>

#include "sim/device.h"

namespace fieldline::sim {

enum class Fault {
  kDrop,      // the reply never comes
  kCorrupt,   // one bit of it is flipped
  kTruncate,  // its end is missing, at least one byte
  kNoise,     // one to four stray bytes come before it
  kDelay,     // it comes late
};

// Which replies of a line a fault befalls. A reply is hit when any of the three conditions holds.
struct FaultRule {
  Fault fault = Fault::kDrop;
  unsigned nth = 0;        // this reply alone, counted from 1
  unsigned every = 0;      // every such reply: 1 for all, 3 for the third, the sixth ...
  double probability = 0;  // 0 to 1
  std::chrono::milliseconds delay{1000};
};

// Injures the replies of a line. The same seed and rules injure the same replies in the same way.
class Faults {
 public:
  Faults() = default;  // none
  Faults(std::uint32_t seed, std::vector<FaultRule> rules);

  // Counts the reply and injures it; a dropped one is left without bytes.
  void Injure(Reply& reply);

 private:
  bool Hits(const FaultRule& rule);
  std::uint32_t Random(std::uint32_t below);

  std::mt19937 random_;
  std::vector<FaultRule> rules_;
  unsigned replies_ = 0;
};

}  // namespace fieldline::sim
