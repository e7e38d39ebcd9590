#pragma once

#include <cstdint>

#include "fieldline/sensor/sensor_base.h"

#pragma pack(push, 1)
struct UPS_DATA {
  std::int32_t input_voltage;        // 0.1 V
  std::int32_t input_fault_voltage;  // 0.1 V
  std::int32_t output_voltage;       // 0.1 V
  std::int32_t output_load;          // percent of rated load
  std::int32_t input_frequency;      // 0.1 Hz
  std::int32_t battery_voltage;      // 0.1 V
  std::int32_t temperature;          // 0.1 degrees Celsius
  BYTE status;                       // the eight bits below; the first is bit 7
  BYTE utility_fail;                 // 0 or 1, like the seven below
  BYTE battery_low;
  BYTE bypass_active;  // or boost
  BYTE ups_failed;
  BYTE standby_type;
  BYTE self_test;
  BYTE shutdown_active;
  BYTE beeper_on;
  std::int32_t rated_voltage;          // V; odd offsets from here on
  std::int32_t rated_current;          // A
  std::int32_t rated_battery_voltage;  // V
  std::int32_t rated_frequency;        // Hz
  char16_t maker[32];                  // zero-terminated UTF-16, like the two below
  char16_t model[32];
  char16_t version[32];
};
#pragma pack(pop)
static_assert(sizeof(UPS_DATA) == 245);

// UPS over the "Q1" line protocol; kind SERDAT_UPS. The protocol has neither addresses nor a checksum.
class FIELDLINE_API CSensorUps : public fieldline::RecordSensor<UPS_DATA> {
 public:
  CSensorUps();

  // Reads the status, and, once per driver object, the identification and the ratings. These two are read from the
  // first UPS that answers and then kept for every UPS polled through this driver. `addr` is not used. Returns 1 when
  // the status is new and the ratings are known.
  //
  // A value is written as soon as it is read, so a failed poll keeps the values read before the failure. A field that
  // is not a number counts as 0. An identification reply without the right first or last character does not fail the
  // poll; the next poll asks again. No identification reply, or one with missing fields, fails it.
  //
  // Every exchange lasts the full time-out of a 50-byte read.
  int GetData(ISerBase* port, int addr) override;

 private:
  bool ReadStatus(ISerBase* port);
  bool ReadIdentification(ISerBase* port);
  bool ReadRatings(ISerBase* port);
  int Command(const char* text);
};
