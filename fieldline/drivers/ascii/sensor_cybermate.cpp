#include "fieldline/drivers/ascii/sensor_cybermate.h"

#include "fieldline/drivers/ascii/hex_frame.h"

namespace {

constexpr BYTE kVer = 0x21;
constexpr BYTE kCid1 = 0x60;
constexpr BYTE kReadAnalog = 0x42;
constexpr BYTE kReadSwitches = 0x43;
constexpr BYTE kReadAlarms = 0x44;
constexpr BYTE kReadParameters = 0x47;

constexpr int kReplyAsked = 120;

// Position of INFO byte `i` in a reply.
constexpr int Position(int i) { return fieldline::kInfoPosition + 2 * i; }
static_assert(Position(sizeof(CYBERMATE_DATA::alarm_states)) <= kReplyAsked);

}  // namespace

CSensorCybermate::CSensorCybermate() : RecordSensor(SERDAT_CYBERMATE) {}

int CSensorCybermate::GetData(ISerBase* port, int addr) {
  if (!port->IsOpened()) return 0;
  BuildFrame(m_byCmd, kVer, fieldline::DeviceAddress(addr), kCid1, kReadAnalog, nullptr, 0);

  BYTE reply[kReplyAsked];
  if (!Exchange(port, kReadAnalog, reply, Position(2 * CYBERMATE_DATA::kAnalogs))) return 0;
  for (int k = 0; k < CYBERMATE_DATA::kAnalogs; ++k) m_data.analog[k] = GetHexWord(reply + Position(2 * k));

  return ReadBytes(port, kReadSwitches, m_data.switch_states) && ReadBytes(port, kReadAlarms, m_data.alarm_states) &&
         ReadBytes(port, kReadParameters, m_data.parameters);
}

bool CSensorCybermate::Exchange(ISerBase* port, BYTE command, BYTE* reply, int least) {
  SetFrameCommand(m_byCmd, command);
  if (!SendCommand(port, fieldline::FrameLength(0))) return false;
  return port->Read(reply, kReplyAsked) >= least && fieldline::IsCarriedOut(reply);
}

bool CSensorCybermate::ReadBytes(ISerBase* port, BYTE command, std::span<BYTE> bytes) {
  BYTE reply[kReplyAsked];
  if (!Exchange(port, command, reply, Position(static_cast<int>(bytes.size())))) return false;
  int i = 0;
  for (BYTE& byte : bytes) byte = GetHexByte(reply + Position(i++));
  return true;
}
