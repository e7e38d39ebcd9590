#include "fieldline/drivers/basic/sensor_di.h"

#include "fieldline/platform/digital_inputs.h"

CSensorDi::CSensorDi() : RecordSensor(SERDAT_DI) {}

int CSensorDi::GetData(ISerBase*, int) {
  BYTE states;
  if (!fieldline::ReadDigitalInputs(L"EIO1:", &states)) return 0;
  for (unsigned i = 0; i < sizeof m_data.inputs; ++i) m_data.inputs[i] = static_cast<BYTE>(states & 1u << i);
  return 1;
}
