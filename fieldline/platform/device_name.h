#pragma once

#include "fieldline/types.h"

namespace fieldline {

// Sets the path that is opened for a device name.
//
// device: a name including its final colon, such as L"ESL3:", L"COM1:" or L"EIO1:"; names are compared exactly.
// path:   the path to open, in UTF-8; copied. Null restores the default.
//
// Defaults: ESLn: is /dev/ttyESLn, COMn: is /dev/ttyS<n-1>, EIO1: is /dev/eio1. A name that contains '/' is itself the
// path, without its final colon. Other names have no default.
//
// Returns 1; 0, with nothing changed, for a null name, a name without a final colon, and when out of memory. Does not
// affect a device that is already open. Thread-safe.
FIELDLINE_API int MapDevice(const wchar_t* device, const char* path);

}  // namespace fieldline
