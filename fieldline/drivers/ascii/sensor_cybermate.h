#pragma once

#include <cstdint>
#include <span>

#include "fieldline/sensor/sensor_base.h"

// Values as the unit sends them. The application defines what they mean.
#pragma pack(push, 1)
struct CYBERMATE_DATA {
  static constexpr int kAnalogs = 5;

  std::uint32_t analog[kAnalogs];  // 0 to 65535
  BYTE switch_states[7];
  BYTE alarm_states[26];
  BYTE parameters[10];
};
#pragma pack(pop)
static_assert(sizeof(CYBERMATE_DATA) == 63);

// Fixed-point monitoring unit over the hexadecimal ASCII protocol; kind SERDAT_CYBERMATE.
class FIELDLINE_API CSensorCybermate : public fieldline::RecordSensor<CYBERMATE_DATA> {
 public:
  CSensorCybermate();

  // Four exchanges with the unit at address `addr` (low byte). Each writes one array of the record immediately; after a
  // failure, the arrays of the failed and later exchanges are unchanged. A reply is accepted when it is long enough and
  // says that the command was carried out. Its checksum is not checked, and a character that is not a digit counts as
  // 0.
  //
  // Each exchange lasts the full time-out of a 120-byte read, because the unit's replies are shorter.
  int GetData(ISerBase* port, int addr) override;

 private:
  bool Exchange(ISerBase* port, BYTE command, BYTE* reply, int least);
  bool ReadBytes(ISerBase* port, BYTE command, std::span<BYTE> bytes);
};
