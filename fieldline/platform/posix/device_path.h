#pragma once

#include <limits.h>

namespace fieldline {

using PathBuffer = char[PATH_MAX];

// Finds the path to open for a device name (see fieldline/platform/device_name.h). Returns false, with `path`
// undefined, when the name has no path.
bool FindDevicePath(const wchar_t* device, PathBuffer& path);

}  // namespace fieldline
