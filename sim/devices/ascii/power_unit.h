#pragma once

#include "sim/devices/ascii/hex_ascii.h"

namespace fieldline::sim {

// Power unit: four commands read 52 numbers, a fifth reads eleven state bytes.
class PowerUnit : public HexAsciiDevice {
 public:
  explicit PowerUnit(BYTE address);

 protected:
  std::optional<std::string> Answer(unsigned command, std::string_view info) override;

 private:
  std::string Floats(int first, int last);
  std::string States(int first, int last);
};

}  // namespace fieldline::sim
