// The four replies of the fixed-point unit: what a refused reply and those after it carry leaves the record alone.

#include "fieldline/drivers/ascii/sensor_cybermate.h"
#include "fuzz/reply_port.h"

using namespace fieldline::fuzz;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static constexpr std::size_t kParts[] = {0, 20, 27, 53};
  ReplyPort port(data, size);
  CSensorCybermate unit;
  const std::span record(unit.m_pData, sizeof(CYBERMATE_DATA));
  MakeOld(record);
  if (unit.GetData(&port, 1) == 0) {
    Require(IsOld(record.subspan(kParts[port.Writes() - 1])));
    return 0;
  }
  Require(port.Writes() == std::size(kParts));
  for (const std::uint32_t analog : unit.m_data.analog) Require(analog <= 0xFFFF);
  return 0;
}
