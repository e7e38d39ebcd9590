#pragma once

#include <limits.h>

namespace fieldline {

using PathBuffer = char[PATH_MAX];

// Path that is opened for a device name (see fieldline/platform/device_name.h). False, with `path` undefined, when the
// name stands for none.
bool FindDevicePath(const wchar_t* device, PathBuffer& path);

}  // namespace fieldline
