#pragma once

#include <cstdint>

#include "fieldline/serial/i_ser_base.h"
#include "fieldline/types.h"

// Modbus RTU master: checksum, byte order, read requests, and the check of a reply. Drivers build their requests with
// CSensorBase::ModBusCmd.

// CRC-16 of Modbus RTU (initial value 0xFFFF, reflected polynomial 0xA001) over `length` bytes; 0xFFFF when `length` is
// 0. Sent low byte first.
WORD CRC16(const BYTE* data, BYTE length);

// Unsigned numbers from 2 or 4 bytes, most (BE) or least (LE) significant byte first.
std::uint32_t GetDwordBE(const BYTE* p);
WORD GetWordBE(const BYTE* p);
WORD GetWordLE(const BYTE* p);

namespace fieldline {

constexpr BYTE kReadCoils = 1;
constexpr BYTE kReadDiscreteInputs = 2;
constexpr BYTE kReadHoldingRegisters = 3;
constexpr BYTE kReadInputRegisters = 4;

constexpr int kModbusRequestLength = 8;
constexpr int kModbusHeadLength = 3;  // address, function, byte count
constexpr int kModbusCrcLength = 2;

// Length of the reply to a read of `registers` registers, or of `bits` coils or discrete inputs.
constexpr int RegisterReplyLength(int registers) { return kModbusHeadLength + 2 * registers + kModbusCrcLength; }
constexpr int BitReplyLength(int bits) { return kModbusHeadLength + (bits + 7) / 8 + kModbusCrcLength; }

// Writes the 8 bytes of a read request and returns 8. Here: 2 holding registers from register 0 of device 1.
//
//   01      03        00 00     00 02  C4 0B
//   device  function  register  count  CRC, low byte first
int BuildModbusRead(BYTE* request, BYTE addr, BYTE func, WORD reg, WORD count);

// Where the checksum of a reply is.
enum class CrcPlace {
  kLastTwoBytes,
  kAfterByteCount,  // right after the data, whose length is the reply's byte count; later bytes are ignored
};

// Reads a reply into `buffer`. Asks the port for `ask` bytes and accepts `least` bytes or more (at least 5) with a
// correct checksum. With kAfterByteCount, the frame that the byte count announces must also have `least` bytes and be
// complete. The checksum covers at most 255 bytes: the first (n - 2) mod 256 bytes of a frame of n. Address, function
// and byte count are not compared with the request. Returns the number of bytes received, 0 when the reply is refused.
//
// The reply to the request above, register 0 = 0x0123 and register 1 = 0xFEDC:
//
//   01      03        04          01 23       FE DC       4B FC
//   device  function  byte count  register 0  register 1  CRC, low byte first
int ReadModbusReply(ISerBase* port, BYTE* buffer, int ask, int least, CrcPlace place);

// A reply, with its buffer on the stack. Asks for kAsk bytes and accepts kLeast or more. Registers and bits are
// numbered from the first one requested; only those within kLeast bytes may be decoded.
template <int kAsk, int kLeast = kAsk, CrcPlace kPlace = CrcPlace::kLastTwoBytes>
class ModbusReply {
 public:
  static_assert(kLeast >= kModbusHeadLength + kModbusCrcLength && kAsk >= kLeast);

  // Number of whole registers in every accepted reply.
  static constexpr int kRegisters = (kLeast - kModbusHeadLength - kModbusCrcLength) / 2;

  bool Read(ISerBase* port) { return ReadModbusReply(port, bytes_, kAsk, kLeast, kPlace) != 0; }

  WORD Register(int k) const { return GetWordBE(At(k)); }
  // For devices that send a register's low byte first.
  WORD RegisterLowFirst(int k) const { return GetWordLE(At(k)); }
  // Registers k and k + 1, register k as the high half.
  std::uint32_t DoubleRegister(int k) const { return GetDwordBE(At(k)); }
  // Coil or discrete input j, 0 or 1.
  BYTE Bit(int j) const { return static_cast<BYTE>(bytes_[kModbusHeadLength + j / 8] >> (j % 8) & 1); }
  // The data bytes, after the byte count.
  const BYTE* data() const { return bytes_ + kModbusHeadLength; }

 private:
  const BYTE* At(int k) const { return data() + 2 * k; }

  BYTE bytes_[kAsk];
};

}  // namespace fieldline
