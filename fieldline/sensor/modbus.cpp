#include "fieldline/sensor/modbus.h"

#include <array>

namespace {

constexpr WORD kCrcStart = 0xFFFF;
constexpr WORD kCrcPolynomial = 0xA001;

constexpr std::array<WORD, 256> MakeCrcTable() {
  std::array<WORD, 256> table{};
  for (unsigned byte = 0; byte < table.size(); ++byte) {
    unsigned crc = byte;
    for (int bit = 0; bit < 8; ++bit) crc = crc & 1 ? crc >> 1 ^ kCrcPolynomial : crc >> 1;
    table[byte] = static_cast<WORD>(crc);
  }
  return table;
}

constexpr std::array<WORD, 256> kCrcTable = MakeCrcTable();

}  // namespace

WORD CRC16(const BYTE* data, BYTE length) {
  unsigned crc = kCrcStart;
  for (int i = 0; i < length; ++i) crc = crc >> 8 ^ kCrcTable[(crc ^ data[i]) & 0xFF];
  return static_cast<WORD>(crc);
}

std::uint32_t GetDwordBE(const BYTE* p) { return std::uint32_t{GetWordBE(p)} << 16 | GetWordBE(p + 2); }

WORD GetWordBE(const BYTE* p) { return static_cast<WORD>(p[0] << 8 | p[1]); }

WORD GetWordLE(const BYTE* p) { return static_cast<WORD>(p[0] | p[1] << 8); }

namespace fieldline {

int BuildModbusRead(BYTE* request, BYTE addr, BYTE func, WORD reg, WORD count) {
  request[0] = addr;
  request[1] = func;
  request[2] = static_cast<BYTE>(reg >> 8);
  request[3] = static_cast<BYTE>(reg & 0xFF);
  request[4] = static_cast<BYTE>(count >> 8);
  request[5] = static_cast<BYTE>(count & 0xFF);
  const WORD crc = CRC16(request, 6);
  request[6] = static_cast<BYTE>(crc & 0xFF);
  request[7] = static_cast<BYTE>(crc >> 8);
  return kModbusRequestLength;
}

int ReadModbusReply(ISerBase* port, BYTE* buffer, int ask, int least, CrcPlace place) {
  const int received = port->Read(buffer, ask);
  if (received < least) return 0;

  int frame = received;
  if (place == CrcPlace::kAfterByteCount) {
    frame = kModbusHeadLength + buffer[2] + kModbusCrcLength;
    if (frame < least || frame > received) return 0;
  }
  const int covered = frame - kModbusCrcLength;
  const WORD crc = CRC16(buffer, static_cast<BYTE>(covered & 0xFF));
  return crc == GetWordLE(buffer + covered) ? received : 0;
}

}  // namespace fieldline
