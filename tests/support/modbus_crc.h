#pragma once

#include "fieldline/types.h"

namespace fieldline::test {

// The Modbus CRC of `bytes`, bit by bit; the library looks each byte up in a table.
template <class Range>
unsigned ModbusCrc(const Range& bytes) {
  unsigned crc = 0xFFFF;
  for (const auto byte : bytes) {
    crc ^= static_cast<BYTE>(byte);
    for (int bit = 0; bit < 8; ++bit) crc = crc & 1 ? crc >> 1 ^ 0xA001 : crc >> 1;
  }
  return crc;
}

}  // namespace fieldline::test
