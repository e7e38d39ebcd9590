#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "polling/text.h"

namespace fieldline::tool {

// Reads bytes from hexadecimal words: "01 03", "0103". Throws UsageError.
Bytes ParseHexBytes(const std::vector<std::string>& words);

// The bytes of a text in which \r, \n, \\ and \xNN have the same meaning as in C. Throws UsageError.
Bytes ParseEscapes(std::string_view text);

// Completes the bytes to a frame, as `form` says:
//
//   crc16      the bytes, then the CRC of Modbus RTU
//   hex-ascii  VER, ADR, CID1, CID2 and INFO as a frame of YD/T 1363
//   alarm      command and payload as a frame of the alarm board
//
// An empty `form` leaves the bytes unchanged. Throws UsageError for an unknown form, and for too few or too many bytes.
Bytes MakeFrame(const std::string& form, const Bytes& bytes);

}  // namespace fieldline::tool
