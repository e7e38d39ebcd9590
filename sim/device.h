#pragma once

#include <chrono>
#include <cstddef>
#include <span>
#include <vector>

#include "fieldline/types.h"
#include "sim/values.h"

namespace fieldline::sim {

using Bytes = std::vector<BYTE>;

struct Reply {
  Bytes bytes;
  std::chrono::milliseconds delay{0};  // after the end of the request or of the previous reply
};

// A simulated device on a line. Once the line runs, only the line's thread uses the device; its values are thread-safe
// and can be read and set at any time.
class Device {
 public:
  Device() = default;
  virtual ~Device() = default;
  Device(const Device&) = delete;
  Device& operator=(const Device&) = delete;

  // Gets the bytes that the line has received and no device has taken yet. The line calls every device in turn, each
  // time it has received bytes and once more after a silence of more than 3.5 characters. Bytes that no device takes by
  // then are dropped.
  //
  // Returns how many bytes the device takes from the start of `received`: a whole request for this device, answered or
  // not. Returns 0 when the request is not complete yet or not for this device. Appends its answers to `replies`.
  //
  // Devices that recognize the end of a frame take a request as soon as its last byte is there. Devices that need
  // silence for that (Modbus RTU) return 0 until `silent`.
  virtual std::size_t Receive(std::span<const BYTE> received, bool silent, std::vector<Reply>& replies) = 0;

  // Makes a reply look like another device's: changes the address in it, and its checksum accordingly. Does nothing for
  // a protocol without addresses.
  virtual void ChangeAddress(Bytes& /*reply*/) const {}

  Values& values() { return values_; }

 private:
  Values values_;
};

}  // namespace fieldline::sim
