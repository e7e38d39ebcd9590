#pragma once

#include "polling/protocol/protocol.h"

namespace fieldline {

// The frame of the dual-protocol unit at an odd address. The checksum is what the sum of the bytes before it lacks to
// 65536, low byte first; the reply has none:
//
//   05    01 02    F8 FF             05 01 8D  ...
//   unit  command  checksum          head      values, as many bytes as the head's last byte says
extern const WireProtocol kDualFrame;

}  // namespace fieldline
