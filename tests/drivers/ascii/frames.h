#pragma once

#include <bit>
#include <cstdint>
#include <cstdio>
#include <string>

// Frames as a device makes them, by means of their own.
namespace fieldline::test {

// Puts CHKSUM and the carriage return behind the characters from SOI to the end of INFO.
inline std::string Seal(const std::string& frame) {
  unsigned sum = 0;
  for (const char c : frame.substr(1)) sum += static_cast<unsigned char>(c);
  char checksum[5];
  std::snprintf(checksum, sizeof checksum, "%04X", (0x10000 - sum % 0x10000) % 0x10000);
  return frame + checksum + '\r';
}

// The eight characters of a number, least significant byte first.
inline std::string HexFloat(float value) {
  std::string text;
  for (std::uint32_t rest = std::bit_cast<std::uint32_t>(value), i = 0; i < 4; ++i, rest >>= 8) {
    char byte[3];
    std::snprintf(byte, sizeof byte, "%02X", rest & 0xFF);
    text += byte;
  }
  return text;
}

}  // namespace fieldline::test
