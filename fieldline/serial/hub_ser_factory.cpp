#include "fieldline/serial/hub_ser_factory.h"

#include <new>

#include "fieldline/alarm/hub_alarm.h"
#include "fieldline/display/hub_monitor.h"
#include "fieldline/serial/hub_ser_test.h"
#include "fieldline/serial/ser_base.h"

CHubSerFactory* CHubSerFactory::m_pInstance = nullptr;

namespace {

ISerBase* MakePort(ENUM_SERTYPE type) {
  if (type == SER_TEST) return new (std::nothrow) CHubSerTest;
  const bool has_port = (type >= SER_ESL1 && type <= SER_ESL8) || type == SER_COM;
  return has_port ? new (std::nothrow) CSerBase(type) : nullptr;
}

// Destroys a port as an object of its own class: ports have no virtual destructor. The type tells the class.
template <class Port>
void DestroyAs(ISerBase* port) {
  auto* const made = static_cast<Port*>(port);
  made->Port::~Port();
  ::operator delete(made);
}

void DestroyPort(ISerBase* port) {
  if (port->GetSerType() == SER_TEST) {
    DestroyAs<CHubSerTest>(port);
  } else {
    DestroyAs<CSerBase>(port);
  }
}

}  // namespace

CHubSerFactory* CHubSerFactory::GetInstance() {
  if (!m_pInstance) m_pInstance = new (std::nothrow) CHubSerFactory;
  return m_pInstance;
}

void CHubSerFactory::FreeInstance() {
  delete m_pInstance;
  m_pInstance = nullptr;
}

CHubSerFactory::~CHubSerFactory() {
  for (auto port = m_arrSer.rbegin(); port != m_arrSer.rend(); ++port) {
    CHubAlarm::ForgetPort(*port);
    CHubMonitor::ForgetPort(*port);
    DestroyPort(*port);
  }
}

ISerBase* CHubSerFactory::GetHubSer(ENUM_SERTYPE type) {
  for (ISerBase* port : m_arrSer) {
    if (port->GetSerType() == type) return port;
  }
  ISerBase* const made = MakePort(type);
  const int index = RegisterHubSer(made);
  if (index < 0) {
    if (made) DestroyPort(made);
    return nullptr;
  }
  return m_arrSer[static_cast<std::size_t>(index)];
}

int CHubSerFactory::RegisterHubSer(ISerBase* port) {
  if (!port) return -1;
  for (std::size_t i = 0; i < m_arrSer.size(); ++i) {
    if (m_arrSer[i]->GetSerType() == port->GetSerType()) return static_cast<int>(i);
  }
  try {
    m_arrSer.push_back(port);
  } catch (const std::bad_alloc&) {
    return -1;
  }
  return static_cast<int>(m_arrSer.size()) - 1;
}
