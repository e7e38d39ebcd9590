#pragma once

#include <cwchar>

#include "fieldline/platform/path_buffer.h"
#include "fieldline/platform/win32/system.h"

namespace fieldline {

// Finds what CreateFileW() opens for a device name: \\.\COM10, as names above COM9 must be written, or a path. Returns
// false when there is none.
inline bool FindDeviceToOpen(const wchar_t* device, WidePath& wide) {
  PathBuffer path;
  if (!FindDevicePath(device, path) || !ToWidePath(path, wide)) return false;
  if (std::wcschr(wide, L'\\') != nullptr) return true;
  wchar_t* const name = wide + 4;
  if (std::wcslen(wide) + 5 > sizeof wide / sizeof *wide) return false;
  std::wmemmove(name, wide, std::wcslen(wide) + 1);
  std::wmemcpy(wide, L"\\\\.\\", 4);
  return true;
}

}  // namespace fieldline
