#pragma once

#include <algorithm>
#include <cstdint>

// <windows.h> without the macros that are in the way of C++.
#ifndef NOMINMAX
#define NOMINMAX
#endif
#ifndef WIN32_LEAN_AND_MEAN
#define WIN32_LEAN_AND_MEAN
#endif
#include <windows.h>

namespace fieldline {

inline HANDLE AsHandle(std::intptr_t handle) { return reinterpret_cast<HANDLE>(handle); }
inline std::intptr_t AsNumber(HANDLE handle) { return reinterpret_cast<std::intptr_t>(handle); }

// A path as Windows takes it.
using WidePath = wchar_t[4096];

// Converts UTF-8, and slashes to backslashes. Returns false when the path is too long.
inline bool ToWidePath(const char* path, WidePath& wide) {
  const int length = MultiByteToWideChar(CP_UTF8, 0, path, -1, wide, static_cast<int>(sizeof wide / sizeof *wide));
  std::replace(wide, wide + length, L'/', L'\\');
  return length != 0;
}

}  // namespace fieldline
