#include "fieldline/sensor/sensor_factory.h"

#include <new>

#include "fieldline/drivers/basic/sensor_envir.h"

CSensorFactory* CSensorFactory::m_pInstance = nullptr;

namespace {

CSensorBase* MakeDriver(ENUM_SERDATKIND kind) {
  switch (kind) {
    case SERDAT_ENVIR:
      return new (std::nothrow) CSensorEnvir;
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
