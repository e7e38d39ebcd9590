#pragma once

namespace fieldline {

// Both conversions write at most `capacity` units into `out`, the terminating zero included, cut a text that is longer
// between two characters, always terminate (capacity > 0), and return the number of units before the terminator. A
// sequence that is no character becomes U+FFFD. Neither depends on the locale.

// Text as a device sends it (ASCII, or UTF-8) to UTF-16. `length` is the number of bytes in `text`.
int DeviceTextToUtf16(const char* text, int length, char16_t* out, int capacity);

// Zero-terminated UTF-16 to UTF-8.
int Utf16ToUtf8(const char16_t* text, char* out, int capacity);

}  // namespace fieldline
