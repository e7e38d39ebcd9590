#include "fieldline/sensor/make_driver.h"

#include <new>

#include "fieldline/drivers/ascii/sensor_battery.h"
#include "fieldline/drivers/ascii/sensor_cybermate.h"
#include "fieldline/drivers/ascii/sensor_power_unit.h"
#include "fieldline/drivers/basic/sensor_di.h"
#include "fieldline/drivers/basic/sensor_envir.h"
#include "fieldline/drivers/basic/sensor_leak.h"
#include "fieldline/drivers/basic/sensor_onoff.h"
#include "fieldline/drivers/imaging/sensor_camera.h"
#include "fieldline/drivers/imaging/sensor_camera_3ge.h"
#include "fieldline/drivers/imaging/sensor_card_k.h"
#include "fieldline/drivers/power/sensor_airc.h"
#include "fieldline/drivers/power/sensor_dual_proto.h"
#include "fieldline/drivers/power/sensor_elec.h"
#include "fieldline/drivers/power/sensor_elec_y.h"
#include "fieldline/drivers/power/sensor_emerson.h"
#include "fieldline/drivers/power/sensor_ups.h"

namespace fieldline {

CSensorBase* MakeDriver(ENUM_SERDATKIND kind) {
  switch (kind) {
    case SERDAT_ELEC:
      return new (std::nothrow) CSensorElec;
    case SERDAT_ONOFF:
      return new (std::nothrow) CSensorOnoff;
    case SERDAT_UPS:
      return new (std::nothrow) CSensorUps;
    case SERDAT_BATTERY:
      return new (std::nothrow) CSensorBattery;
    case SERDAT_ENVIR:
      return new (std::nothrow) CSensorEnvir;
    case SERDAT_LEAK:
      return new (std::nothrow) CSensorLeak;
    case SERDAT_AIRC:
      return new (std::nothrow) CSensorAirc;
    case SERDAT_CYBERMATE:
      return new (std::nothrow) CSensorCybermate;
    case SERDAT_DI:
      return new (std::nothrow) CSensorDi;
    case SERDAT_CAMERA:
      return new (std::nothrow) CSensorCamera;
    case SERDAT_CARD_K:
      return new (std::nothrow) CSensorCardK;
    case SERDAT_CAMERA_3GE:
      return new (std::nothrow) CSensorCamera3ge;
    case SERDAT_EMERSON:
      return new (std::nothrow) CSensorEmerson;
    case SERDAT_DUAL_PROTO:
      return new (std::nothrow) CSensorDualProto;
    case SERDAT_POWER_UNIT:
      return new (std::nothrow) CSensorPowerUnit;
    case SERDAT_ELEC_Y:
      return new (std::nothrow) CSensorElecY;
    default:
      return nullptr;
  }
}

}  // namespace fieldline
