#pragma once

#include <string>
#include <string_view>

#include "polling/site/http_settings.h"

namespace fieldline::service {

// Who may see the page.
class Access {
 public:
  // Reads the token's file. `unit` makes the cookie another one than that of the next unit at the same address. Throws
  // UsageError when the file can't be read or holds no fit token.
  Access(const HttpSettings& settings, const std::string& unit);

  // What a request says of itself: its headers Host, Authorization and Cookie.
  struct Claims {
    std::string_view host;
    std::string_view authorization;
    std::string_view cookie;
  };
  enum class Verdict { kAllowed, kNoToken, kForeignHost };
  Verdict Check(const Claims& claims) const;

  // The header Set-Cookie for a browser that has brought the token; empty when none is needed.
  std::string Cookie() const;

 private:
  const std::string cookie_name_;
  const std::string token_;  // empty: none is needed
};

}  // namespace fieldline::service
