#pragma once

#include "sim/devices/hex_ascii.h"

namespace fieldline::sim {

// Fixed-point monitoring unit: five analog words, seven switch, 26 alarm and ten parameter bytes, each kind with a
// command of its own.
class Cybermate : public HexAsciiDevice {
 public:
  explicit Cybermate(BYTE address);

 protected:
  std::optional<std::string> Answer(unsigned command, std::string_view info) override;
};

}  // namespace fieldline::sim
