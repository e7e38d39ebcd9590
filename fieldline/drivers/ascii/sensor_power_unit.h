#pragma once

#include <cstddef>
#include <cstdint>

#include "fieldline/sensor/sensor_base.h"

// Value n is values[n - 1]; the application defines what it means. All values are magnitudes: signs are dropped.
struct POWER_UNIT_DATA {
  static constexpr int kValues = 52;

  std::int32_t values[kValues];  // 0.1; values 7, 8, 12 and 21 to 24: 0.01; value 49: 1
  BYTE states[11];
  BYTE not_written;
};
static_assert(sizeof(POWER_UNIT_DATA) == 220);
static_assert(offsetof(POWER_UNIT_DATA, states) == 208);

// Power unit over the hexadecimal ASCII protocol; kind SERDAT_POWER_UNIT. Applications get it only from the sensor
// factory.
class CSensorPowerUnit : public fieldline::RecordSensor<POWER_UNIT_DATA> {
 public:
  CSensorPowerUnit();

  // Five exchanges with the unit at address `addr` (low byte): values 1 to 13, 14 to 21, 22 to 36, 37 to 52, states.
  // Each writes its part of the record immediately; after a failure, the parts of the failed and later exchanges are
  // unchanged.
  //
  // All except the fourth last the full time-out of a 150-byte read, because their replies are shorter.
  int GetData(ISerBase* port, int addr) override;

 private:
  bool Exchange(ISerBase* port, BYTE command, BYTE* reply, int length);
};
