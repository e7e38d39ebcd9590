#pragma once

namespace fieldline {

inline constexpr char32_t kReplacementCharacter = 0xFFFD;

inline bool IsCharacter(char32_t code) { return code < 0xD800 || (code > 0xDFFF && code <= 0x10FFFF); }

// Writes 1 to 4 bytes and returns how many. An invalid code is written as U+FFFD.
inline int EncodeUtf8(char32_t code, char (&out)[4]) {
  if (!IsCharacter(code)) code = kReplacementCharacter;
  const auto continuation = [code](int shift) { return static_cast<char>(0x80 | ((code >> shift) & 0x3F)); };
  if (code < 0x80) {
    out[0] = static_cast<char>(code);
    return 1;
  }
  if (code < 0x800) {
    out[0] = static_cast<char>(0xC0 | (code >> 6));
    out[1] = continuation(0);
    return 2;
  }
  if (code < 0x10000) {
    out[0] = static_cast<char>(0xE0 | (code >> 12));
    out[1] = continuation(6);
    out[2] = continuation(0);
    return 3;
  }
  out[0] = static_cast<char>(0xF0 | (code >> 18));
  out[1] = continuation(12);
  out[2] = continuation(6);
  out[3] = continuation(0);
  return 4;
}

}  // namespace fieldline
