#pragma once

#include <string_view>

#include "fieldline/sensor/sensor_base.h"

// All kinds of devices in one table. Header-only: the library exports nothing of it.
namespace fieldline {

enum class Protocol : BYTE {
  kInputs,      // no line: the unit's own digital inputs
  kModbusRtu,   // Modbus RTU
  kDualProto,   // Modbus RTU at even addresses, the unit's own frame at odd ones
  kQ1,          // text lines: "Q1", "I" and "F"
  kHexAscii,    // YD/T 1363
  kVc0706,      // commands of the VC0706
  kUg3,         // "UG3#" and a stream
  kAlarmBoard,  // frames of the alarm board
  kDgus,        // frames of the DWIN DGUS display
};

struct Kind {
  std::string_view name;  // as written in commands and files
  ENUM_SERDATKIND number;
  std::string_view description;
  std::string_view driver;  // class of its driver
  Protocol protocol;
  int baud;         // usual speed in bit/s, with n,8,1; 0 for a kind without a line
  int address;      // usual bus address; 0 when the protocol has no addresses
  int record_size;  // in bytes; 0 for a kind that is controlled and not polled
  int requests;     // of a whole first poll

  constexpr bool IsPolled() const { return record_size != 0; }
  constexpr bool HasLine() const { return baud != 0; }
  constexpr bool HasAddress() const { return address != 0; }
};

// clang-format off
inline constexpr Kind kKinds[] = {
    // name        number             what it is              class               protocol                bit/s address record requests
    {"envir",      SERDAT_ENVIR,      "temperature/humidity", "CSensorEnvir",     Protocol::kModbusRtu,    2400, 1,   8, 1},
    {"elec",       SERDAT_ELEC,       "power meter",          "CSensorElec",      Protocol::kModbusRtu,    9600, 1,  96, 1},
    {"elec-y",     SERDAT_ELEC_Y,     "power meter, model 2", "CSensorElecY",     Protocol::kModbusRtu,    9600, 1,  96, 2},
    {"onoff",      SERDAT_ONOFF,      "switch-input module",  "CSensorOnoff",     Protocol::kModbusRtu,    9600, 1,  12, 1},
    {"leak",       SERDAT_LEAK,       "leak controller",      "CSensorLeak",      Protocol::kModbusRtu,    9600, 1,  16, 3},
    {"airc",       SERDAT_AIRC,       "air conditioner",      "CSensorAirc",      Protocol::kModbusRtu,    9600, 1,  32, 1},
    {"emerson",    SERDAT_EMERSON,    "Emerson unit",         "CSensorEmerson",   Protocol::kModbusRtu,    9600, 1, 293, 5},
    {"dual-proto", SERDAT_DUAL_PROTO, "dual-protocol unit",   "CSensorDualProto", Protocol::kDualProto,    9600, 4,  68, 4},
    {"ups",        SERDAT_UPS,        "UPS",                  "CSensorUps",       Protocol::kQ1,           2400, 0, 245, 3},
    {"battery",    SERDAT_BATTERY,    "battery monitor",      "CSensorBattery",   Protocol::kHexAscii,     9600, 1,  84, 1},
    {"cybermate",  SERDAT_CYBERMATE,  "fixed-point unit",     "CSensorCybermate", Protocol::kHexAscii,     9600, 1,  63, 4},
    {"power-unit", SERDAT_POWER_UNIT, "power unit",           "CSensorPowerUnit", Protocol::kHexAscii,     9600, 1, 220, 5},
    {"card",       SERDAT_CARD_K,     "card terminal",        "CSensorCardK",     Protocol::kHexAscii,     9600, 0,  32, 1},
    {"camera",     SERDAT_CAMERA,     "serial camera",        "CSensorCamera",    Protocol::kVc0706,     115200, 0,  52, 6},
    {"camera-3ge", SERDAT_CAMERA_3GE, "streaming camera",     "CSensorCamera3ge", Protocol::kUg3,        115200, 0,  52, 1},
    {"di",         SERDAT_DI,         "own digital inputs",   "CSensorDi",        Protocol::kInputs,          0, 0,   8, 0},
    {"alarm",      SERDAT_ALARM,      "alarm board",          "CHubAlarm",        Protocol::kAlarmBoard, 115200, 0,   0, 0},
    {"display",    SERDAT_MONITOR,    "serial display",       "CHubMonitor",      Protocol::kDgus,       115200, 0,   0, 0},
};
// clang-format on

// Null when there is no such kind.
constexpr const Kind* FindKind(std::string_view name) {
  for (const Kind& kind : kKinds) {
    if (kind.name == name) return &kind;
  }
  return nullptr;
}

// The kind with this number, which must exist.
constexpr const Kind& KindOf(ENUM_SERDATKIND number) {
  const Kind* found = kKinds;
  while (found->number != number) ++found;
  return *found;
}

// The protocol's name, for display.
constexpr std::string_view ProtocolName(Protocol protocol) {
  switch (protocol) {
    case Protocol::kInputs:
      return "local";
    case Protocol::kModbusRtu:
      return "Modbus RTU";
    case Protocol::kDualProto:
      return "Modbus RTU or own frame";
    case Protocol::kQ1:
      return "UPS ASCII";
    case Protocol::kHexAscii:
      return "YD/T 1363";
    case Protocol::kVc0706:
      return "VC0706";
    case Protocol::kUg3:
      return "UG3#";
    case Protocol::kAlarmBoard:
      return "alarm board frames";
    case Protocol::kDgus:
      return "DWIN DGUS";
  }
  return {};
}

}  // namespace fieldline
