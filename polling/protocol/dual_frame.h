#pragma once

#include "polling/protocol/protocol.h"

namespace fieldline {

// The frame of the dual-protocol unit at an odd address. The request ends with 65536 minus the sum of its other bytes,
// low byte first. The reply has no checksum:
//
//   05    01 02    F8 FF             05 01 8D  ...
//   unit  command  checksum          head      values; the head's last byte is their length
extern const WireProtocol kDualFrame;

}  // namespace fieldline
