#include "fieldline/platform/device_name.h"

#include <algorithm>
#include <charconv>
#include <cstring>
#include <map>
#include <mutex>
#include <string>
#include <string_view>

#include "fieldline/platform/device_path.h"
#include "fieldline/platform/posix/device_path.h"
#include "fieldline/platform/posix/utf8.h"

namespace fieldline {

namespace {

struct DeviceMap {
  std::mutex mutex;
  std::map<std::wstring, std::string, std::less<>> paths;  // by name, including the final colon
};

DeviceMap& Devices() {
  static DeviceMap devices;
  return devices;
}

bool HasFinalColon(const wchar_t* device) { return device != nullptr && std::wstring_view(device).ends_with(L':'); }

bool CopyPath(std::string_view path, PathBuffer& out) {
  if (path.size() >= sizeof out) return false;
  std::memcpy(out, path.data(), path.size());
  out[path.size()] = '\0';
  return true;
}

bool CopyWidePath(std::wstring_view path, PathBuffer& out) {
  std::size_t length = 0;
  for (const wchar_t code : path) {
    char bytes[4];
    const auto units = static_cast<std::size_t>(EncodeUtf8(static_cast<char32_t>(code), bytes));
    if (length + units >= sizeof out) return false;
    std::memcpy(out + length, bytes, units);
    length += units;
  }
  out[length] = '\0';
  return true;
}

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

bool CopyNumberedPath(std::string_view prefix, int number, PathBuffer& out) {
  if (!CopyPath(prefix, out)) return false;
  *std::to_chars(out + prefix.size(), out + sizeof out, number).ptr = '\0';
  return true;
}

bool CopyDefaultPath(std::wstring_view name, PathBuffer& out) {
  if (name.find(L'/') != name.npos) return CopyWidePath(name, out);
  if (name == L"EIO1") return CopyPath("/dev/eio1", out);
  const int number = ParseNumber(name.substr(std::min<std::size_t>(name.size(), 3)));
  if (number == 0) return false;
  if (name.starts_with(L"ESL")) return CopyNumberedPath("/dev/ttyESL", number, out);
  if (name.starts_with(L"COM")) return CopyNumberedPath("/dev/ttyS", number - 1, out);
  return false;
}

}  // namespace

int MapDevice(const wchar_t* device, const char* path) {
  if (!HasFinalColon(device)) return 0;
  try {
    DeviceMap& devices = Devices();
    const std::lock_guard lock(devices.mutex);
    if (path != nullptr) {
      devices.paths.insert_or_assign(device, path);
    } else if (const auto mapped = devices.paths.find(std::wstring_view(device)); mapped != devices.paths.end()) {
      devices.paths.erase(mapped);
    }
    return 1;
  } catch (...) {
    return 0;
  }
}

std::string DevicePath(const wchar_t* device) {
  PathBuffer path;
  return FindDevicePath(device, path) ? path : "";
}

bool FindDevicePath(const wchar_t* device, PathBuffer& path) {
  if (!HasFinalColon(device)) return false;
  std::wstring_view name(device);
  {
    DeviceMap& devices = Devices();
    const std::lock_guard lock(devices.mutex);
    if (const auto mapped = devices.paths.find(name); mapped != devices.paths.end()) {
      return CopyPath(mapped->second, path);
    }
  }
  name.remove_suffix(1);
  return CopyDefaultPath(name, path);
}

}  // namespace fieldline
