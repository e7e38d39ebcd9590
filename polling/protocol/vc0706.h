#pragma once

#include "polling/protocol/protocol.h"

namespace fieldline {

// Camera with the command set of the VC0706:
//
//   56    00      34       01 00          76    00      34       00      04      00 00 12 34
//   mark  camera  command  arguments      mark  camera  command  status  length  data
extern const WireProtocol kVc0706;

// The size of the picture that a request asks for. Nothing for other requests.
std::optional<std::size_t> PictureAskedFor(ByteSpan request);

}  // namespace fieldline
