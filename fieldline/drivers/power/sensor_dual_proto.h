#pragma once

#include <cstdint>

#include "fieldline/sensor/sensor_base.h"

struct DUAL_PROTO_DATA {
  std::uint16_t values[33];  // signed or unsigned as the unit's table says
  std::uint16_t state;       // 1 or 0
};
static_assert(sizeof(DUAL_PROTO_DATA) == 68);

// A unit in two variants, told apart by the parity of its address; kind SERDAT_DUAL_PROTO. An even address speaks
// Modbus RTU with floats, an odd one answers a 5-byte frame with one long reply. Values that the Modbus variant lacks
// are 0.
class CSensorDualProto : public fieldline::RecordSensor<DUAL_PROTO_DATA> {
 public:
  CSensorDualProto();

  // Modbus variant: four exchanges, each writes its part of the record at once; after a failure the parts of the failed
  // and the later ones are as they were. Frame variant: one exchange with a pause of 500 ms in it, which writes the
  // whole record or nothing. Neither variant's replies are checked beyond their lengths.
  int GetData(ISerBase* port, int addr) override;

 private:
  int PollModbus(ISerBase* port, int addr);
  int PollFrame(ISerBase* port, int addr);

  // One exchange of the Modbus variant: request, head, and as many bytes as the head announces, into `frame`. 0 when
  // anything is missing, does not fit, or is less than was asked for.
  int Transact(ISerBase* port, int addr, int function, int start, int count, unsigned char* frame);
};
