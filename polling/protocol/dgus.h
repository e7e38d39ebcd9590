#pragma once

#include "polling/protocol/protocol.h"

namespace fieldline {

// DWIN DGUS display, which never answers:
//
//   A5 5A   05      82       10 00    01 02
//   header  length  command  address  value
extern const WireProtocol kDgus;

}  // namespace fieldline
