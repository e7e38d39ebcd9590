#pragma once

#include <cstdio>
#include <string>

#include "tests/support/golden_poll.h"

// Frames as a device makes them, by means of their own.
namespace fieldline::test {

// Appends CHKSUM and the carriage return to the characters from SOI to the end of INFO.
inline std::string Seal(const std::string& frame) {
  unsigned sum = 0;
  for (const char c : frame.substr(1)) sum += static_cast<unsigned char>(c);
  char checksum[5];
  std::snprintf(checksum, sizeof checksum, "%04X", (0x10000 - sum % 0x10000) % 0x10000);
  return frame + checksum + '\r';
}

// The eight characters of a number, least significant byte first.
inline std::string HexFloat(float value) {
  const auto* bytes = reinterpret_cast<const unsigned char*>(&value);
  char text[9];
  std::snprintf(text, sizeof text, "%02X%02X%02X%02X", bytes[0], bytes[1], bytes[2], bytes[3]);
  return text;
}

inline GoldenPoll& Add(GoldenPoll& poll, const std::string& request, int ask, const std::string& reply, Range writes) {
  poll.exchanges.push_back({Text(request), ask, Text(reply), {writes}});
  return poll;
}

inline void Append(GoldenPoll& poll, const Bytes& part) {
  poll.record.insert(poll.record.end(), part.begin(), part.end());
}

}  // namespace fieldline::test
