#pragma once

#include "fieldline/types.h"

namespace fieldline {

// Sets the path that is opened for a device name.
//
// device: a name with its final colon, such as L"ESL3:", L"COM1:" or L"EIO1:"; names are compared exactly.
// path:   what to open, in UTF-8; copied. Null restores the default.
//
// Defaults: ESLn: is /dev/ttyESLn, COMn: is /dev/ttyS<n-1>, EIO1: is /dev/eio1. A name that contains '/' is a path
// itself, without its final colon. No other name has a default.
//
// Returns 1, or 0 (nothing changed) for a null name, a name without a final colon, or when memory is short. A device
// that is open stays as it is. May be called from any thread.
FIELDLINE_API int MapDevice(const wchar_t* device, const char* path);

}  // namespace fieldline
