#include <algorithm>
#include <charconv>
#include <string_view>

#include "fieldline/platform/path_buffer.h"

namespace fieldline {

namespace {

// Number of a numbered device: decimal, at least 1, without leading zeros. 0 for anything else.
int ParseNumber(std::wstring_view digits) {
  constexpr std::size_t kMaxDigits = 4;
  if (digits.empty() || digits.size() > kMaxDigits || digits.front() == L'0') return 0;
  int number = 0;
  for (const wchar_t digit : digits) {
    if (digit < L'0' || digit > L'9') return 0;
    number = number * 10 + static_cast<int>(digit - L'0');
  }
  return number;
}

bool CopyNumberedPath(std::string_view prefix, int number, PathBuffer& path) {
  if (!CopyPath(prefix, path)) return false;
  *std::to_chars(path + prefix.size(), path + sizeof path, number).ptr = '\0';
  return true;
}

}  // namespace

bool DefaultDevicePath(std::wstring_view name, PathBuffer& path) {
  if (name.find(L'/') != name.npos) return CopyWidePath(name, path);
  if (name == L"EIO1") return CopyPath("/dev/eio1", path);
  const int number = ParseNumber(name.substr(std::min<std::size_t>(name.size(), 3)));
  if (number == 0) return false;
  if (name.starts_with(L"ESL")) return CopyNumberedPath("/dev/ttyESL", number, path);
  if (name.starts_with(L"COM")) return CopyNumberedPath("/dev/ttyS", number - 1, path);
  return false;
}

}  // namespace fieldline
