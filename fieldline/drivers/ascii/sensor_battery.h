#pragma once

#include <cstddef>
#include <cstdint>

#include "fieldline/sensor/sensor_base.h"

// The application defines what the values of the groups mean. All values are magnitudes: signs are dropped. A 16-bit
// field keeps the low 16 bits of a value that does not fit.
struct BATTERY_DATA {
  static constexpr int kCells = 32;

  std::uint32_t cell_sum;        // sum of the cells below, in 0.001
  std::uint16_t group_2_first;   // 0.01
  std::uint16_t group_3_first;   // 0.1
  std::uint16_t cells[kCells];   // 0.001: millivolts when the monitor sends volts
  std::uint16_t group_1_second;  // 0.01
  std::uint16_t group_2_second;  // 0.01
  std::uint16_t group_3_second;  // 0.1
  std::uint16_t constant_1000;
  std::uint16_t cell_count;  // 32
  std::uint16_t constant_4;
};
static_assert(sizeof(BATTERY_DATA) == 84);
static_assert(offsetof(BATTERY_DATA, cells) == 8 && offsetof(BATTERY_DATA, group_1_second) == 72);

// Battery monitor over the hexadecimal ASCII protocol; kind SERDAT_BATTERY.
class FIELDLINE_API CSensorBattery : public fieldline::RecordSensor<BATTERY_DATA> {
 public:
  CSensorBattery();

  // One exchange with the monitor at address `addr` (low byte). A successful poll then waits 2 s before it returns, so
  // that the next request comes no earlier. On failure the record stays as it was.
  int GetData(ISerBase* port, int addr) override;
};
