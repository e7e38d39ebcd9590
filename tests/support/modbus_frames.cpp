#include "tests/support/modbus_frames.h"

#include <utility>

namespace fieldline::test {

Bytes WithCrc(Bytes bytes) {
  unsigned crc = 0xFFFF;
  for (const BYTE byte : bytes) {
    crc ^= byte;
    for (int bit = 0; bit < 8; ++bit) {
      const bool carry = crc & 1;
      crc >>= 1;
      if (carry) crc ^= 0xA001;
    }
  }
  bytes.push_back(static_cast<BYTE>(crc & 0xFF));
  bytes.push_back(static_cast<BYTE>(crc >> 8));
  return bytes;
}

Bytes WithCrc(const std::string& hex) { return WithCrc(Hex(hex)); }

Bytes RegisterReply(BYTE device, BYTE function, const std::vector<WORD>& registers) {
  Bytes bytes{device, function, static_cast<BYTE>(2 * registers.size())};
  for (const WORD value : registers) {
    bytes.push_back(static_cast<BYTE>(value >> 8));
    bytes.push_back(static_cast<BYTE>(value & 0xFF));
  }
  return WithCrc(std::move(bytes));
}

}  // namespace fieldline::test
