#include "fieldline/drivers/imaging/sensor_card_k.h"

#include <algorithm>
#include <iterator>

#include "fieldline/drivers/ascii/hex_frame.h"

namespace {

constexpr BYTE kSoi = 0x7F;
constexpr BYTE kVer = 0x10;
constexpr BYTE kAdr = 0x01;
constexpr BYTE kCid1 = 0x80;
constexpr BYTE kCid2 = 0x4A;
constexpr BYTE kInfo[] = {'F', '2', 'E', 'E', '0', '0'};

constexpr int kReplyAsked = 64;
constexpr int kCardLength = 14;
constexpr WORD kLenidMask = 0x0FFF;
static_assert((kReplyAsked - fieldline::FrameLength(0)) / 2 <= sizeof(CSensorCardK::m_byCard));

// Number of INFO bytes in a reply that is valid: right first and last byte, CHKSUM and LCHKSUM, and all announced INFO
// received. -1 for any other reply.
int CountInfo(const BYTE* reply, int received) {
  if (received < fieldline::FrameLength(0)) return -1;
  if (reply[0] != kSoi || reply[received - 1] != fieldline::kEoi) return -1;

  const int checksum_position = received - fieldline::kTrailLength;
  if (GetHexWord(reply + checksum_position) != GetFrameChecksum(reply + 1, checksum_position - 1)) return -1;

  const WORD length = GetHexWord(reply + fieldline::kLengthPosition);
  const WORD lenid = length & kLenidMask;
  const int announced = lenid / 2;
  const int carried = (received - fieldline::FrameLength(0)) / 2;
  return GetLengthWord(lenid) == length && announced <= carried ? announced : -1;
}

}  // namespace

CSensorCardK::CSensorCardK() : CSensorBase(SERDAT_CARD_K) { m_pData = m_byCard; }

CSensorCardK::CSensorCardK(const CSensorCardK& other) : CSensorBase(other) {
  m_pData = m_byCard;
  *this = other;
}

CSensorCardK& CSensorCardK::operator=(const CSensorCardK& other) {
  if (this == &other) return *this;
  CSensorBase::operator=(other);
  m_nCardLen = other.m_nCardLen;
  std::copy(std::begin(other.m_byCard), std::end(other.m_byCard), m_byCard);
  return *this;
}

int CSensorCardK::GetData(ISerBase* port, int) {
  BYTE request[fieldline::FrameLength(sizeof kInfo)];
  const int length = BuildFrame(request, kVer, kAdr, kCid1, kCid2, kInfo, sizeof kInfo, kSoi);
  if (port->Write(request, length) != length) return 0;

  BYTE reply[kReplyAsked];
  const int received = port->Read(reply, kReplyAsked);
  const int count = CountInfo(reply, received);
  if (count < 0) return 0;

  m_nCardLen = static_cast<std::uint32_t>(count);
  for (int i = 0; i < count; ++i) m_byCard[i] = GetHexByte(reply + fieldline::kInfoPosition + 2 * i);
  return count == kCardLength && m_byCard[kCardLength - 1] == 0;
}
