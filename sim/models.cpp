#include "sim/models.h"

#include <algorithm>

#include "sim/devices/alarm/alarm_board.h"
#include "sim/devices/ascii/battery.h"
#include "sim/devices/ascii/cybermate.h"
#include "sim/devices/ascii/power_unit.h"
#include "sim/devices/basic/envir.h"
#include "sim/devices/basic/leak.h"
#include "sim/devices/basic/onoff.h"
#include "sim/devices/display/display.h"
#include "sim/devices/imaging/camera.h"
#include "sim/devices/imaging/camera_3ge.h"
#include "sim/devices/imaging/card_terminal.h"
#include "sim/devices/power/airc.h"
#include "sim/devices/power/dual_proto.h"
#include "sim/devices/power/elec.h"
#include "sim/devices/power/elec_y.h"
#include "sim/devices/power/emerson.h"
#include "sim/devices/power/ups.h"

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

constexpr Model kModels[] = {
    {SERDAT_ENVIR,      "",                                                MakeAt<EnvirProbe>              },
    {SERDAT_LEAK,       "",                                                MakeAt<LeakController>          },
    {SERDAT_ONOFF,      "",                                                MakeAt<SwitchInputs>            },
    {SERDAT_ELEC,       "",                                                MakeAt<ElecMeter>               },
    {SERDAT_ELEC_Y,     "",                                                MakeAt<ElecYMeter>              },
    {SERDAT_AIRC,       "",                                                MakeAt<AirConditioner>          },
    {SERDAT_EMERSON,    "",                                                MakeAt<EmersonUnit>             },
    {SERDAT_DUAL_PROTO, "Modbus at an even address, frames at an odd one", MakeDualProto                   },
    {SERDAT_UPS,        "",                                                MakeWithoutAddress<Ups>         },
    {SERDAT_BATTERY,    "32 cells",                                        MakeAt<BatteryMonitor>          },
    {SERDAT_CYBERMATE,  "",                                                MakeAt<Cybermate>               },
    {SERDAT_POWER_UNIT, "",                                                MakeAt<PowerUnit>               },
    {SERDAT_CARD_K,     "",                                                MakeWithoutAddress<CardTerminal>},
    {SERDAT_CAMERA,     "VC0706",                                          MakeWithoutAddress<Camera>      },
    {SERDAT_CAMERA_3GE, "streams its picture",                             MakeWithoutAddress<Camera3ge>   },
    {SERDAT_ALARM,      "",                                                MakeWithoutAddress<AlarmBoard>  },
    {SERDAT_MONITOR,    "",                                                MakeWithoutAddress<Display>     },
    {SERDAT_DI,         "a file replaces the input device",                nullptr                         },
};

constexpr bool EveryKindIsPlayed() {
  return std::ranges::all_of(kKinds, [](const Kind& kind) {
    const auto model = std::ranges::find(kModels, kind.number, &Model::kind);
    return model != std::end(kModels) && (model->make != nullptr) == kind.HasLine();
  });
}
static_assert(EveryKindIsPlayed());

}  // namespace

std::span<const Model> Models() { return kModels; }

const Model& ModelOf(const Kind& kind) { return *std::ranges::find(kModels, kind.number, &Model::kind); }

std::unique_ptr<Device> Make(const Kind& kind, BYTE address) { return ModelOf(kind).make(address); }

}  // namespace fieldline::sim
