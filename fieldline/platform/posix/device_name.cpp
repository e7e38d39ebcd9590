#include "fieldline/platform/device_name.h"

#include <algorithm>
#include <charconv>
#include <cstring>
#include <memory>
#include <mutex>
#include <new>
#include <string>
#include <string_view>
#include <utility>

#include "fieldline/platform/device_path.h"
#include "fieldline/platform/posix/device_path.h"
#include "fieldline/platform/posix/utf8.h"

namespace fieldline {

namespace {

// A list and no map of strings, whose templates would be a tenth of the whole library.
struct Mapping {
  std::unique_ptr<wchar_t[]> name;  // including the final colon
  std::unique_ptr<char[]> path;
  std::unique_ptr<Mapping> next;
};

struct DeviceMap {
  std::mutex mutex;
  std::unique_ptr<Mapping> first;
};

DeviceMap& Devices() {
  static DeviceMap devices;
  return devices;
}

// Where the mapping of this name is, or the end of the list.
std::unique_ptr<Mapping>* FindMapping(DeviceMap& devices, std::wstring_view name) {
  std::unique_ptr<Mapping>* place = &devices.first;
  while (*place && name != (*place)->name.get()) place = &(*place)->next;
  return place;
}

// Null when memory is short.
template <typename Character>
std::unique_ptr<Character[]> Copy(std::basic_string_view<Character> text) {
  std::unique_ptr<Character[]> copy(new (std::nothrow) Character[text.size() + 1]{});
  if (copy) text.copy(copy.get(), text.size());
  return copy;
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
  DeviceMap& devices = Devices();
  const std::lock_guard lock(devices.mutex);
  std::unique_ptr<Mapping>* const place = FindMapping(devices, device);
  if (path == nullptr) {
    if (*place) *place = std::move((*place)->next);
    return 1;
  }
  std::unique_ptr<char[]> copy = Copy(std::string_view(path));
  if (!copy) return 0;
  if (!*place) {
    std::unique_ptr<wchar_t[]> name = Copy(std::wstring_view(device));
    std::unique_ptr<Mapping> added(name ? new (std::nothrow) Mapping{std::move(name), {}, {}} : nullptr);
    if (!added) return 0;
    *place = std::move(added);
  }
  (*place)->path = std::move(copy);
  return 1;
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
    if (const auto& mapping = *FindMapping(devices, name)) return CopyPath(mapping->path.get(), path);
  }
  name.remove_suffix(1);
  return CopyDefaultPath(name, path);
}

}  // namespace fieldline
