#include "fieldline/drivers/power/sensor_elec_y.h"

#include "fieldline/drivers/power/elec_rows.h"
#include "fieldline/sensor/modbus.h"

namespace {

using fieldline::ElecRow;

constexpr int kValueRegisters = 32;  // from 0
constexpr int kValueRegistersUsed = 31;
constexpr int kCounterRegister = 33;
constexpr int kCounterRegisters = 8;
constexpr int kCounterRegistersUsed = 2;

// Eight registers for each phase (0 to 7, 8 to 15, 16 to 23), the single value in 26, then the totals.
constexpr ElecRow kRows[] = {
  // field                register  factor
    {&ELEC_DATA::q1_total,  27, 10},
    {&ELEC_DATA::q1_phase1, 4,  10},
    {&ELEC_DATA::q1_phase2, 12, 10},
    {&ELEC_DATA::q1_phase3, 20, 10},
    {&ELEC_DATA::q2_total,  29, 10},
    {&ELEC_DATA::q2_phase1, 6,  10},
    {&ELEC_DATA::q2_phase2, 14, 10},
    {&ELEC_DATA::q2_phase3, 22, 10},
    {&ELEC_DATA::q3_total,  30, 10},
    {&ELEC_DATA::q3_phase1, 7,  10},
    {&ELEC_DATA::q3_phase2, 15, 10},
    {&ELEC_DATA::q3_phase3, 23, 10},
    {&ELEC_DATA::q4_total,  28, 1 },
    {&ELEC_DATA::q4_phase1, 5,  1 },
    {&ELEC_DATA::q4_phase2, 13, 1 },
    {&ELEC_DATA::q4_phase3, 21, 1 },
    {&ELEC_DATA::single,    26, 1 },
    {&ELEC_DATA::q5_phase1, 0,  1 },
    {&ELEC_DATA::q5_phase2, 8,  1 },
    {&ELEC_DATA::q5_phase3, 16, 1 },
    {&ELEC_DATA::q6_phase1, 2,  1 },
    {&ELEC_DATA::q6_phase2, 10, 1 },
    {&ELEC_DATA::q6_phase3, 18, 1 },
};

using ValueReply = fieldline::ModbusReply<fieldline::RegisterReplyLength(kValueRegisters),
                                          fieldline::RegisterReplyLength(kValueRegistersUsed)>;
using CounterReply = fieldline::ModbusReply<fieldline::RegisterReplyLength(kCounterRegisters),
                                            fieldline::RegisterReplyLength(kCounterRegistersUsed)>;
static_assert(fieldline::RowsLieWithin(kRows, ValueReply::kRegisters));

}  // namespace

CSensorElecY::CSensorElecY() : RecordSensor(SERDAT_ELEC_Y) {}

int CSensorElecY::GetData(ISerBase* port, int addr) {
  if (!port->IsOpened()) return 0;
  const BYTE device = fieldline::DeviceAddress(addr);

  if (!SendCommand(port, ModBusCmd(device, fieldline::kReadHoldingRegisters, 0, kValueRegisters))) return 0;
  ValueReply values;
  if (!values.Read(port)) return 0;

  if (!SendCommand(port, ModBusCmd(device, fieldline::kReadHoldingRegisters, kCounterRegister, kCounterRegisters))) {
    return 0;
  }
  CounterReply counter;
  if (!counter.Read(port)) return 0;

  m_data.counter = counter.DoubleRegister(0);
  fieldline::DecodeRows(kRows, values, &m_data);
  return 1;
}
