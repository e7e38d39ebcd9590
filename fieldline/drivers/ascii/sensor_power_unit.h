#pragma once

#include <cstddef>
#include <cstdint>

#include "fieldline/sensor/sensor_base.h"

// What each value means belongs to the application; value n stands in values[n - 1]. All are magnitudes: the unit's
// signs are dropped.
struct POWER_UNIT_DATA {
  static constexpr int kValues = 52;

  std::int32_t values[kValues];  // 0.1, but values 7, 8, 12 and 21 to 24: 0.01, and value 49: 1
  BYTE states[11];
  BYTE not_written;
};
static_assert(sizeof(POWER_UNIT_DATA) == 220);
static_assert(offsetof(POWER_UNIT_DATA, states) == 208);

// Power unit over the hexadecimal ASCII protocol; kind SERDAT_POWER_UNIT. Reached through the sensor factory alone.
class CSensorPowerUnit : public fieldline::RecordSensor<POWER_UNIT_DATA> {
 public:
  CSensorPowerUnit();

  // Five exchanges with the unit at address `addr` (low byte): values 1 to 13, 14 to 21, 22 to 36, 37 to 52, states.
  // Each writes its part of the record at once; after a failure the parts of the later ones are as they were.
  //
  // All but the fourth last the full time-out of a 150-byte read, since their replies are shorter.
  int GetData(ISerBase* port, int addr) override;

 private:
  bool Exchange(ISerBase* port, BYTE command, BYTE* reply, int length);
};
