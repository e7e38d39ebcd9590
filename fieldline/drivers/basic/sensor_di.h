#pragma once

#include <cstdint>

#include "fieldline/sensor/sensor_base.h"

struct DI_DATA {
  BYTE inputs[8];  // bit i of the input byte, kept in place: 0, or 2^i when input i + 1 is on
};
static_assert(sizeof(DI_DATA) == 8);

// The unit's own eight digital inputs, device "EIO1:"; kind SERDAT_DI.
class FIELDLINE_API CSensorDi : public fieldline::RecordSensor<DI_DATA> {
 public:
  CSensorDi();

  // One look at the inputs. Neither `port`, which may be null, nor `addr` is used. On failure the record stays as it
  // was.
  int GetData(ISerBase* port, int addr) override;

  std::intptr_t m_hDev = -1;  // never open between polls
};
