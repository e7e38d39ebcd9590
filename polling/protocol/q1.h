#pragma once

#include "polling/protocol/protocol.h"

namespace fieldline {

// The text lines of a UPS. The requests "Q1", "I" and "F" and all replies end with a carriage return.
extern const WireProtocol kQ1;

constexpr std::size_t kQ1StatusLength = 3;  // of the first request of a poll; the others are shorter

}  // namespace fieldline
