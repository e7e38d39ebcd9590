#pragma once

#include <cstdint>

#include "fieldline/sensor/sensor_base.h"

// Eight registers of the unit from a first register f on. Of f + 3 and f + 4 only the low byte is kept, of f + 5 only
// the high byte.
struct AIRC_GROUP {
  std::uint16_t register_0;
  std::uint16_t register_1;
  std::uint16_t register_2;
  std::uint16_t register_3_low;
  BYTE register_4_low;
  BYTE register_5_high;
  std::uint16_t register_6;
  std::uint16_t register_7;
};
static_assert(sizeof(AIRC_GROUP) == 14);

struct AIRC_DATA {
  AIRC_GROUP first;   // registers 0 to 7
  AIRC_GROUP second;  // registers 12 to 19
  std::uint16_t register_24;
  std::uint16_t register_25;
};
static_assert(sizeof(AIRC_DATA) == 32);

// Air conditioner over Modbus RTU that sends each register low byte first; kind SERDAT_AIRC.
class FIELDLINE_API CSensorAirc : public fieldline::RecordSensor<AIRC_DATA> {
 public:
  CSensorAirc();

  // One exchange with the unit at address `addr` (low byte). On failure the record stays as it was.
  //
  // Asks for 60 registers and reads at most 100 bytes, because these units answer with fewer registers than requested.
  // A reply shorter than 100 bytes makes the poll last the full time-out of that read.
  int GetData(ISerBase* port, int addr) override;
};
