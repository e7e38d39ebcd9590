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
  std::chrono::milliseconds delay{0};  // from the end of the request, or of the reply before this one
};

// A simulated device as it hangs on a line. Once its line runs, the line's thread alone uses it; its values may be read
// and set by anyone at any time.
class Device {
 public:
  Device() = default;
  virtual ~Device() = default;
  Device(const Device&) = delete;
  Device& operator=(const Device&) = delete;

  // Hears the bytes that came on the line and that no device has taken yet. Every device of the line is asked in turn,
  // each time bytes have come and once more when the line has fallen silent, that is, for longer than 3.5 characters.
  // What nobody takes by then is forgotten.
  //
  // Returns how many bytes it takes from the front of `received`: a whole request of its own, whether answered or not.
  // 0 leaves them: the request is not complete yet, or not for this device. What it answers is appended to `replies`.
  //
  // Framed devices take a request as soon as its last byte is there; devices that know the end of a frame only by
  // silence (Modbus RTU) return 0 until `silent`.
  virtual std::size_t Hear(std::span<const BYTE> received, bool silent, std::vector<Reply>& replies) = 0;

  Values& values() { return values_; }

 private:
  Values values_;
};

}  // namespace fieldline::sim
