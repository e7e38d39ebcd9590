#pragma once

#include <cstdint>

#include "fieldline/sensor/sensor_base.h"

// Card terminal over hexadecimal ASCII frames that start with 0x7F; kind SERDAT_CARD_K. No factory makes it: the
// application constructs it.
class FIELDLINE_API CSensorCardK : public CSensorBase {
 public:
  CSensorCardK();
  CSensorCardK(const CSensorCardK& other);
  CSensorCardK& operator=(const CSensorCardK& other);

  // One exchange with the terminal; `addr` is not used, and a closed port shows as a failed write. 1 when the terminal
  // sent 14 bytes of which the last is 0. On failure the record stays as it was, unless a sound reply carried another
  // number of bytes or another last byte: then it holds that reply.
  //
  // Lasts the full time-out of a 64-byte read, since the terminal's reply has 46.
  int GetData(ISerBase* port, int addr) override;

  // The record; m_pData points at m_byCard, in a copy at its own.
  std::uint32_t m_nCardLen = 0;  // bytes in m_byCard
  BYTE m_byCard[32] = {};        // the INFO bytes of the reply, 14 after a poll that succeeded
};
