#pragma once

#include "polling/protocol/protocol.h"

namespace fieldline {

// The text lines of an UPS: "Q1", "I" and "F", each with a carriage return, as its replies.
extern const WireProtocol kQ1;

constexpr std::size_t kQ1StatusLength = 3;  // of the first request of a poll; the others are shorter

}  // namespace fieldline
