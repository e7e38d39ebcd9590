#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "sim/device.h"

namespace fieldline::sim {

// A device with the frames of YD/T 1363. It takes only valid requests with its own start character, version, address
// and type. An unknown command is answered with return code 04.
class HexAsciiDevice : public Device {
 public:
  std::size_t Receive(std::span<const BYTE> received, bool silent, std::vector<Reply>& replies) override;
  void ChangeAddress(Bytes& reply) const override;

 protected:
  struct Identity {
    char start;
    unsigned version;
    unsigned address;
    unsigned type;  // CID1
  };

  explicit HexAsciiDevice(const Identity& identity);

  // The INFO of the answer to command CID2 with the INFO `info`. Nothing for an unknown command.
  virtual std::optional<std::string> Answer(unsigned command, std::string_view info) = 0;

 private:
  const std::string head_;  // start, version, address and type, as in every frame
  const unsigned address_;
};

// Numbers as characters of INFO.
std::string HexByte(unsigned value);
std::string HexWord(unsigned value);
std::string HexFloat(double value);  // single precision, least significant byte first

}  // namespace fieldline::sim
