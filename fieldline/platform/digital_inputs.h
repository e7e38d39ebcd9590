#pragma once

#include "fieldline/types.h"

namespace fieldline {

// Opens the input device by its name (see device_name.h), reads one byte and closes it again. Bit i of *states is
// input i + 1. True when a byte was read; otherwise *states is untouched. Never waits longer than 100 ms.
bool ReadDigitalInputs(const wchar_t* device, BYTE* states);

}  // namespace fieldline
