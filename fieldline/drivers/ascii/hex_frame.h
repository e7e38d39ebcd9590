#pragma once

#include "fieldline/types.h"

// Frames of the YD/T 1363 protocol: every byte between the start byte and the carriage return is sent as two upper-case
// hexadecimal characters, high nibble first. All functions are pure and take characters as BYTEs.

// The hexadecimal character of the high nibble and of the low nibble.
BYTE GetHexHigh(BYTE byte);
BYTE GetHexLow(BYTE byte);

// The value of an upper-case hexadecimal digit; 0 for any other character.
BYTE GetHexValue(BYTE character);

// The number in 2 characters and in 4 characters.
BYTE GetHexByte(const BYTE* characters);
WORD GetHexWord(const BYTE* characters);

// Magnitude of the single-precision number in 8 characters, least significant byte first: 0000C841 (25) and 0000C8C1
// (-25) both give 25. Every bit pattern is decoded as a normal number, so zero gives 2^-127 and infinity gives 2^128.
double GetHexFloat(const BYTE* characters);

// `value` rounded to `decimals` (1 or 2) decimals, as a whole number of tenths or hundredths. The result is one less
// than expected when the product of the decimal number and 10 or 100 is just below a whole number: 0.29 gives 28
// hundredths.
double GetScaledValue(double value, int decimals);

// The LENGTH word for `lenid` INFO characters (at most 4095): a check nibble, then `lenid` in 12 bits.
WORD GetLengthWord(WORD lenid);

// The two's complement of the sum of `count` characters, in 16 bits. In a frame, these are the characters between SOI
// and CHKSUM.
WORD GetFrameChecksum(const BYTE* characters, int count);

namespace fieldline {

constexpr BYTE kSoi = '~';
constexpr BYTE kEoi = '\r';

constexpr int kRtnPosition = 7;
constexpr int kLengthPosition = 9;
constexpr int kInfoPosition = 13;
constexpr int kTrailLength = 5;  // CHKSUM and EOI

// Length of a frame with `lenid` INFO characters.
constexpr int FrameLength(int lenid) { return kInfoPosition + lenid + kTrailLength; }

// Whether the return code of a reply says that the command was carried out. At least 9 characters must have been
// received.
bool IsCarriedOut(const BYTE* reply);

}  // namespace fieldline

// Writes a frame with `lenid` INFO characters and returns its length, 18 + lenid. Here: command 0x41 to device 1 with
// the INFO byte 01.
//
//   ~    20   01   46    41    E002    01    FD36    \r
//   SOI  VER  ADR  CID1  CID2  LENGTH  INFO  CHKSUM  EOI
int BuildFrame(BYTE* buffer, BYTE ver, BYTE adr, BYTE cid1, BYTE cid2, const BYTE* info, WORD lenid,
               BYTE soi = fieldline::kSoi);

// Changes the command of a frame without INFO, and its checksum.
void SetFrameCommand(BYTE* frame, BYTE cid2);

// Whether a reply has exactly `expected` characters, says that the command was carried out, contains only "~", 0-9, A-F
// and carriage returns, and has the correct checksum. VER, ADR, CID1, LENGTH and the positions of "~" and carriage
// return are not checked.
bool CheckReply(const BYTE* reply, int received, int expected);
