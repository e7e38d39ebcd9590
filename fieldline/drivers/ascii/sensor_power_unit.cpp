#include "fieldline/drivers/ascii/sensor_power_unit.h"

#include <span>

#include "fieldline/drivers/ascii/hex_frame.h"
#include "fieldline/sensor/truncate.h"

namespace {

constexpr BYTE kVer = 0x11;
constexpr BYTE kCid1 = 0x2A;

constexpr int kReplyAsked = 150;
constexpr int kFloatLength = 8;

// Consecutive numbers of a reply with the same scale.
struct Run {
  int position;
  int count;
  int decimals;  // 0: whole units, truncated instead of rounded
};

constexpr Run kE1[] = {
  // position  count  decimals
    {17,  6, 1},
    {65,  2, 2},
    {81,  3, 1},
    {105, 1, 2},
    {113, 1, 1},
};
constexpr Run k41[] = {
    {39, 7, 1},
    {95, 1, 2},
};
constexpr Run kE2[] = {
    {17, 3,  2},
    {41, 12, 1},
};
constexpr Run kE3[] = {
    {17,  12, 1},
    {113, 1,  0},
    {121, 3,  1},
};

struct Block {
  BYTE command;
  int reply_length;
  std::span<const Run> runs;
};

// In the order of the requests, which is also the order of the record.
constexpr Block kBlocks[] = {
    {0xE1, 126, kE1},
    {0x41, 114, k41},
    {0xE2, 142, kE2},
    {0xE3, 150, kE3},
};

constexpr BYTE kReadStates = 0x43;
constexpr int kStatesLength = 48;
constexpr int kFirstState = 15;     // INFO byte 1
constexpr int kFurtherStates = 19;  // INFO bytes 3 to 12
constexpr int kFurtherStateCount = 10;

constexpr int CountValues() {
  int count = 0;
  for (const Block& block : kBlocks) {
    for (const Run& run : block.runs) {
      if (run.position + kFloatLength * run.count > block.reply_length - fieldline::kTrailLength) return -1;
      count += run.count;
    }
  }
  return count;
}
static_assert(CountValues() == POWER_UNIT_DATA::kValues, "a number for each value, and each within its reply");

std::int32_t Decode(const BYTE* characters, int decimals) {
  const double value = GetHexFloat(characters);
  return fieldline::Truncate<std::int32_t>(decimals == 0 ? value : GetScaledValue(value, decimals));
}

}  // namespace

CSensorPowerUnit::CSensorPowerUnit() : RecordSensor(SERDAT_POWER_UNIT) {}

int CSensorPowerUnit::GetData(ISerBase* port, int addr) {
  if (!port->IsOpened()) return 0;
  BuildFrame(m_byCmd, kVer, fieldline::DeviceAddress(addr), kCid1, kBlocks[0].command, nullptr, 0);

  BYTE reply[kReplyAsked];
  std::int32_t* value = m_data.values;
  for (const Block& block : kBlocks) {
    if (!Exchange(port, block.command, reply, block.reply_length)) return 0;
    for (const Run& run : block.runs) {
      for (int k = 0; k < run.count; ++k) *value++ = Decode(reply + run.position + kFloatLength * k, run.decimals);
    }
  }

  if (!Exchange(port, kReadStates, reply, kStatesLength)) return 0;
  m_data.states[0] = GetHexByte(reply + kFirstState);
  for (int j = 0; j < kFurtherStateCount; ++j) m_data.states[1 + j] = GetHexByte(reply + kFurtherStates + 2 * j);
  return 1;
}

bool CSensorPowerUnit::Exchange(ISerBase* port, BYTE command, BYTE* reply, int length) {
  SetFrameCommand(m_byCmd, command);
  if (!SendCommand(port, fieldline::FrameLength(0))) return false;
  const int received = port->Read(reply, kReplyAsked);
  return CheckReply(reply, received, length);
}
