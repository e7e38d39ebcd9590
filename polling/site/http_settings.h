#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "polling/site/json_file.h"

namespace fieldline {

// Where the service's page and interface are, and who may see them.
struct HttpSettings {
  std::string host = "127.0.0.1";  // a numeric address, without the brackets of IPv6, or localhost
  int port = 8080;                 // 0: any that is free
  std::string token_file{};        // holds what a browser or a program must know; empty: nothing

  // Whether only this machine can reach it.
  bool IsLoopback() const;
};

// "127.0.0.1:8080", "[::1]:8080", "localhost:8080"; nothing for anything else. A name would be looked up, and may be
// another machine's by then.
std::optional<HttpSettings> ParseListen(std::string_view text);

// Reads "http" of a site file. Throws UsageError; an address that others can reach needs a token. The token's file is
// not opened: who checks a site file need not be allowed to read it.
HttpSettings ReadHttpSettings(const JsonNode& node);

}  // namespace fieldline
