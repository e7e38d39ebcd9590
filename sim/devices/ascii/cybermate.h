#pragma once

#include "sim/devices/ascii/hex_ascii.h"

namespace fieldline::sim {

// Fixed-point monitoring unit: five analog words, seven switch bytes, 26 alarm bytes and ten parameter bytes. Each
// group has its own command.
class Cybermate : public HexAsciiDevice {
 public:
  explicit Cybermate(BYTE address);

 protected:
  std::optional<std::string> Answer(unsigned command, std::string_view info) override;
};

}  // namespace fieldline::sim
