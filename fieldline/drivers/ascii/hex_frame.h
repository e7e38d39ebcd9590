#pragma once

#include "fieldline/types.h"

// Frames of the YD/T 1363 protocol: every byte between the start byte and the carriage return travels as two upper-case
// hexadecimal characters, high nibble first. Pure functions over characters held in BYTEs.

// The character of the high, of the low nibble.
BYTE GetHexHigh(BYTE byte);
BYTE GetHexLow(BYTE byte);

// The value of an upper-case hexadecimal digit; 0 for every other character.
BYTE GetHexValue(BYTE character);

// Number from 2, from 4 characters.
BYTE GetHexByte(const BYTE* characters);
WORD GetHexWord(const BYTE* characters);

// Magnitude of the single-precision number in 8 characters, least significant byte first: 0000C841 and 0000C8C1 are 25.
// Every pattern counts as a normal number, so that zero is 2^-127 and an infinity 2^128.
double GetHexFloat(const BYTE* characters);

// Any `value`, rounded to `decimals` (1 or 2) decimals and then counted in tenths or hundredths. A
// whole number, and one less than expected where the decimal number times 10 or 100 falls just short of it: 0.29 is 28
// hundredths.
double GetScaledValue(double value, int decimals);

// The LENGTH word for `lenid` INFO characters (at most 4095): a check nibble, then `lenid` in 12 bits.
WORD GetLengthWord(WORD lenid);

// What `count` characters lack to a sum of 65536: for a frame, the characters between SOI and CHKSUM.
WORD GetFrameChecksum(const BYTE* characters, int count);

namespace fieldline {

constexpr BYTE kSoi = '~';
constexpr BYTE kEoi = '\r';

constexpr int kRtnPosition = 7;
constexpr int kLengthPosition = 9;
constexpr int kInfoPosition = 13;
constexpr int kTrailLength = 5;  // CHKSUM and EOI

// Characters of a frame with `lenid` INFO characters.
constexpr int FrameLength(int lenid) { return kInfoPosition + lenid + kTrailLength; }

// Whether the return code of a reply, of which at least 9 characters must have come, says that the command was carried
// out.
bool IsCarriedOut(const BYTE* reply);

}  // namespace fieldline

// Writes a frame with `lenid` INFO characters, here of command 0x41 to device 1 with the INFO byte 01, and returns its
// length, 18 + lenid:
//
//   ~    20   01   46    41    E002    01    FD36    \r
//   SOI  VER  ADR  CID1  CID2  LENGTH  INFO  CHKSUM  EOI
int BuildFrame(BYTE* buffer, BYTE ver, BYTE adr, BYTE cid1, BYTE cid2, const BYTE* info, WORD lenid,
               BYTE soi = fieldline::kSoi);

// Makes a frame without INFO that of another command.
void SetFrameCommand(BYTE* frame, BYTE cid2);

// Whether a reply has exactly `expected` characters, says that the command was carried out, consists of "~", 0-9, A-F
// and carriage returns alone, and has the right checksum. VER, ADR, CID1 and LENGTH are not looked at, nor where a "~"
// or a carriage return stands.
bool CheckReply(const BYTE* reply, int received, int expected);
