#include "fieldline/drivers/ascii/hex_frame.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstdint>

#include "fieldline/sensor/truncate.h"

namespace {

using fieldline::kEoi;
using fieldline::kInfoPosition;
using fieldline::kRtnPosition;
using fieldline::kSoi;
using fieldline::RoundToDouble;

constexpr BYTE kHexDigits[] = "0123456789ABCDEF";
constexpr int kChecksumLength = 4;

BYTE* PutHexByte(BYTE* out, BYTE byte) {
  *out++ = GetHexHigh(byte);
  *out++ = GetHexLow(byte);
  return out;
}

BYTE* PutHexWord(BYTE* out, WORD word) {
  out = PutHexByte(out, static_cast<BYTE>(word >> 8));
  return PutHexByte(out, static_cast<BYTE>(word & 0xFF));
}

// `value` rounded to tenths or hundredths (factor 10 or 100), as the double nearest to that decimal number.
double RoundToDecimals(double value, double factor) {
  // Doubles this large are further apart than tenths or hundredths, so rounding would not change them.
  constexpr double kCountsExactly = 9007199254740992;  // 2^53
  const double product = RoundToDouble(value * factor);
  if (!(std::abs(product) < kCountsExactly)) return value;

  double count = std::nearbyint(product);
  if (std::abs(product - count) == 0.5) {
    // The product is half-way between two counts, but may itself have been rounded. The part that was lost decides.
    const double remainder = std::fma(value, factor, -product);
    if (remainder > 0) count = std::ceil(product);
    if (remainder < 0) count = std::floor(product);
  }
  return RoundToDouble(count / factor);
}

bool IsFrameCharacter(BYTE c) { return (c >= '0' && c <= '9') || (c >= 'A' && c <= 'F') || c == kSoi || c == kEoi; }

}  // namespace

BYTE GetHexHigh(BYTE byte) { return kHexDigits[byte >> 4]; }

BYTE GetHexLow(BYTE byte) { return kHexDigits[byte & 0x0F]; }

BYTE GetHexValue(BYTE character) {
  if (character >= '0' && character <= '9') return static_cast<BYTE>(character - '0');
  if (character >= 'A' && character <= 'F') return static_cast<BYTE>(character - 'A' + 10);
  return 0;
}

BYTE GetHexByte(const BYTE* characters) {
  return static_cast<BYTE>(GetHexValue(characters[0]) << 4 | GetHexValue(characters[1]));
}

WORD GetHexWord(const BYTE* characters) {
  return static_cast<WORD>(GetHexByte(characters) << 8 | GetHexByte(characters + 2));
}

double GetHexFloat(const BYTE* characters) {
  const unsigned low = GetHexByte(characters) | GetHexByte(characters + 2) * 0x100u;
  const unsigned high = GetHexByte(characters + 4) | GetHexByte(characters + 6) * 0x100u;
  const std::uint32_t bits = high << 16 | low;

  // The same number as a double: exponent bias 1023 instead of 127, 52 bits of fraction instead of 23.
  const std::uint64_t exponent = bits >> 23 & 0xFF;
  const std::uint64_t fraction = bits & 0x7FFFFF;
  return std::bit_cast<double>((exponent - 127 + 1023) << 52 | fraction << (52 - 23));
}

// Same result as printing `value` with that many decimals, reading the text back, multiplying and truncating: printf
// rounds to the same count of tenths or hundredths, and reading the text gives the same double as dividing the count by
// the factor.
double GetScaledValue(double value, int decimals) {
  const double factor = decimals == 1 ? 10.0 : 100.0;
  return std::trunc(RoundToDouble(RoundToDecimals(value, factor) * factor));
}

WORD GetLengthWord(WORD lenid) {
  const int nibbles = (lenid >> 8 & 0xF) + (lenid >> 4 & 0xF) + (lenid & 0xF);
  return static_cast<WORD>(lenid + (-nibbles & 0xF) * 0x1000);
}

WORD GetFrameChecksum(const BYTE* characters, int count) {
  unsigned sum = 0;
  for (int i = 0; i < count; ++i) sum += characters[i];
  return static_cast<WORD>(-sum & 0xFFFF);
}

int BuildFrame(BYTE* buffer, BYTE ver, BYTE adr, BYTE cid1, BYTE cid2, const BYTE* info, WORD lenid, BYTE soi) {
  BYTE* out = buffer;
  *out++ = soi;
  out = PutHexByte(out, ver);
  out = PutHexByte(out, adr);
  out = PutHexByte(out, cid1);
  out = PutHexByte(out, cid2);
  out = PutHexWord(out, GetLengthWord(lenid));
  out = std::copy_n(info, lenid, out);
  out = PutHexWord(out, GetFrameChecksum(buffer + 1, static_cast<int>(out - buffer) - 1));
  *out++ = kEoi;
  return static_cast<int>(out - buffer);
}

void SetFrameCommand(BYTE* frame, BYTE cid2) {
  PutHexByte(frame + kRtnPosition, cid2);
  PutHexWord(frame + kInfoPosition, GetFrameChecksum(frame + 1, kInfoPosition - 1));
}

// A reply with 15 INFO bytes (30 = 0x01E characters). RTN has the place of a request's CID2:
//
//   0 1   3   5   7   9    13                             43   47
//   ~ 11  01  2A  00  101E 00A100B1B2B3B4B5B6B7B8B9BA0000 F6EF \r
//     VER ADR CID RTN LEN  INFO                           CHKSUM
bool CheckReply(const BYTE* reply, int received, int expected) {
  if (received != expected || expected < fieldline::FrameLength(0)) return false;
  if (!fieldline::IsCarriedOut(reply)) return false;
  if (!std::all_of(reply, reply + expected, IsFrameCharacter)) return false;

  // Compared as characters: as a number, a "~" in the checksum would count as the digit 0.
  const int checksum_position = expected - fieldline::kTrailLength;
  BYTE checksum[kChecksumLength];
  PutHexWord(checksum, GetFrameChecksum(reply + 1, checksum_position - 1));
  return std::equal(checksum, checksum + kChecksumLength, reply + checksum_position);
}

namespace fieldline {

bool IsCarriedOut(const BYTE* reply) { return reply[kRtnPosition] == '0' && reply[kRtnPosition + 1] == '0'; }

}  // namespace fieldline
