#pragma once

#include "polling/protocol/protocol.h"
#include "polling/text.h"

namespace fieldline {

// The alarm board. Requests and replies have the same form:
//
//   AA     00 02   32       01 01    32        55
//   start  length  command  payload  checksum  end
extern const WireProtocol kAlarmFrame;

constexpr std::size_t kMostAlarmPayload = 506;  // bytes

// The frame of a command and its payload, which is at most kMostAlarmPayload bytes.
Bytes MakeAlarmFrame(BYTE command, ByteSpan payload);

// Number of MMS bytes in a request, 0 when it carries none.
std::size_t MmsBytesIn(ByteSpan request);

}  // namespace fieldline
