#include "fieldline/drivers/power/sensor_emerson.h"

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <span>

#include "fieldline/sensor/modbus.h"

namespace {

constexpr int kInputs = sizeof(EMERSON_DATA::inputs);

// Consecutive registers of a reply and their position in the record.
struct Run {
  std::size_t position;
  int first;
  int count;
};

constexpr Run kRunsFrom8[] = {
  // position                                       first  count
    {offsetof(EMERSON_DATA, registers_8_to_32),  8,  25},
    {offsetof(EMERSON_DATA, registers_39_to_44), 39, 6 },
};
constexpr Run kRunsFrom49[] = {
    {offsetof(EMERSON_DATA, registers_49_to_56), 49, 8 },
    {offsetof(EMERSON_DATA, registers_69_to_78), 69, 10},
};
constexpr Run kRunsFrom99[] = {
    {offsetof(EMERSON_DATA, register_99),          99,  1 },
    {offsetof(EMERSON_DATA, register_100),         100, 1 },
    {offsetof(EMERSON_DATA, registers_101_to_112), 101, 12},
    {offsetof(EMERSON_DATA, registers_114_to_119), 114, 6 },
};
constexpr Run kRunsFrom129[] = {
    {offsetof(EMERSON_DATA, registers_129_to_133), 129, 5 },
    {offsetof(EMERSON_DATA, registers_140_to_157), 140, 18},
};

// One exchange.
struct Block {
  WORD start;
  WORD count;
  std::span<const Run> runs;
};

constexpr Block kBlocks[] = {
    {8,   37, kRunsFrom8  },
    {49,  30, kRunsFrom49 },
    {99,  21, kRunsFrom99 },
    {129, 29, kRunsFrom129},
};

constexpr bool RunsLieWithinTheirBlocks() {
  for (const Block& block : kBlocks) {
    for (const Run& run : block.runs) {
      if (run.first < block.start || run.first + run.count > block.start + block.count) return false;
      if (run.position + 2 * static_cast<std::size_t>(run.count) > sizeof(EMERSON_DATA)) return false;
    }
  }
  return true;
}
static_assert(RunsLieWithinTheirBlocks());

constexpr int LongestReply() {
  int longest = 0;
  for (const Block& block : kBlocks) longest = std::max(longest, fieldline::RegisterReplyLength(block.count));
  return longest;
}

}  // namespace

CSensorEmerson::CSensorEmerson() : RecordSensor(SERDAT_EMERSON) {}

int CSensorEmerson::GetData(ISerBase* port, int addr) {
  if (!port->IsOpened()) return 0;
  const BYTE device = fieldline::DeviceAddress(addr);

  if (!ReadInputs(port, device)) return 0;

  for (const Block& block : kBlocks) {
    if (!SendCommand(port, ModBusCmd(device, fieldline::kReadInputRegisters, block.start, block.count))) return 0;
    BYTE reply[LongestReply()];
    const int length = fieldline::RegisterReplyLength(block.count);
    if (!fieldline::ReadModbusReply(port, reply, length, length, fieldline::CrcPlace::kLastTwoBytes)) return 0;

    for (const Run& run : block.runs) {
      const BYTE* source = reply + fieldline::kModbusHeadLength + 2 * (run.first - block.start);
      BYTE* target = m_pData + run.position;
      for (int k = 0; k < run.count; ++k, source += 2, target += 2) {
        const WORD value = GetWordBE(source);
        std::memcpy(target, &value, sizeof value);
      }
    }
  }
  return 1;
}

bool CSensorEmerson::ReadInputs(ISerBase* port, BYTE device) {
  if (!SendCommand(port, ModBusCmd(device, fieldline::kReadDiscreteInputs, 0, kInputs))) return false;
  fieldline::ModbusReply<fieldline::BitReplyLength(kInputs)> reply;
  if (!reply.Read(port)) return false;
  for (int j = 0; j < kInputs; ++j) m_data.inputs[j] = reply.Bit(j);
  return true;
}
