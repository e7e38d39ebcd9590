#pragma once

#include "sim/devices/ascii/hex_ascii.h"

namespace fieldline::sim {

// Card terminal: answers with the card last read, 13 bytes, and a state byte that is 0 when the card is valid.
class CardTerminal : public HexAsciiDevice {
 public:
  CardTerminal();

 protected:
  std::optional<std::string> Answer(unsigned command, std::string_view info) override;
};

}  // namespace fieldline::sim
