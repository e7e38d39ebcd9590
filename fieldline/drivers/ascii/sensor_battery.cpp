#include "fieldline/drivers/ascii/sensor_battery.h"

#include "fieldline/drivers/ascii/hex_frame.h"
#include "fieldline/platform/clock.h"
#include "fieldline/sensor/truncate.h"

namespace {

constexpr BYTE kVer = 0x20;
constexpr BYTE kCid1 = 0x46;
constexpr BYTE kReadAnalog = 0x41;
constexpr BYTE kInfo[] = {'0', '1'};
constexpr int kReplyLength = 470;
constexpr std::uint32_t kPauseMs = 2000;

constexpr int kFloatLength = 8;
constexpr int kFirstCell = 17;

struct Row {
  std::uint16_t BATTERY_DATA::*field;
  int position;
  int decimals;
};

// A group is a byte and two numbers; the first number of group 1, the monitor's own sum of the cells, is not used.
constexpr Row kRows[] = {
  // field                         position  decimals
    {&BATTERY_DATA::group_1_second, 419, 2},
    {&BATTERY_DATA::group_2_first,  429, 2},
    {&BATTERY_DATA::group_2_second, 437, 2},
    {&BATTERY_DATA::group_3_first,  447, 1},
    {&BATTERY_DATA::group_3_second, 455, 1},
};

constexpr bool RowsLieInInfo() {
  for (const Row& row : kRows) {
    if (row.position + kFloatLength > kReplyLength - fieldline::kTrailLength) return false;
  }
  return true;
}
static_assert(RowsLieInInfo());

std::uint16_t LowWord(double value) {
  return static_cast<std::uint16_t>(fieldline::Truncate<std::uint32_t>(value) & 0xFFFF);
}

}  // namespace

CSensorBattery::CSensorBattery() : RecordSensor(SERDAT_BATTERY) {}

int CSensorBattery::GetData(ISerBase* port, int addr) {
  if (!port->IsOpened()) return 0;

  const int length = BuildFrame(m_byCmd, kVer, fieldline::DeviceAddress(addr), kCid1, kReadAnalog, kInfo, sizeof kInfo);
  if (!SendCommand(port, length)) return 0;

  BYTE reply[kReplyLength];
  const int received = port->Read(reply, kReplyLength);
  if (!CheckReply(reply, received, kReplyLength)) return 0;

  m_data.cell_sum = 0;
  for (int i = 0; i < BATTERY_DATA::kCells; ++i) {
    m_data.cells[i] = LowWord(GetHexFloat(reply + kFirstCell + kFloatLength * i) * 1000.0);
    m_data.cell_sum += m_data.cells[i];
  }
  for (const Row& row : kRows) {
    m_data.*row.field = LowWord(GetScaledValue(GetHexFloat(reply + row.position), row.decimals));
  }
  m_data.constant_1000 = 1000;
  m_data.cell_count = BATTERY_DATA::kCells;
  m_data.constant_4 = 4;

  fieldline::SleepMs(kPauseMs);
  return 1;
}
