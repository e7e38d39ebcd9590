#pragma once

#include <string>
#include <string_view>

#include "tools/kinds.h"
#include "tools/text.h"

namespace fieldline::tool {

struct ReplyFault {
  std::string_view code;  // for programs, such as "checksum"
  std::string message;    // for people
};

// What is wrong with a reply that a driver refused; both have at least one byte.
ReplyFault FindReplyFault(const Kind& kind, int address, const Bytes& request, const Bytes& reply);

}  // namespace fieldline::tool
