#include "fieldline/drivers/power/sensor_elec.h"

#include "fieldline/drivers/power/elec_rows.h"
#include "fieldline/sensor/modbus.h"

namespace {

using fieldline::ElecRow;

constexpr int kRegisters = 57;
constexpr int kReplyAsked = 120;

// Registers 0 and 1 are the counter, 2 to 33 are not used.
constexpr ElecRow kRows[] = {
  // field                register  factor
    {&ELEC_DATA::q1_total,  34, 10},
    {&ELEC_DATA::q1_phase1, 35, 10},
    {&ELEC_DATA::q1_phase2, 36, 10},
    {&ELEC_DATA::q1_phase3, 37, 10},
    {&ELEC_DATA::q2_total,  38, 10},
    {&ELEC_DATA::q2_phase1, 39, 10},
    {&ELEC_DATA::q2_phase2, 40, 10},
    {&ELEC_DATA::q2_phase3, 41, 10},
    {&ELEC_DATA::q3_total,  42, 10},
    {&ELEC_DATA::q3_phase1, 43, 10},
    {&ELEC_DATA::q3_phase2, 44, 10},
    {&ELEC_DATA::q3_phase3, 45, 10},
    {&ELEC_DATA::q4_total,  46, 1 },
    {&ELEC_DATA::q4_phase1, 47, 1 },
    {&ELEC_DATA::q4_phase2, 48, 1 },
    {&ELEC_DATA::q4_phase3, 49, 1 },
    {&ELEC_DATA::single,    50, 1 },
};

// Written only when quantity 5 is plausible in every phase.
constexpr ElecRow kGuardedRows[] = {
    {&ELEC_DATA::q5_phase1, 51, 1 },
    {&ELEC_DATA::q5_phase2, 52, 1 },
    {&ELEC_DATA::q5_phase3, 53, 1 },
    {&ELEC_DATA::q6_phase1, 54, 25},
    {&ELEC_DATA::q6_phase2, 55, 25},
    {&ELEC_DATA::q6_phase3, 56, 25},
};
constexpr int kFirstGuard = 51;
constexpr int kLastGuard = 53;
constexpr WORD kMostPlausible = 10000;

using Reply = fieldline::ModbusReply<kReplyAsked, fieldline::RegisterReplyLength(kRegisters)>;
static_assert(fieldline::RowsLieWithin(kRows, Reply::kRegisters));
static_assert(fieldline::RowsLieWithin(kGuardedRows, Reply::kRegisters));

bool IsPlausible(const Reply& reply) {
  for (int reg = kFirstGuard; reg <= kLastGuard; ++reg) {
    if (reply.Register(reg) > kMostPlausible) return false;
  }
  return true;
}

}  // namespace

CSensorElec::CSensorElec() : RecordSensor(SERDAT_ELEC) {}

int CSensorElec::GetData(ISerBase* port, int addr) {
  if (!port->IsOpened()) return 0;

  const int length = ModBusCmd(fieldline::DeviceAddress(addr), fieldline::kReadHoldingRegisters, 0, kRegisters);
  if (!SendCommand(port, length)) return 0;

  Reply reply;
  if (!reply.Read(port)) return 0;

  m_data.counter = reply.DoubleRegister(0);
  fieldline::DecodeRows(kRows, reply, &m_data);
  if (IsPlausible(reply)) fieldline::DecodeRows(kGuardedRows, reply, &m_data);
  return 1;
}
