// One reply of the battery monitor: a failed poll leaves the record alone, another one makes it consistent.

#include <numeric>

#include "fieldline/drivers/ascii/sensor_battery.h"
#include "fuzz/reply_port.h"

using namespace fieldline::fuzz;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  ReplyPort port(data, size);
  CSensorBattery battery;
  MakeOld({battery.m_pData, sizeof(BATTERY_DATA)});
  if (battery.GetData(&port, 1) == 0) {
    Require(IsOld({battery.m_pData, sizeof(BATTERY_DATA)}));
    return 0;
  }
  const BATTERY_DATA& record = battery.m_data;
  Require(record.constant_1000 == 1000 && record.cell_count == 32 && record.constant_4 == 4);
  Require(record.cell_sum == std::accumulate(std::begin(record.cells), std::end(record.cells), 0u));
  return 0;
}
