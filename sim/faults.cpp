#include "sim/faults.h"

#include <utility>

namespace fieldline::sim {

Faults::Faults(std::uint32_t seed, std::vector<FaultRule> rules) : random_(seed), rules_(std::move(rules)) {}

void Faults::Apply(const Device& device, Reply& reply) {
  ++replies_;
  Bytes& bytes = reply.bytes;
  for (const FaultRule& rule : rules_) {
    if (!Hits(rule) || bytes.empty()) continue;
    const auto length = static_cast<std::uint32_t>(bytes.size());
    switch (rule.fault) {
      case Fault::kDrop:
        bytes.clear();
        break;
      case Fault::kCorrupt:
        bytes[Random(length)] ^= static_cast<BYTE>(1u << Random(8));
        break;
      case Fault::kTruncate:
        bytes.resize(Random(length));
        break;
      case Fault::kNoise: {
        const Bytes noise = StrayBytes();
        bytes.insert(bytes.begin(), noise.begin(), noise.end());
        break;
      }
      case Fault::kTrail: {
        const Bytes noise = StrayBytes();
        bytes.insert(bytes.end(), noise.begin(), noise.end());
        break;
      }
      case Fault::kRepeat: {
        const Bytes again = bytes;
        bytes.insert(bytes.end(), again.begin(), again.end());
        break;
      }
      case Fault::kAddress:
        device.ChangeAddress(bytes);
        break;
      case Fault::kDelay:
        reply.delay += rule.delay;
        break;
      case Fault::kDeaf:
        break;
    }
  }
}

std::chrono::milliseconds Faults::DeafTime() const {
  std::chrono::milliseconds time{0};
  for (const FaultRule& rule : rules_) {
    if (rule.fault == Fault::kDeaf) time = rule.delay;
  }
  return time;
}

Bytes Faults::StrayBytes() {
  Bytes bytes(1 + Random(4));
  for (BYTE& byte : bytes) byte = static_cast<BYTE>(Random(256));
  return bytes;
}

bool Faults::Hits(const FaultRule& rule) {
  const bool by_chance =
      rule.probability > 0 && static_cast<std::uint32_t>(random_()) / 4294967296.0 < rule.probability;
  return by_chance || replies_ == rule.nth || (rule.every > 0 && replies_ % rule.every == 0);
}

// Not a standard distribution: those differ between standard libraries, and the same seed would give other faults.
std::uint32_t Faults::Random(std::uint32_t below) { return static_cast<std::uint32_t>(random_() % below); }

}  // namespace fieldline::sim
