#pragma once

#include <string>

namespace fieldline {

// The path that is opened for a device name (see device_name.h), in UTF-8; empty when the name has none. For programs
// that show it to their user; the library does not export it.
std::string DevicePath(const wchar_t* device);

// The path of a serial line as users of this system know it, for help and messages.
extern const char* const kUsualSerialPath;

// The number of another process that has the path open, 0 when there is none or the system does not tell. Not part of
// the library.
int ProcessThatHolds(const char* path);

}  // namespace fieldline
