#pragma once

#include <cstdint>

#include "fieldline/sensor/sensor_base.h"

// 16-bit registers as the probe sends them, zero-extended: 65336 is -200. The application defines the scale, and which
// register is temperature and which is humidity.
struct ENVIR_DATA {
  std::uint32_t register_1;  // holding register 1
  std::uint32_t register_0;  // holding register 0
};
static_assert(sizeof(ENVIR_DATA) == 8);

// Temperature and humidity probe over Modbus RTU; kind SERDAT_ENVIR.
class FIELDLINE_API CSensorEnvir : public fieldline::RecordSensor<ENVIR_DATA> {
 public:
  CSensorEnvir();

  // One exchange with the probe at address `addr` (low byte). On failure the record stays as it was.
  int GetData(ISerBase* port, int addr) override;
};
