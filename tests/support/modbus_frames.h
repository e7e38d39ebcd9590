#pragma once

#include <string>
#include <vector>

#include "tests/support/scripted_port.h"

namespace fieldline::test {

// Frames for tests, made without the library's own checksum.

// The bytes and their Modbus CRC, low byte first.
Bytes WithCrc(Bytes bytes);
Bytes WithCrc(const std::string& hex);

// The reply of `device` that carries these registers, high byte first.
Bytes RegisterReply(BYTE device, BYTE function, const std::vector<WORD>& registers);

// `count` registers from `first` on: register k holds `base` + k.
std::vector<WORD> Counting(int base, int first, int count);

}  // namespace fieldline::test
