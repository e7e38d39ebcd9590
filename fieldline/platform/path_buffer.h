#pragma once

#include <string_view>

namespace fieldline {

// A path in UTF-8. It has its longest size, so that opening a line or a file allocates nothing.
using PathBuffer = char[4096];

// Each returns false, with `path` undefined, when there is none or when it is too long.

// The path to open for a device name; see device_name.h.
bool FindDevicePath(const wchar_t* device, PathBuffer& path);

// The same for a name that has not been mapped, given without its final colon. Each backend has its own.
bool DefaultDevicePath(std::wstring_view name, PathBuffer& path);

// The path of a file on the flash file system, with slashes; see file.h.
bool FindFlashPath(const char16_t* file, PathBuffer& path);

inline bool CopyPath(std::string_view text, PathBuffer& path) {
  if (text.size() >= sizeof path) return false;
  path[text.copy(path, sizeof path)] = '\0';
  return true;
}

bool CopyWidePath(std::wstring_view text, PathBuffer& path);

}  // namespace fieldline
