#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "sim/device.h"

namespace fieldline::sim {

// A device with the frames of YD/T 1363. It hears only sound requests with its start character, version, address and
// type, and answers a command that it doesn't know with return code 04.
class HexAsciiDevice : public Device {
 public:
  std::size_t Hear(std::span<const BYTE> received, bool silent, std::vector<Reply>& replies) override;

 protected:
  struct Identity {
    char start;
    unsigned version;
    unsigned address;
    unsigned type;  // CID1
  };

  explicit HexAsciiDevice(const Identity& identity);

  // INFO of the answer to a command (CID2) that came with `info`; nothing for a command that the device doesn't know.
  virtual std::optional<std::string> Answer(unsigned command, std::string_view info) = 0;

 private:
  const std::string head_;  // start, version, address and type as they stand in every frame
};

// Characters of INFO.
std::string HexByte(unsigned value);
std::string HexWord(unsigned value);
std::string HexFloat(double value);  // single precision, least significant byte first

}  // namespace fieldline::sim
