#pragma once

#include <string>

namespace fieldline {

// The path that is opened for a device name (see device_name.h), in UTF-8; empty when the name has none. For programs
// that show it to their user; the library does not export it.
std::string DevicePath(const wchar_t* device);

}  // namespace fieldline
