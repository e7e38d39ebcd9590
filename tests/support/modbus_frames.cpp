#include "tests/support/modbus_frames.h"

#include <utility>

#include "tests/support/modbus_crc.h"

namespace fieldline::test {

Bytes WithCrc(Bytes bytes) {
  const unsigned crc = ModbusCrc(bytes);
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

std::vector<WORD> Counting(int base, int first, int count) {
  std::vector<WORD> registers;
  for (int k = first; k < first + count; ++k) registers.push_back(static_cast<WORD>(base + k));
  return registers;
}

}  // namespace fieldline::test
