#pragma once

#include <cstdint>

#include "fieldline/sensor/sensor_base.h"

struct DUAL_PROTO_DATA {
  // The values with the indexes 0, 5, 7, 8 and 20 are signed. The unit's manual defines the quantities.
  std::uint16_t values[33];
  std::uint16_t state;  // 1 or 0
};
static_assert(sizeof(DUAL_PROTO_DATA) == 68);

// A unit in two variants; kind SERDAT_DUAL_PROTO. At an even address the unit uses Modbus RTU with floats. At an odd
// address it answers a 5-byte request with one long reply. Values that the Modbus variant does not have are 0.
class CSensorDualProto : public fieldline::RecordSensor<DUAL_PROTO_DATA> {
 public:
  CSensorDualProto();

  // Modbus variant: four exchanges. Each writes its part of the record immediately; after a failure, the parts of the
  // failed and later exchanges are unchanged. Frame variant: one exchange, with a pause of 500 ms, which writes the
  // whole record or nothing. In both variants only the length of a reply is checked.
  int GetData(ISerBase* port, int addr) override;

 private:
  int PollModbus(ISerBase* port, int addr);
  int PollFrame(ISerBase* port, int addr);

  // One exchange of the Modbus variant: sends the request, then reads the head and as many bytes as the head announces
  // into `frame`. Returns 0 when the request is not sent, or when the reply is incomplete, too long for `frame`, or
  // shorter than requested.
  int Transact(ISerBase* port, int addr, int function, int start, int count, unsigned char* frame);
};
