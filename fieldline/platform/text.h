#pragma once

namespace fieldline {

// Both conversions write at most `capacity` units to `out`, including the terminating zero, and always terminate
// (`capacity` > 0). A longer text is cut between two characters. They return the number of units before the terminator.
// An invalid sequence becomes U+FFFD. Neither depends on the locale.

// Converts text from a device (ASCII or UTF-8) to UTF-16. `length` is the number of bytes in `text`.
int DeviceTextToUtf16(const char* text, int length, char16_t* out, int capacity);

// Converts zero-terminated UTF-16 to UTF-8.
int Utf16ToUtf8(const char16_t* text, char* out, int capacity);

}  // namespace fieldline
