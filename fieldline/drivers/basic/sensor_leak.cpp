#include "fieldline/drivers/basic/sensor_leak.h"

#include "fieldline/sensor/modbus.h"

namespace {

constexpr int kReplyAsked = 10;
constexpr WORD kLeakBits = 0x0003;
constexpr WORD kSecondBits = 0x000C;

}  // namespace

CSensorLeak::CSensorLeak() : RecordSensor(SERDAT_LEAK) {}

int CSensorLeak::GetData(ISerBase* port, int addr) {
  if (!port->IsOpened()) return 0;

  WORD status;
  if (!ReadRegister(port, addr, fieldline::kReadInputRegisters, 0, &status)) return 0;
  m_data.status_read = 1;
  m_data.leak = (status & kLeakBits) != 0;
  m_data.second_flag = (status & kSecondBits) != 0;
  m_data.second_flag_copy = m_data.second_flag;

  WORD value = 0;
  if (m_data.leak && !ReadRegister(port, addr, fieldline::kReadInputRegisters, 1, &value)) return 0;
  m_data.input_register_1 = value;

  if (!ReadRegister(port, addr, fieldline::kReadHoldingRegisters, 1, &value)) return 0;
  m_data.holding_register_1 = value;

  if (!ReadRegister(port, addr, fieldline::kReadInputRegisters, 4, &value)) return 0;
  m_data.input_register_4 = value;
  return 1;
}

bool CSensorLeak::ReadRegister(ISerBase* port, int addr, BYTE function, WORD reg, WORD* value) {
  if (!SendCommand(port, ModBusCmd(fieldline::DeviceAddress(addr), function, reg, 1))) return false;
  fieldline::ModbusReply<kReplyAsked, fieldline::RegisterReplyLength(1), fieldline::CrcPlace::kAfterByteCount> reply;
  if (!reply.Read(port)) return false;
  *value = reply.Register(0);
  return true;
}
