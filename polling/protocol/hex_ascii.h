#pragma once

#include "polling/protocol/protocol.h"

namespace fieldline {

// YD/T 1363, and the card terminal's variant that starts with 7F. A reply has RTN in place of CID2:
//
//   ~    20   01   46    41    E002    01    FD36    \r
//   SOI  VER  ADR  CID1  CID2  LENGTH  INFO  CHKSUM  EOI
extern const WireProtocol kHexAscii;

}  // namespace fieldline
