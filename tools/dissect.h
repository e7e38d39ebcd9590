#pragma once

#include <span>
#include <string>

#include "fieldline/types.h"

namespace fieldline::tool {

// What bytes mean in the protocol that they themselves show, in words: "device 1: read holding registers 0 to 1, CRC
// good". Empty when they show none.
std::string DescribeRequest(std::span<const BYTE> request);

// The same of what has come since `request`, whose protocol it is read in. Empty also while the reply is incomplete.
std::string DescribeReply(std::span<const BYTE> request, std::span<const BYTE> reply);

}  // namespace fieldline::tool
