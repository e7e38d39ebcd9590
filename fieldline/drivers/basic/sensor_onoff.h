#pragma once

#include "fieldline/sensor/sensor_base.h"

struct ONOFF_DATA {
  BYTE inputs[12];  // inputs 1 to 12, as the module sends them
};
static_assert(sizeof(ONOFF_DATA) == 12);

// Spins until more than `ms` milliseconds have passed; does not yield the processor.
void BusyWait(unsigned int ms);

// Module with 12 switch inputs over Modbus RTU; kind SERDAT_ONOFF.
class FIELDLINE_API CSensorOnoff : public fieldline::RecordSensor<ONOFF_DATA> {
 public:
  CSensorOnoff();

  // One exchange with the module at address `addr` (low byte). On failure the record stays as it was.
  //
  // Busy-waits 10 ms, then lasts the full time-out of a 20-byte read, because the module's reply has 17 bytes.
  int GetData(ISerBase* port, int addr) override;
};
