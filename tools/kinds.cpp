#include "tools/kinds.h"

#include <string>
#include <vector>

#include "tools/record_fields.h"
#include "tools/text.h"
#include "tools/verb.h"

namespace fieldline::tool {
namespace {

using enum Protocol;

// Lines are usually set to the speed given, with n,8,1.
// name          description             kind                driver              protocol   bit/s address record fields
constexpr Kind kKinds[] = {
    {"envir",      "temperature/humidity", SERDAT_ENVIR,      "CSensorEnvir",     kModbus,   2400,   1, 8,   kEnvirFields   },
    {"elec",       "power meter",          SERDAT_ELEC,       "CSensorElec",      kModbus,   9600,   1, 96,  kElecFields    },
    {"elec-y",     "power meter, model 2", SERDAT_ELEC_Y,     "CSensorElecY",     kModbus,   9600,   1, 96,  kElecFields    },
    {"onoff",      "switch-input module",  SERDAT_ONOFF,      "CSensorOnoff",     kModbus,   9600,   1, 12,  kOnoffFields   },
    {"leak",       "leak controller",      SERDAT_LEAK,       "CSensorLeak",      kModbus,   9600,   1, 16,  kLeakFields    },
    {"airc",       "air conditioner",      SERDAT_AIRC,       "CSensorAirc",      kModbus,   9600,   1, 32,  kAircFields    },
    {"emerson",    "Emerson unit",         SERDAT_EMERSON,    "CSensorEmerson",   kModbus,   9600,   1, 293, kEmersonFields },
    {"dual-proto", "dual-protocol unit",   SERDAT_DUAL_PROTO, "CSensorDualProto", kDual,     9600,   4, 68,  kDualUnitFields},
    {"ups",        "UPS",                  SERDAT_UPS,        "CSensorUps",       kQ1,       2400,   0, 245, kUpsFields     },
    {"battery",    "battery monitor",      SERDAT_BATTERY,    "CSensorBattery",   kHexAscii, 9600,   1, 84,  kBatteryFields },
    {"cybermate",  "fixed-point unit",     SERDAT_CYBERMATE,  "CSensorCybermate", kHexAscii, 9600,   1, 63,  kCyberFields   },
    {"power-unit", "power unit",           SERDAT_POWER_UNIT, "CSensorPowerUnit", kHexAscii, 9600,   1, 220, kPowerFields   },
    {"card",       "card terminal",        SERDAT_CARD_K,     "CSensorCardK",     kHexAscii, 9600,   0, 32,  kCardFields    },
    {"camera",     "serial camera",        SERDAT_CAMERA,     "CSensorCamera",    kVc0706,   115200, 0, 52,  kCameraFields  },
    {"camera-3ge", "streaming camera",     SERDAT_CAMERA_3GE, "CSensorCamera3ge", kUg3,      115200, 0, 52,  kCameraFields  },
    {"di",         "own digital inputs",   SERDAT_DI,         "CSensorDi",        kLocal,    0,      0, 8,   kDiFields      },
};

}  // namespace

const Kind kAlarmBoard = {"alarm", "alarm board", SERDAT_ALARM, "CHubAlarm", kAlarm, 115200, 0, 0, {}};
const Kind kDisplay = {"display", "serial display", SERDAT_MONITOR, "CHubMonitor", kDgus, 115200, 0, 0, {}};

std::span<const Kind> Kinds() { return kKinds; }

const Kind* FindKind(std::string_view name) {
  for (const Kind& kind : kKinds) {
    if (kind.name == name) return &kind;
  }
  return nullptr;
}

const Kind& RequireKind(std::string_view name) {
  if (const Kind* const kind = FindKind(name)) return *kind;
  if (name == kAlarmBoard.name || name == kDisplay.name) {
    throw UsageError("\"" + std::string(name) + "\" is not polled; see fieldline " + std::string(name) + " --help");
  }
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
    case kDgus:
      return "DWIN DGUS";
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
