#pragma once

#include "fieldline/drivers/power/elec_data.h"
#include "fieldline/sensor/sensor_base.h"

// Second model of power meter over Modbus RTU; kind SERDAT_ELEC_Y. The record is the same as that of CSensorElec.
class FIELDLINE_API CSensorElecY : public fieldline::RecordSensor<ELEC_DATA> {
 public:
  CSensorElecY();

  // Two exchanges with the meter at address `addr` (low byte). The whole record is written when both succeed; otherwise
  // it stays as it was.
  int GetData(ISerBase* port, int addr) override;
};
