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

}  // namespace fieldline::test
