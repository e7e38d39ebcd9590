#include "fieldline/platform/device_name.h"

#include <cstring>
#include <memory>
#include <mutex>
#include <new>
#include <string>
#include <string_view>
#include <utility>

#include "fieldline/platform/device_path.h"
#include "fieldline/platform/path_buffer.h"
#include "fieldline/platform/utf8.h"

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
  return DefaultDevicePath(name, path);
}

bool CopyWidePath(std::wstring_view text, PathBuffer& path) {
  std::size_t length = 0;
  while (!text.empty()) {
    auto code = static_cast<char32_t>(text.front());
    text.remove_prefix(1);
    if constexpr (sizeof(wchar_t) == sizeof(char16_t)) {
      if (!text.empty() && (code & 0xFC00) == 0xD800 && (text.front() & 0xFC00) == 0xDC00) {
        code = 0x10000 + ((code - 0xD800) << 10) + (static_cast<char32_t>(text.front()) - 0xDC00);
        text.remove_prefix(1);
      }
    }
    char bytes[4];
    const auto units = static_cast<std::size_t>(EncodeUtf8(code, bytes));
    if (length + units >= sizeof path) return false;
    std::memcpy(path + length, bytes, units);
    length += units;
  }
  path[length] = '\0';
  return true;
}

}  // namespace fieldline
