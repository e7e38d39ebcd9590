#pragma once

#include <string>

namespace fieldline {

// The path that is opened for a device name (see device_name.h), in UTF-8; empty when the name has none. For programs
// that tell a person of it; not part of the library.
std::string DevicePath(const wchar_t* device);

}  // namespace fieldline
