#include "fieldline/sensor/sensor_factory.h"

#include <new>

#include "fieldline/alarm/hub_alarm.h"
#include "fieldline/display/hub_monitor.h"
#include "fieldline/sensor/make_driver.h"

CSensorFactory* CSensorFactory::m_pInstance = nullptr;

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
  // Never registered: they may be destroyed before this factory.
  if (kind == SERDAT_MONITOR) return CHubMonitor::GetInstance();
  if (kind == SERDAT_ALARM) return CHubAlarm::GetInstance();

  for (CSensorBase* sensor : m_arrSensor) {
    if (sensor->GetKind() == kind) return sensor;
  }
  // The application constructs these two itself.
  if (kind == SERDAT_CARD_K || kind == SERDAT_CAMERA_3GE) return nullptr;
  CSensorBase* const made = fieldline::MakeDriver(kind);
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
