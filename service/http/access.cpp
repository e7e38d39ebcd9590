#include "service/http/access.h"

#include <algorithm>

#include "polling/read_file.h"
#include "polling/usage_error.h"

namespace fieldline::service {
namespace {

constexpr std::string_view kBearer = "Bearer ";

// The first line of the file.
std::string ReadToken(const std::string& path) {
  constexpr std::size_t kMostBytes = 4096;
  constexpr std::size_t kLeast = 16;
  constexpr std::size_t kMost = 256;
  constexpr std::string_view kAllowed = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789-._~+/=";
  const std::string content = ReadFile(path, kMostBytes);
  std::string token = content.substr(0, content.find_first_of("\r\n"));
  if (token.size() < kLeast || token.size() > kMost || token.find_first_not_of(kAllowed) != std::string::npos) {
    throw UsageError(path + ": a token has " + std::to_string(kLeast) + " to " + std::to_string(kMost) +
                     " letters, digits and -._~+/=; `openssl rand -hex 24` makes one");
  }
  return token;
}

// The time does not depend on where they differ, so that nobody can find the token a character at a time.
bool IsSame(std::string_view given, std::string_view token) {
  unsigned difference = given.size() == token.size() ? 0 : 1;
  for (std::size_t i = 0; i < given.size(); ++i) {
    difference |= static_cast<unsigned char>(given[i]) ^ static_cast<unsigned char>(token[i % token.size()]);
  }
  return difference == 0;
}

// The value of a cookie among those of a header: "a=1; b=2".
std::string_view CookieNamed(std::string_view name, std::string_view cookies) {
  while (!cookies.empty()) {
    const std::size_t end = std::min(cookies.find(';'), cookies.size());
    std::string_view cookie = cookies.substr(0, end);
    cookies.remove_prefix(std::min(end + 1, cookies.size()));
    cookie.remove_prefix(std::min(cookie.find_first_not_of(' '), cookie.size()));
    if (cookie.size() > name.size() && cookie.starts_with(name) && cookie[name.size()] == '=') {
      return cookie.substr(name.size() + 1);
    }
  }
  return {};
}

// An address, or localhost: no name that somebody else could have pointed at this machine.
bool IsOwnHost(std::string_view host) {
  if (host.starts_with('[')) return true;
  host = host.substr(0, host.find(':'));
  return host == "localhost" || (!host.empty() && host.find_first_not_of("0123456789.") == std::string_view::npos);
}

}  // namespace

Access::Access(const HttpSettings& settings, const std::string& unit)
    : cookie_name_("fieldline-" + unit),
      token_(settings.token_file.empty() ? std::string() : ReadToken(settings.token_file)) {}

Access::Verdict Access::Check(const Claims& claims) const {
  // Without a token a foreign page could give its own name this address, and read everything from within a browser
  // here.
  if (token_.empty()) return IsOwnHost(claims.host) ? Verdict::kAllowed : Verdict::kForeignHost;
  const bool is_bearer = claims.authorization.starts_with(kBearer);
  const std::string_view given =
      is_bearer ? claims.authorization.substr(kBearer.size()) : CookieNamed(cookie_name_, claims.cookie);
  return IsSame(given, token_) ? Verdict::kAllowed : Verdict::kNoToken;
}

std::string Access::Cookie() const {
  constexpr int kYear = 365 * 24 * 3600;  // s
  if (token_.empty()) return {};
  return cookie_name_ + '=' + token_ + "; Path=/; Max-Age=" + std::to_string(kYear) + "; HttpOnly; SameSite=Strict";
}

}  // namespace fieldline::service
