#include "tools/kinds.h"

#include <string>
#include <vector>

#include "fieldline/drivers/imaging/sensor_camera_3ge.h"
#include "fieldline/drivers/imaging/sensor_card_k.h"
#include "fieldline/sensor/sensor_factory.h"
#include "tools/text.h"
#include "tools/verb.h"

namespace fieldline::tool {
namespace {

using enum FieldType;

// Positions as in the drivers' records. What is not Measured is what the device sends, or a multiple of it without a
// unit.

constexpr Field One(std::string_view name, std::size_t position, FieldType type, int factor = 1) {
  return {name, position, type, 1, 0, factor};
}

// <name>_<first> and so on.
constexpr Field Run(std::string_view name, std::size_t position, FieldType type, int count, int first, int factor = 1) {
  return {name, position, type, count, first, factor};
}

// The record holds `factor` times the value in `unit`.
constexpr Field Measured(std::string_view name, std::size_t position, FieldType type, int factor,
                         std::string_view unit) {
  return {name, position, type, 1, 0, factor, unit};
}

constexpr Field Text(std::string_view name, std::size_t position, FieldType type, int units) {
  return {name, position, type, units};
}

constexpr Field kEnvir[] = {
    One("register_1", 0, kU32),
    One("register_0", 4, kU32),
};

// Both power meters. The quantities are the device's; q1 to q3 hold ten times its registers.
constexpr Field kElec[] = {
    One("counter", 0, kU32),    One("q1_total", 4, kU32),   One("q1_phase1", 8, kU32),  One("q1_phase2", 12, kU32),
    One("q1_phase3", 16, kU32), One("q2_total", 20, kU32),  One("q2_phase1", 24, kU32), One("q2_phase2", 28, kU32),
    One("q2_phase3", 32, kU32), One("q3_total", 36, kU32),  One("q3_phase1", 40, kU32), One("q3_phase2", 44, kU32),
    One("q3_phase3", 48, kU32), One("q4_total", 52, kU32),  One("q4_phase1", 56, kU32), One("q4_phase2", 60, kU32),
    One("q4_phase3", 64, kU32), One("single", 68, kU32),    One("q5_phase1", 72, kU32), One("q5_phase2", 76, kU32),
    One("q5_phase3", 80, kU32), One("q6_phase1", 84, kU32), One("q6_phase2", 88, kU32), One("q6_phase3", 92, kU32),
};

constexpr Field kOnoff[] = {
    Run("input", 0, kU8, 12, 1),
};

constexpr Field kLeak[] = {
    One("status_read", 0, kU8),        One("leak", 1, kU8),
    One("second_flag", 2, kU8),        One("second_flag_copy", 3, kU8),
    One("input_register_1", 4, kU32),  One("holding_register_1", 8, kU32),
    One("input_register_4", 12, kU32),
};

// Input i + 1 is 0 or 2 to the power i.
constexpr Field kDi[] = {
    Run("input", 0, kU8, 8, 1),
};

constexpr Field kAirc[] = {
    Run("register", 0, kU16, 3, 0),   One("register_3_low", 6, kU16),   One("register_4_low", 8, kU8),
    One("register_5_high", 9, kU8),   Run("register", 10, kU16, 2, 6),  Run("register", 14, kU16, 3, 12),
    One("register_15_low", 20, kU16), One("register_16_low", 22, kU8),  One("register_17_high", 23, kU8),
    Run("register", 24, kU16, 2, 18), Run("register", 28, kU16, 2, 24),
};

constexpr Field kEmerson[] = {
    One("register_100", 0, kU16),       Run("input", 2, kU8, 109, 0),        Run("register", 111, kU16, 25, 8),
    Run("register", 161, kU16, 6, 39),  Run("register", 173, kU16, 8, 49),   Run("register", 189, kU16, 10, 69),
    One("register_99", 209, kU16),      Run("register", 211, kU16, 12, 101), Run("register", 235, kU16, 6, 114),
    Run("register", 247, kU16, 5, 129), Run("register", 257, kU16, 18, 140),
};

constexpr Field kDualUnit[] = {
    One("value_1", 0, kI16),   Run("value", 2, kU16, 4, 2),    One("value_6", 10, kI16),
    One("value_7", 12, kU16),  Run("value", 14, kI16, 2, 8),   Run("value", 18, kU16, 11, 10),
    One("value_21", 40, kI16), Run("value", 42, kU16, 12, 22), One("state", 66, kU16),
};

constexpr Field kUps[] = {
    Measured("input_voltage", 0, kI32, 10, "V"),
    Measured("input_fault_voltage", 4, kI32, 10, "V"),
    Measured("output_voltage", 8, kI32, 10, "V"),
    Measured("output_load", 12, kI32, 1, "%"),
    Measured("input_frequency", 16, kI32, 10, "Hz"),
    Measured("battery_voltage", 20, kI32, 10, "V"),
    Measured("temperature", 24, kI32, 10, "°C"),
    One("status", 28, kU8),
    One("utility_fail", 29, kU8),
    One("battery_low", 30, kU8),
    One("bypass_active", 31, kU8),
    One("ups_failed", 32, kU8),
    One("standby_type", 33, kU8),
    One("self_test", 34, kU8),
    One("shutdown_active", 35, kU8),
    One("beeper_on", 36, kU8),
    Measured("rated_voltage", 37, kI32, 1, "V"),
    Measured("rated_current", 41, kI32, 1, "A"),
    Measured("rated_battery_voltage", 45, kI32, 1, "V"),
    Measured("rated_frequency", 49, kI32, 1, "Hz"),
    Text("maker", 53, kUtf16, 32),
    Text("model", 117, kUtf16, 32),
    Text("version", 181, kUtf16, 32),
};

constexpr Field kBattery[] = {
    One("cell_sum", 0, kU32, 1000),      One("group_2_first", 4, kU16, 100),   One("group_3_first", 6, kU16, 10),
    Run("cell", 8, kU16, 32, 1, 1000),   One("group_1_second", 72, kU16, 100), One("group_2_second", 74, kU16, 100),
    One("group_3_second", 76, kU16, 10), One("constant_1000", 78, kU16),       One("cell_count", 80, kU16),
    One("constant_4", 82, kU16),
};

constexpr Field kCyber[] = {
    Run("analog", 0, kU32, 5, 1),
    Run("switch_state", 20, kU8, 7, 1),
    Run("alarm_state", 27, kU8, 26, 1),
    Run("parameter", 53, kU8, 10, 1),
};

constexpr Field kPower[] = {
    Run("value", 0, kI32, 6, 1, 10),    Run("value", 24, kI32, 2, 7, 100), Run("value", 32, kI32, 3, 9, 10),
    One("value_12", 44, kI32, 100),     Run("value", 48, kI32, 8, 13, 10), Run("value", 80, kI32, 4, 21, 100),
    Run("value", 96, kI32, 24, 25, 10), One("value_49", 192, kI32),        Run("value", 196, kI32, 3, 50, 10),
    Run("state", 208, kU8, 11, 1),
};

// The record without the count in front of it.
constexpr Field kCard[] = {
    Run("byte", 0, kU8, 14, 1),
};

constexpr Field kCamera[] = {
    Measured("length", 0, kU16, 1, "bytes"),
    Text("name", 2, kAscii, 50),
};

using enum Protocol;

// Lines are usually set to the speed given, with n,8,1.
// name          description             kind                driver              protocol   bit/s address record fields
constexpr Kind kKinds[] = {
    {"envir",      "temperature/humidity", SERDAT_ENVIR,      "CSensorEnvir",     kModbus,   2400,   1, 8,   kEnvir   },
    {"elec",       "power meter",          SERDAT_ELEC,       "CSensorElec",      kModbus,   9600,   1, 96,  kElec    },
    {"elec-y",     "power meter, model 2", SERDAT_ELEC_Y,     "CSensorElecY",     kModbus,   9600,   1, 96,  kElec    },
    {"onoff",      "switch-input module",  SERDAT_ONOFF,      "CSensorOnoff",     kModbus,   9600,   1, 12,  kOnoff   },
    {"leak",       "leak controller",      SERDAT_LEAK,       "CSensorLeak",      kModbus,   9600,   1, 16,  kLeak    },
    {"airc",       "air conditioner",      SERDAT_AIRC,       "CSensorAirc",      kModbus,   9600,   1, 32,  kAirc    },
    {"emerson",    "Emerson unit",         SERDAT_EMERSON,    "CSensorEmerson",   kModbus,   9600,   1, 293, kEmerson },
    {"dual-proto", "dual-protocol unit",   SERDAT_DUAL_PROTO, "CSensorDualProto", kDual,     9600,   4, 68,  kDualUnit},
    {"ups",        "UPS",                  SERDAT_UPS,        "CSensorUps",       kQ1,       2400,   0, 245, kUps     },
    {"battery",    "battery monitor",      SERDAT_BATTERY,    "CSensorBattery",   kHexAscii, 9600,   1, 84,  kBattery },
    {"cybermate",  "fixed-point unit",     SERDAT_CYBERMATE,  "CSensorCybermate", kHexAscii, 9600,   1, 63,  kCyber   },
    {"power-unit", "power unit",           SERDAT_POWER_UNIT, "CSensorPowerUnit", kHexAscii, 9600,   1, 220, kPower   },
    {"card",       "card terminal",        SERDAT_CARD_K,     "CSensorCardK",     kHexAscii, 9600,   0, 32,  kCard    },
    {"camera",     "serial camera",        SERDAT_CAMERA,     "CSensorCamera",    kVc0706,   115200, 0, 52,  kCamera  },
    {"camera-3ge", "streaming camera",     SERDAT_CAMERA_3GE, "CSensorCamera3ge", kUg3,      115200, 0, 52,  kCamera  },
    {"di",         "own digital inputs",   SERDAT_DI,         "CSensorDi",        kLocal,    0,      0, 8,   kDi      },
};

}  // namespace

std::span<const Kind> Kinds() { return kKinds; }

const Kind* FindKind(std::string_view name) {
  for (const Kind& kind : kKinds) {
    if (kind.name == name) return &kind;
  }
  return nullptr;
}

const Kind& RequireKind(std::string_view name) {
  if (const Kind* const kind = FindKind(name)) return *kind;
  std::vector<std::string> names;
  for (const Kind& kind : kKinds) names.emplace_back(kind.name);
  throw UsageError("there is no kind \"" + std::string(name) + "\"; the kinds are " + Join(names));
}

std::string_view ProtocolName(Protocol protocol) {
  switch (protocol) {
    case kLocal:
      return "local";
    case kModbus:
      return "Modbus RTU";
    case kDual:
      return "Modbus RTU or own frame";
    case kQ1:
      return "UPS ASCII";
    case kHexAscii:
      return "YD/T 1363";
    case kVc0706:
      return "VC0706";
    case kUg3:
      return "UG3#";
    case kAlarm:
      return "alarm board frames";
  }
  return {};
}

CSensorBase* DriverOf(const Kind& kind) {
  // These two no factory makes.
  if (kind.id == SERDAT_CARD_K) {
    static CSensorCardK card;
    return &card;
  }
  if (kind.id == SERDAT_CAMERA_3GE) {
    static CSensorCamera3ge camera;
    return &camera;
  }
  CSensorFactory* const factory = CSensorFactory::GetInstance();
  return factory != nullptr ? factory->GetSensor(kind.id) : nullptr;
}

}  // namespace fieldline::tool
