#pragma once

#include <cstdint>

using BYTE = unsigned char;
using WORD = std::uint16_t;

// Exports a symbol to applications. All other symbols of the shared library are hidden.
#if defined(_MSC_VER) && defined(FIELDLINE_BUILD)
#define FIELDLINE_API __declspec(dllexport)
#elif defined(_MSC_VER)
#define FIELDLINE_API __declspec(dllimport)
#else
#define FIELDLINE_API __attribute__((visibility("default")))
#endif
