#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace fieldline::service {

// The request line and the headers, up to the empty line after them.
struct RequestHead {
  std::string text;            // the request line and those headers that we use; nothing else is worth its risks
  bool has_body = false;       // something may follow that nobody reads: no other request can come after this one
  std::size_t body_bytes = 0;  // of a POST: how much follows, that is read
};

constexpr std::size_t kMostHeadBytes = 8192;
constexpr std::size_t kMostBodyBytes = 4096;  // of a POST; a larger body is not read

// Takes a whole head from the start of `received`; nothing when its end is not there yet.
std::optional<RequestHead> TakeHead(std::string& received);

}  // namespace fieldline::service
