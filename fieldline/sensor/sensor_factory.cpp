#include "fieldline/sensor/sensor_factory.h"

#include <new>

#include "fieldline/alarm/hub_alarm.h"
#include "fieldline/display/hub_monitor.h"
#include "fieldline/drivers/ascii/sensor_battery.h"
#include "fieldline/drivers/ascii/sensor_cybermate.h"
#include "fieldline/drivers/ascii/sensor_power_unit.h"
#include "fieldline/drivers/basic/sensor_di.h"
#include "fieldline/drivers/basic/sensor_envir.h"
#include "fieldline/drivers/basic/sensor_leak.h"
#include "fieldline/drivers/basic/sensor_onoff.h"
#include "fieldline/drivers/imaging/sensor_camera.h"
#include "fieldline/drivers/power/sensor_airc.h"
#include "fieldline/drivers/power/sensor_dual_proto.h"
#include "fieldline/drivers/power/sensor_elec.h"
#include "fieldline/drivers/power/sensor_elec_y.h"
#include "fieldline/drivers/power/sensor_emerson.h"
#include "fieldline/drivers/power/sensor_ups.h"

CSensorFactory* CSensorFactory::m_pInstance = nullptr;

namespace {

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

}  // namespace

CSensorFactory* CSensorFactory::GetInstance() {
  if (!m_pInstance) m_pInstance = new (std::nothrow) CSensorFactory;
  return m_pInstance;
}

void CSensorFactory::FreeInstance() {
  delete m_pInstance;
  m_pInstance = nullptr;
}

CSensorFactory::~CSensorFactory() {
  for (auto sensor = m_arrSensor.rbegin(); sensor != m_arrSensor.rend(); ++sensor) delete *sensor;
}

CSensorBase* CSensorFactory::GetSensor(ENUM_SERDATKIND kind) {
  // Never registered: they may be gone before this factory is.
  if (kind == SERDAT_MONITOR) return CHubMonitor::GetInstance();
  if (kind == SERDAT_ALARM) return CHubAlarm::GetInstance();

  for (CSensorBase* sensor : m_arrSensor) {
    if (sensor->GetKind() == kind) return sensor;
  }
  CSensorBase* const made = MakeDriver(kind);
  const int index = RegisterSensor(made);
  if (index < 0) {
    delete made;
    return nullptr;
  }
  return m_arrSensor[static_cast<std::size_t>(index)];
}

int CSensorFactory::RegisterSensor(CSensorBase* sensor) {
  if (!sensor) return -1;
  for (std::size_t i = 0; i < m_arrSensor.size(); ++i) {
    if (m_arrSensor[i]->GetKind() == sensor->GetKind()) return static_cast<int>(i);
  }
  try {
    m_arrSensor.push_back(sensor);
  } catch (const std::bad_alloc&) {
    return -1;
  }
  return static_cast<int>(m_arrSensor.size()) - 1;
}
