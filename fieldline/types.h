#pragma once

#include <cstdint>

using BYTE = unsigned char;
using WORD = std::uint16_t;

// Marks what applications link against; everything else in the shared library is hidden.
#if defined(_MSC_VER) && defined(FIELDLINE_BUILD)
#define FIELDLINE_API __declspec(dllexport)
#elif defined(_MSC_VER)
#define FIELDLINE_API __declspec(dllimport)
#else
#define FIELDLINE_API __attribute__((visibility("default")))
#endif
