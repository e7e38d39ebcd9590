#include "fieldline/drivers/basic/sensor_onoff.h"

#include <cstring>

#include "fieldline/platform/clock.h"
#include "fieldline/sensor/modbus.h"

namespace {

constexpr int kInputs = sizeof(ONOFF_DATA::inputs);
constexpr int kReplyAsked = 20;
// The module answers the request for 12 registers with one byte per input, not two:
//
//   01      04        0C          01 00 00 01 00 00 00 00 00 00 00 01  A4 24
//   device  function  byte count  inputs 1 to 12                       CRC
constexpr int kReplyLength = fieldline::kModbusHeadLength + kInputs + fieldline::kModbusCrcLength;
// Pause between the request and the first read of the reply.
constexpr unsigned kWaitMs = 10;

}  // namespace

void BusyWait(unsigned int ms) {
  const std::uint32_t start = fieldline::TickMs();
  while (fieldline::TickMs() - start <= ms) {
  }
}

CSensorOnoff::CSensorOnoff() : RecordSensor(SERDAT_ONOFF) {}

int CSensorOnoff::GetData(ISerBase* port, int addr) {
  if (!port->IsOpened()) return 0;

  const int length = ModBusCmd(fieldline::DeviceAddress(addr), fieldline::kReadInputRegisters, 0, kInputs);
  if (!SendCommand(port, length)) return 0;
  BusyWait(kWaitMs);

  fieldline::ModbusReply<kReplyAsked, kReplyLength> reply;
  if (!reply.Read(port)) return 0;
  std::memcpy(m_data.inputs, reply.data(), kInputs);
  return 1;
}
