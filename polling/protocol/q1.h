#pragma once

#include "polling/protocol/protocol.h"

namespace fieldline {

// The text lines of an UPS: "Q1", "I" and "F", each with a carriage return, as its replies.
extern const WireProtocol kQ1;

}  // namespace fieldline
