#pragma once

#include <chrono>
#include <cstdint>
#include <random>
#include <vector>

#include "sim/device.h"

namespace fieldline::sim {

enum class Fault {
  kDrop,      // the reply is not sent
  kCorrupt,   // one bit of the reply is flipped
  kTruncate,  // the end of the reply is missing, at least one byte
  kNoise,     // one to four stray bytes come before the reply
  kTrail,     // one to four stray bytes come after the reply
  kRepeat,    // the reply is sent twice
  kAddress,   // the reply carries the next higher address, and is correct otherwise
  kDelay,     // the reply is late
  kDeaf,      // a device ignores what comes soon after a request to another device; not a fault of single replies
};

// A fault, and which replies of a line it hits. A reply is hit when any of the three conditions holds.
struct FaultRule {
  Fault fault = Fault::kDrop;
  unsigned nth = 0;                       // only this reply, counted from 1
  unsigned every = 0;                     // every n-th reply: 1 for all, 3 for the third, the sixth ...
  double probability = 0;                 // 0 to 1
  std::chrono::milliseconds delay{1000};  // of kDelay and kDeaf
};

// Applies faults to the replies of a line. With the same seed and rules, the same replies get the same faults.
class Faults {
 public:
  Faults() = default;  // none
  Faults(std::uint32_t seed, std::vector<FaultRule> rules);

  // Counts the reply of `device` and applies the faults that hit it. A dropped reply has no bytes afterwards.
  void Apply(const Device& device, Reply& reply);

  // How long a device ignores everything after a request to another device; 0 when none does.
  std::chrono::milliseconds DeafTime() const;

 private:
  bool Hits(const FaultRule& rule);
  Bytes StrayBytes();
  std::uint32_t Random(std::uint32_t below);

  std::mt19937 random_;
  std::vector<FaultRule> rules_;
  unsigned replies_ = 0;
};

}  // namespace fieldline::sim
