#pragma once

#include <cstdint>

#include "fieldline/sensor/sensor_base.h"

// The last three are 16-bit registers as the controller sends them, zero-extended.
struct LEAK_DATA {
  BYTE status_read;                // 1 once the status register has been read; never 0 again
  BYTE leak;                       // 1: bit 0 or 1 of the status register is set
  BYTE second_flag;                // 1: bit 2 or 3 of the status register is set
  BYTE second_flag_copy;           // the same
  std::uint32_t input_register_1;  // read only while there is a leak, otherwise 0
  std::uint32_t holding_register_1;
  std::uint32_t input_register_4;
};
static_assert(sizeof(LEAK_DATA) == 16);

// Water-leak controller over Modbus RTU; kind SERDAT_LEAK.
class FIELDLINE_API CSensorLeak : public fieldline::RecordSensor<LEAK_DATA> {
 public:
  CSensorLeak();

  // Three exchanges with the controller at address `addr` (low byte), four while there is a leak. Each writes its part
  // of the record immediately; after a failure, the parts of the failed and later exchanges are unchanged.
  //
  // Each exchange lasts the full time-out of a 10-byte read, because the controller's reply has 7 bytes.
  int GetData(ISerBase* port, int addr) override;

 private:
  bool ReadRegister(ISerBase* port, int addr, BYTE function, WORD reg, WORD* value);
};
