#pragma once

#include <cstddef>
#include <span>
#include <string>
#include <string_view>

#include "fieldline/sensor/sensor_base.h"
#include "tools/record.h"

namespace fieldline::tool {

enum class Protocol {
  kLocal,     // no line: the unit's own inputs
  kModbus,    // Modbus RTU
  kDual,      // Modbus RTU at even addresses, a frame of its own at odd ones
  kQ1,        // "Q1", "I" and "F"
  kHexAscii,  // YD/T 1363
  kVc0706,    // commands of the VC0706
  kUg3,       // "UG3#" and a stream
  kAlarm,     // frames of the alarm board
  kDgus,      // frames of the display
};

// A kind of device as the command knows it.
struct Kind {
  std::string_view name;
  std::string_view description;
  ENUM_SERDATKIND id;
  std::string_view driver;  // its class
  Protocol protocol;
  int baud;                 // bit/s, as such devices are usually set, with n,8,1
  int address;              // usual; 0 where the protocol has none
  std::size_t record_size;  // bytes; 0 for none
  Fields fields;

  bool HasAddress() const { return address != 0; }
  std::string UsualSettings() const { return std::to_string(baud) + ",n,8,1"; }
};

// All that are polled.
std::span<const Kind> Kinds();

// These two have verbs of their own, and no record.
extern const Kind kAlarmBoard;
extern const Kind kDisplay;

// Null when there is no such kind.
const Kind* FindKind(std::string_view name);

// As FindKind, but throws UsageError, which names the kinds.
const Kind& RequireKind(std::string_view name);

// The protocol's name, for people.
std::string_view ProtocolName(Protocol protocol);

// The driver of a kind, the same each time; not the caller's. Null when memory is short.
CSensorBase* DriverOf(const Kind& kind);

}  // namespace fieldline::tool
