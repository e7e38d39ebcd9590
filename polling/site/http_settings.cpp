#include "polling/site/http_settings.h"

#include "polling/text.h"

namespace fieldline {
namespace {

// 1.2.3.4
bool IsIpv4(std::string_view text) {
  constexpr int kParts = 4;
  for (int part = 1; part <= kParts; ++part) {
    const std::size_t dot = text.find('.');
    if ((dot == std::string_view::npos) != (part == kParts)) return false;
    const std::string_view digits = text.substr(0, dot);
    const bool is_number = !digits.empty() && digits.find_first_not_of("0123456789") == std::string_view::npos;
    if (!is_number || digits.size() > 3 || ParseInteger(digits).value_or(256) > 255) return false;
    text.remove_prefix(part == kParts ? text.size() : dot + 1);
  }
  return true;
}

bool LooksLikeIpv6(std::string_view text) {
  constexpr std::size_t kMost = 45;
  return text.size() <= kMost && text.find(':') != std::string_view::npos &&
         text.find_first_not_of("0123456789abcdefABCDEF:.") == std::string_view::npos;
}

}  // namespace

bool HttpSettings::IsLoopback() const {
  return host == "localhost" || host == "::1" || (IsIpv4(host) && host.starts_with("127."));
}

std::optional<HttpSettings> ParseListen(std::string_view text) {
  constexpr int kMostPort = 65535;
  const std::size_t colon = text.rfind(':');
  if (colon == std::string_view::npos) return std::nullopt;
  const std::string_view digits = text.substr(colon + 1);
  if (digits.find_first_not_of("0123456789") != std::string_view::npos) return std::nullopt;
  const auto port = ParseInteger(digits);
  if (!port || *port > kMostPort) return std::nullopt;

  std::string_view host = text.substr(0, colon);
  if (host.starts_with('[') && host.ends_with(']')) {
    host = host.substr(1, host.size() - 2);
    if (!LooksLikeIpv6(host)) return std::nullopt;
  } else if (host != "localhost" && !IsIpv4(host)) {
    return std::nullopt;
  }
  return HttpSettings{.host = std::string(host), .port = static_cast<int>(*port)};
}

HttpSettings ReadHttpSettings(const JsonNode& node) {
  node.RequireObject({"listen", "token_file"});
  HttpSettings settings;
  if (const auto listen = node.Find("listen")) {
    const auto parsed = ParseListen(listen->Text());
    if (!parsed) listen->RefuseAsNot("an address and a port, such as \"127.0.0.1:8080\" or \"[::]:8080\",");
    settings = *parsed;
  }
  if (const auto file = node.Find("token_file")) {
    settings.token_file = file->Text();
    if (settings.token_file.empty()) file->Refuse("the path of a file is needed");
  }
  if (!settings.IsLoopback() && settings.token_file.empty()) {
    node.Refuse("other machines can reach " + settings.host +
                ": \"token_file\" is needed, the path of a file with a token");
  }
  return settings;
}

}  // namespace fieldline
