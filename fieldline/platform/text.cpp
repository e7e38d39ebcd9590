#include "fieldline/platform/text.h"

#include <cstring>

#include "fieldline/platform/utf8.h"

namespace fieldline {

namespace {

// Removes the first character of the text and returns it. Returns U+FFFD for an incomplete, overlong or invalid
// sequence.
char32_t TakeUtf8(const char*& text, const char* end) {
  const auto lead = static_cast<unsigned char>(*text++);
  if (lead < 0x80) return lead;

  int continuations = 0;
  char32_t code = 0;
  char32_t smallest = 0;
  if ((lead & 0xE0) == 0xC0) {
    continuations = 1;
    code = lead & 0x1F;
    smallest = 0x80;
  } else if ((lead & 0xF0) == 0xE0) {
    continuations = 2;
    code = lead & 0x0F;
    smallest = 0x800;
  } else if ((lead & 0xF8) == 0xF0) {
    continuations = 3;
    code = lead & 0x07;
    smallest = 0x10000;
  } else {
    return kReplacementCharacter;
  }

  for (; continuations > 0; --continuations) {
    if (text == end || (static_cast<unsigned char>(*text) & 0xC0) != 0x80) return kReplacementCharacter;
    code = code << 6 | (static_cast<unsigned char>(*text++) & 0x3F);
  }
  return code >= smallest && IsCharacter(code) ? code : kReplacementCharacter;
}

// Removes the first character of a text that is not empty and returns it. Returns U+FFFD for half a surrogate pair.
char32_t TakeUtf16(const char16_t*& text) {
  const char32_t first = *text++;
  if (IsCharacter(first)) return first;
  const char32_t second = *text;
  if (first > 0xDBFF || second < 0xDC00 || second > 0xDFFF) return kReplacementCharacter;
  ++text;
  return 0x10000 + ((first - 0xD800) << 10) + (second - 0xDC00);
}

}  // namespace

int DeviceTextToUtf16(const char* text, int length, char16_t* out, int capacity) {
  const char* const end = text + length;
  int written = 0;
  while (text != end) {
    const char32_t code = TakeUtf8(text, end);
    const int units = code > 0xFFFF ? 2 : 1;
    if (written + units >= capacity) break;
    if (units == 2) {
      out[written++] = static_cast<char16_t>(0xD800 + ((code - 0x10000) >> 10));
      out[written++] = static_cast<char16_t>(0xDC00 + (code & 0x3FF));
    } else {
      out[written++] = static_cast<char16_t>(code);
    }
  }
  out[written] = 0;
  return written;
}

int Utf16ToUtf8(const char16_t* text, char* out, int capacity) {
  int written = 0;
  while (*text != 0) {
    char bytes[4];
    const int units = EncodeUtf8(TakeUtf16(text), bytes);
    if (written + units >= capacity) break;
    std::memcpy(out + written, bytes, static_cast<std::size_t>(units));
    written += units;
  }
  out[written] = 0;
  return written;
}

}  // namespace fieldline
