// The five replies of the power unit: what a refused reply and those after it carry leaves the record alone.

#include "fieldline/drivers/ascii/sensor_power_unit.h"
#include "fuzz/reply_port.h"

using namespace fieldline::fuzz;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static constexpr std::size_t kParts[] = {0, 52, 84, 144, 208};
  ReplyPort port(data, size);
  CSensorPowerUnit unit;
  const std::span record(unit.m_pData, sizeof(POWER_UNIT_DATA));
  MakeOld(record);
  if (unit.GetData(&port, 1) == 0) {
    Require(IsOld(record.subspan(kParts[port.Writes() - 1])));
    return 0;
  }
  Require(port.Writes() == std::size(kParts) && unit.m_data.not_written == kOld);
  for (const std::int32_t value : unit.m_data.values) Require(value >= 0);
  return 0;
}
