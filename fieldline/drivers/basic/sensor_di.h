#pragma once

#include <cstdint>

#include "fieldline/sensor/sensor_base.h"

struct DI_DATA {
  BYTE inputs[8];  // inputs[i] is 2^i when input i + 1 is on, otherwise 0
};
static_assert(sizeof(DI_DATA) == 8);

// The unit's own eight digital inputs, device "EIO1:"; kind SERDAT_DI.
class FIELDLINE_API CSensorDi : public fieldline::RecordSensor<DI_DATA> {
 public:
  CSensorDi();

  // Reads the inputs once. `port`, which may be null, and `addr` are not used. On failure the record stays as it was.
  int GetData(ISerBase* port, int addr) override;

  // The open input device. Part of the layout that applications are built against. Always -1, for none: GetData opens
  // and closes the device without storing its handle here.
  std::intptr_t m_hDev = -1;
};
