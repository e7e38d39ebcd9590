#pragma once

#include "fieldline/drivers/power/elec_data.h"
#include "fieldline/sensor/sensor_base.h"

// Power meter over Modbus RTU; kind SERDAT_ELEC.
class FIELDLINE_API CSensorElec : public fieldline::RecordSensor<ELEC_DATA> {
 public:
  CSensorElec();

  // One exchange with the meter at address `addr` (low byte). On failure the record stays as it was. When quantity 5 is
  // implausible in any phase (above 10000), the poll returns 1 but leaves quantities 5 and 6 unchanged.
  //
  // Lasts the full time-out of a 120-byte read, because the meter's reply has 119 bytes.
  int GetData(ISerBase* port, int addr) override;
};
