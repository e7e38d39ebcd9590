#include "service/http/request_head.h"

#include <algorithm>
#include <cctype>
#include <span>

namespace fieldline::service {
namespace {

constexpr std::string_view kEndOfLine = "\r\n";
constexpr std::string_view kEndOfHead = "\r\n\r\n";

constexpr std::string_view kUsed[] = {
    "host:", "connection:", "cookie:", "authorization:", "user-agent:", "accept-encoding:", "if-none-match:"};
constexpr std::string_view kOfBodies[] = {"content-length:", "transfer-encoding:"};

// `name` is in lower case.
bool BeginsWith(std::string_view line, std::string_view name) {
  return line.size() >= name.size() && std::equal(name.begin(), name.end(), line.begin(), [](char a, char b) {
           return a == static_cast<char>(std::tolower(static_cast<unsigned char>(b)));
         });
}

bool BeginsWithOneOf(std::string_view line, std::span<const std::string_view> names) {
  return std::ranges::any_of(names, [line](std::string_view name) { return BeginsWith(line, name); });
}

}  // namespace

std::optional<RequestHead> TakeHead(std::string& received) {
  const std::size_t end = received.find(kEndOfHead);
  if (end == std::string::npos) return std::nullopt;
  RequestHead head;
  std::string_view rest{received.data(), end + kEndOfLine.size()};
  while (!rest.empty()) {
    const std::size_t length = rest.find(kEndOfLine) + kEndOfLine.size();
    const std::string_view line = rest.substr(0, length);
    if (head.text.empty() || BeginsWithOneOf(line, kUsed)) head.text += line;
    if (BeginsWithOneOf(line, kOfBodies)) head.has_body = true;
    rest.remove_prefix(length);
  }
  head.text += kEndOfLine;
  received.erase(0, end + kEndOfHead.size());
  return head;
}

}  // namespace fieldline::service
