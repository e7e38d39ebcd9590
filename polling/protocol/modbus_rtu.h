#pragma once

#include "polling/protocol/protocol.h"

namespace fieldline {

// Modbus RTU:
//
//   01      03        00 00     00 02  C4 0B        01      03        04          01 23 FE DC  4B FC
//   device  function  register  count  CRC          device  function  byte count  data         CRC
extern const WireProtocol kModbusRtu;

// Whether the frame ends with its correct CRC. Nothing when it is shorter or longer than a frame can be.
std::optional<bool> HasModbusCrc(ByteSpan frame);

}  // namespace fieldline
