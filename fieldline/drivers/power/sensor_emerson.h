#pragma once

#include <cstdint>

#include "fieldline/sensor/sensor_base.h"

#pragma pack(push, 1)
// Input registers and discrete inputs as the unit sends them; registers between these runs are not kept.
struct EMERSON_DATA {
  std::uint16_t register_100;
  BYTE inputs[109];                     // discrete inputs 0 to 108, 1 when on
  std::uint16_t registers_8_to_32[25];  // odd offsets from here on
  std::uint16_t registers_39_to_44[6];
  std::uint16_t registers_49_to_56[8];
  std::uint16_t registers_69_to_78[10];
  std::uint16_t register_99;
  std::uint16_t registers_101_to_112[12];
  std::uint16_t registers_114_to_119[6];
  std::uint16_t registers_129_to_133[5];
  std::uint16_t registers_140_to_157[18];
};
#pragma pack(pop)
static_assert(sizeof(EMERSON_DATA) == 293);

// Emerson unit over Modbus RTU; kind SERDAT_EMERSON.
class FIELDLINE_API CSensorEmerson : public fieldline::RecordSensor<EMERSON_DATA> {
 public:
  CSensorEmerson();

  // Five exchanges with the unit at address `addr` (low byte). Each writes its part of the record immediately; after a
  // failure, the parts of the failed and later exchanges are unchanged.
  int GetData(ISerBase* port, int addr) override;

 private:
  bool ReadInputs(ISerBase* port, BYTE device);
};
