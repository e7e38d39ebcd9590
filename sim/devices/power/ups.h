#pragma once

#include <string>

#include "sim/device.h"

namespace fieldline::sim {

// Uninterruptible power supply with a line-oriented ASCII protocol: commands Q1 (status), I (identification) and F
// (ratings), each ended by a carriage return. It has no address and does not answer anything else.
class Ups : public Device {
 public:
  Ups();

  std::size_t Receive(std::span<const BYTE> received, bool silent, std::vector<Reply>& replies) override;

 private:
  std::string Status();
  std::string Identification();
  std::string Ratings();
};

}  // namespace fieldline::sim
