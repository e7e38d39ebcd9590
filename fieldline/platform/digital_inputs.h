#pragma once

#include "fieldline/types.h"

namespace fieldline {

// Opens the input device by its name (see device_name.h), reads one byte and closes it again. Bit i of *states is input
// i + 1. Returns true when a byte was read; otherwise *states is unchanged. Waits at most 100 ms.
bool ReadDigitalInputs(const wchar_t* device, BYTE* states);

}  // namespace fieldline
