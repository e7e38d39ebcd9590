#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "polling/text.h"

namespace fieldline::tool {

// Bytes from hexadecimal words: "01 03", "0103". Throws UsageError.
Bytes ParseHexBytes(const std::vector<std::string>& words);

// Bytes from a text in which \r, \n, \\ and \xNN stand for what they do in C. Throws UsageError.
Bytes ParseEscapes(std::string_view text);

// What `form` makes of the bytes:
//
//   crc16      the bytes, then the CRC of Modbus RTU
//   hex-ascii  VER, ADR, CID1, CID2 and INFO as a frame of YD/T 1363
//   alarm      command and payload as a frame of the alarm board
//
// Empty leaves them as they are. Throws UsageError when they don't fit.
Bytes MakeFrame(const std::string& form, const Bytes& bytes);

}  // namespace fieldline::tool
