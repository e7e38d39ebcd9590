#include "fieldline/drivers/basic/sensor_envir.h"

#include "fieldline/sensor/modbus.h"

CSensorEnvir::CSensorEnvir() : RecordSensor(SERDAT_ENVIR) {}

int CSensorEnvir::GetData(ISerBase* port, int addr) {
  if (!port->IsOpened()) return 0;

  const int length = ModBusCmd(fieldline::DeviceAddress(addr), fieldline::kReadHoldingRegisters, 0, 2);
  if (!SendCommand(port, length)) return 0;

  fieldline::ModbusReply<fieldline::RegisterReplyLength(2)> reply;
  if (!reply.Read(port)) return 0;

  m_data.register_1 = reply.Register(1);
  m_data.register_0 = reply.Register(0);
  return 1;
}
