#pragma once

#include <cstdint>

using BYTE = unsigned char;
using WORD = std::uint16_t;

// Exports a symbol to applications. All other symbols of the shared library are hidden. On Windows, an application that
// links the static library defines FIELDLINE_STATIC; CMake's target does.
#if defined(_WIN32) && defined(FIELDLINE_STATIC)
#define FIELDLINE_API
#elif defined(_WIN32) && defined(FIELDLINE_BUILD)
#define FIELDLINE_API __declspec(dllexport)
#elif defined(_WIN32)
#define FIELDLINE_API __declspec(dllimport)
#else
#define FIELDLINE_API __attribute__((visibility("default")))
#endif
