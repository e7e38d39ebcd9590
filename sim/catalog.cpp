#include "sim/catalog.h"

#include "sim/airc.h"
#include "sim/alarm_board.h"
#include "sim/battery.h"
#include "sim/camera.h"
#include "sim/camera_3ge.h"
#include "sim/card_terminal.h"
#include "sim/cybermate.h"
#include "sim/display.h"
#include "sim/dual_proto.h"
#include "sim/elec.h"
#include "sim/elec_y.h"
#include "sim/emerson.h"
#include "sim/envir.h"
#include "sim/leak.h"
#include "sim/onoff.h"
#include "sim/power_unit.h"
#include "sim/ups.h"

namespace fieldline::sim {
namespace {

template <typename T>
std::unique_ptr<Device> MakeAt(BYTE address) {
  return std::make_unique<T>(address);
}

template <typename T>
std::unique_ptr<Device> MakeWithoutAddress(BYTE) {
  return std::make_unique<T>();
}

constexpr Kind kKinds[] = {
    {"envir",      "temperature and humidity probe",                                      2400,   1, MakeAt<EnvirProbe>              },
    {"leak",       "water-leak controller",                                               9600,   1, MakeAt<LeakController>          },
    {"onoff",      "module with 12 switch inputs",                                        9600,   1, MakeAt<SwitchInputs>            },
    {"elec",       "power meter",                                                         9600,   1, MakeAt<ElecMeter>               },
    {"elec-y",     "power meter, second model",                                           9600,   1, MakeAt<ElecYMeter>              },
    {"airc",       "air conditioner",                                                     9600,   1, MakeAt<AirConditioner>          },
    {"emerson",    "Emerson unit",                                                        9600,   1, MakeAt<EmersonUnit>             },
    {"dual-proto", "dual-protocol unit: Modbus at an even address, frames at an odd one", 9600,   4, MakeDualProto                   },
    {"ups",        "uninterruptible power supply",                                        2400,   0, MakeWithoutAddress<Ups>         },
    {"battery",    "battery monitor with 32 cells",                                       9600,   1, MakeAt<BatteryMonitor>          },
    {"cybermate",  "fixed-point monitoring unit",                                         9600,   1, MakeAt<Cybermate>               },
    {"power-unit", "power unit",                                                          9600,   1, MakeAt<PowerUnit>               },
    {"card",       "card terminal",                                                       9600,   0, MakeWithoutAddress<CardTerminal>},
    {"camera",     "serial camera, VC0706",                                               115200, 0, MakeWithoutAddress<Camera>      },
    {"camera-3ge", "serial camera that streams its picture",                              115200, 0, MakeWithoutAddress<Camera3ge>   },
    {"alarm",      "alarm board",                                                         115200, 0, MakeWithoutAddress<AlarmBoard>  },
    {"display",    "serial display",                                                      115200, 0, MakeWithoutAddress<Display>     },
};

}  // namespace

std::span<const Kind> Catalog() { return kKinds; }

const Kind* FindKind(std::string_view name) {
  for (const Kind& kind : kKinds) {
    if (kind.name == name) return &kind;
  }
  return nullptr;
}

std::unique_ptr<Device> Make(std::string_view kind, BYTE address) {
  const Kind* found = FindKind(kind);
  return found != nullptr ? found->make(address) : nullptr;
}

}  // namespace fieldline::sim
