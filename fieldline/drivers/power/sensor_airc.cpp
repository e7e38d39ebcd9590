#include "fieldline/drivers/power/sensor_airc.h"

#include "fieldline/sensor/modbus.h"

namespace {

constexpr int kRegistersAsked = 60;
constexpr int kReplyAsked = 100;
constexpr int kRegistersUsed = 26;
constexpr int kSecondGroup = 12;

using Reply = fieldline::ModbusReply<kReplyAsked, fieldline::RegisterReplyLength(kRegistersUsed)>;

constexpr BYTE Low(WORD value) { return static_cast<BYTE>(value & 0xFF); }
constexpr BYTE High(WORD value) { return static_cast<BYTE>(value >> 8); }

AIRC_GROUP Group(const Reply& reply, int first) {
  return {
      .register_0 = reply.RegisterLowFirst(first),
      .register_1 = reply.RegisterLowFirst(first + 1),
      .register_2 = reply.RegisterLowFirst(first + 2),
      .register_3_low = Low(reply.RegisterLowFirst(first + 3)),
      .register_4_low = Low(reply.RegisterLowFirst(first + 4)),
      .register_5_high = High(reply.RegisterLowFirst(first + 5)),
      .register_6 = reply.RegisterLowFirst(first + 6),
      .register_7 = reply.RegisterLowFirst(first + 7),
  };
}

}  // namespace

CSensorAirc::CSensorAirc() : RecordSensor(SERDAT_AIRC) {}

int CSensorAirc::GetData(ISerBase* port, int addr) {
  if (!port->IsOpened()) return 0;

  const int length = ModBusCmd(fieldline::DeviceAddress(addr), fieldline::kReadInputRegisters, 0, kRegistersAsked);
  if (!SendCommand(port, length)) return 0;

  Reply reply;
  if (!reply.Read(port)) return 0;

  m_data.first = Group(reply, 0);
  m_data.second = Group(reply, kSecondGroup);
  m_data.register_24 = reply.RegisterLowFirst(24);
  m_data.register_25 = reply.RegisterLowFirst(25);
  return 1;
}
