#pragma once

#include <cstdint>

#include "fieldline/sensor/sensor_base.h"

// Card terminal over hexadecimal ASCII frames that start with 0x7F; kind SERDAT_CARD_K. The factory does not create it:
// the application constructs it.
class FIELDLINE_API CSensorCardK : public CSensorBase {
 public:
  CSensorCardK();
  CSensorCardK(const CSensorCardK& other);
  CSensorCardK& operator=(const CSensorCardK& other);

  // One exchange with the terminal. `addr` is not used, and on a closed port the write fails. Returns 1 when the
  // terminal sent 14 bytes, the last of them 0. A valid reply with another number of bytes or another last byte is a
  // failure, but is stored in the record. On any other failure the record stays as it was.
  //
  // Lasts the full time-out of a 64-byte read, because the terminal's reply has 46 bytes.
  int GetData(ISerBase* port, int addr) override;

  // The record. m_pData points at m_byCard; in a copy, at the copy's own m_byCard.
  std::uint32_t m_nCardLen = 0;  // bytes in m_byCard
  BYTE m_byCard[32] = {};        // the INFO bytes of the reply, 14 after a successful poll
};
