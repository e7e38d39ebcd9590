#pragma once

#include "polling/protocol/protocol.h"

namespace fieldline {

// The camera that streams its picture:
//
//   UG3#          UG#              UP    00 10       00     FF D8 ...
//   request       acknowledgement  mark  low, high   spare  picture
extern const WireProtocol kUg3;

// The size of the picture that a reply announces; nothing when it doesn't, or has not come so far.
std::optional<std::size_t> AnnouncedPicture(ByteSpan reply);

// Bytes of a reply that come before the picture.
constexpr std::size_t kUg3HeadLength = 8;

}  // namespace fieldline
