#pragma once

#include "polling/protocol/protocol.h"

namespace fieldline {

// The camera that streams its picture:
//
//   UG3#          UG#              UP    00 10       00     FF D8 ...
//   request       acknowledgement  mark  low, high   spare  picture
extern const WireProtocol kUg3;

// The picture size that a reply announces. Nothing when there is none, or not yet.
std::optional<std::size_t> AnnouncedPicture(ByteSpan reply);

// Number of bytes before the picture.
constexpr std::size_t kUg3HeadLength = 8;

}  // namespace fieldline
