#pragma once

#include "fieldline/types.h"

namespace fieldline {

// Sets the path that is opened for a device name.
//
// device: a name including its final colon, such as L"ESL3:", L"COM1:" or L"EIO1:"; names are compared exactly.
// path:   the path to open, in UTF-8; copied. Null restores the default.
//
// Defaults on Linux: ESLn: is /dev/ttyESLn, COMn: is /dev/ttyS<n-1>, EIO1: is /dev/eio1; a name that contains '/' is
// itself the path, without its final colon; other names have no default. On Windows every name is its own default,
// without its final colon: that of a device, or a path when it contains '/' or '\'.
//
// Returns 1; 0, with nothing changed, for a null name, a name without a final colon, and when out of memory. Does not
// affect a device that is already open. Thread-safe.
FIELDLINE_API int MapDevice(const wchar_t* device, const char* path);

}  // namespace fieldline
