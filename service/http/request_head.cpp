#include "service/http/request_head.h"

#include <algorithm>
#include <cctype>
#include <charconv>
#include <span>
#include <system_error>
#include <vector>

namespace fieldline::service {
namespace {

constexpr std::string_view kEndOfLine = "\r\n";
constexpr std::string_view kEndOfHead = "\r\n\r\n";

constexpr std::string_view kUsed[] = {
    "host:",          "connection:",   "cookie:", "authorization:", "user-agent:", "accept-encoding:",
    "if-none-match:", "content-type:", "origin:", "sec-fetch-site:"};
constexpr std::string_view kLength = "content-length:";
constexpr std::string_view kOfBodies[] = {kLength, "transfer-encoding:"};

// `name` is in lower case.
bool BeginsWith(std::string_view line, std::string_view name) {
  return line.size() >= name.size() && std::equal(name.begin(), name.end(), line.begin(), [](char a, char b) {
           return a == static_cast<char>(std::tolower(static_cast<unsigned char>(b)));
         });
}

bool BeginsWithOneOf(std::string_view line, std::span<const std::string_view> names) {
  return std::ranges::any_of(names, [line](std::string_view name) { return BeginsWith(line, name); });
}

// What a header Content-Length says; nothing unless it is a plain number.
std::optional<std::size_t> LengthIn(std::string_view line) {
  line = line.substr(kLength.size());
  line.remove_suffix(kEndOfLine.size());
  while (line.starts_with(' ')) line.remove_prefix(1);
  std::size_t length = 0;
  const auto [end, error] = std::from_chars(line.data(), line.data() + line.size(), length);
  if (line.empty() || error != std::errc() || end != line.data() + line.size()) return std::nullopt;
  return length;
}

// The body of a POST, when one header says clearly how long it is.
void FindBody(std::span<const std::string_view> lines, RequestHead& head) {
  if (lines.empty()) return;
  head.has_body = true;
  if (lines.size() > 1 || !BeginsWith(lines.front(), kLength) || !head.text.starts_with("POST ")) return;
  const auto length = LengthIn(lines.front());
  if (!length || *length > kMostBodyBytes) return;
  head.has_body = false;
  head.body_bytes = *length;
}

}  // namespace

std::optional<RequestHead> TakeHead(std::string& received) {
  const std::size_t end = received.find(kEndOfHead);
  if (end == std::string::npos) return std::nullopt;
  RequestHead head;
  std::vector<std::string_view> of_body;
  std::string_view rest{received.data(), end + kEndOfLine.size()};
  while (!rest.empty()) {
    const std::size_t length = rest.find(kEndOfLine) + kEndOfLine.size();
    const std::string_view line = rest.substr(0, length);
    if (head.text.empty() || BeginsWithOneOf(line, kUsed)) head.text += line;
    if (BeginsWithOneOf(line, kOfBodies)) of_body.push_back(line);
    rest.remove_prefix(length);
  }
  FindBody(of_body, head);
  head.text += kEndOfLine;
  received.erase(0, end + kEndOfHead.size());
  return head;
}

}  // namespace fieldline::service
