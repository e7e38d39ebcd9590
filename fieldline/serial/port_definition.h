#pragma once

#include "fieldline/platform/serial_device.h"

namespace fieldline {

// A port definition is a text of the form device:baud,parity,data bits,stop bits, such as L"COM1:9600,n,8,1".
//
//   device     up to and including the first ':'
//   baud       decimal, bit/s
//   parity     first letter of n(one), o(dd), e(ven), m(ark), s(pace), in either case
//   data bits  decimal
//   stop bits  exactly 1, 1.5 or 2
//
// A field that can't be read gets its default (9600, n, 8, 1), but there must be four fields.

// Length of the device name, including the colon; 0 when there is no colon.
int DeviceNameLength(const wchar_t* definition);

// Reads the settings after the first colon. Returns false and leaves *settings unchanged unless there are exactly four
// fields.
bool ParseLineSettings(const wchar_t* definition, LineSettings* settings);

}  // namespace fieldline
