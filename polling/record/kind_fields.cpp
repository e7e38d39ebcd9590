#include "polling/record/kind_fields.h"

#include <cstddef>
#include <string_view>

#include "fieldline/drivers/ascii/sensor_power_unit.h"
#include "fieldline/drivers/power/sensor_dual_proto.h"
#include "fieldline/fieldline.h"

namespace fieldline {
namespace {

using enum FieldType;

constexpr RecordField One(std::string_view name, std::size_t position, FieldType type, double factor = 1) {
  return {name, position, type, 1, 0, factor};
}

// Several numbers, called <name>_<first> and so on.
constexpr RecordField Run(std::string_view name, std::size_t position, FieldType type, int count, int first,
                          double factor = 1) {
  return {name, position, type, count, first, factor};
}

// The record holds `factor` times the value in `unit`.
constexpr RecordField Measured(std::string_view name, std::size_t position, FieldType type, double factor,
                               std::string_view unit) {
  return {name, position, type, 1, 0, factor, unit};
}

constexpr RecordField Text(std::string_view name, std::size_t position, FieldType type, int units) {
  return {name, position, type, units};
}

constexpr RecordField kEnvirFields[] = {
    One("register_1", offsetof(ENVIR_DATA, register_1), kU32),
    One("register_0", offsetof(ENVIR_DATA, register_0), kU32),
};

// Both power meters. The device defines the quantities; q1 to q3 hold ten times its registers.
constexpr RecordField kElecFields[] = {
    One("counter", offsetof(ELEC_DATA, counter), kU32),     One("q1_total", offsetof(ELEC_DATA, q1_total), kU32),
    One("q1_phase1", offsetof(ELEC_DATA, q1_phase1), kU32), One("q1_phase2", offsetof(ELEC_DATA, q1_phase2), kU32),
    One("q1_phase3", offsetof(ELEC_DATA, q1_phase3), kU32), One("q2_total", offsetof(ELEC_DATA, q2_total), kU32),
    One("q2_phase1", offsetof(ELEC_DATA, q2_phase1), kU32), One("q2_phase2", offsetof(ELEC_DATA, q2_phase2), kU32),
    One("q2_phase3", offsetof(ELEC_DATA, q2_phase3), kU32), One("q3_total", offsetof(ELEC_DATA, q3_total), kU32),
    One("q3_phase1", offsetof(ELEC_DATA, q3_phase1), kU32), One("q3_phase2", offsetof(ELEC_DATA, q3_phase2), kU32),
    One("q3_phase3", offsetof(ELEC_DATA, q3_phase3), kU32), One("q4_total", offsetof(ELEC_DATA, q4_total), kU32),
    One("q4_phase1", offsetof(ELEC_DATA, q4_phase1), kU32), One("q4_phase2", offsetof(ELEC_DATA, q4_phase2), kU32),
    One("q4_phase3", offsetof(ELEC_DATA, q4_phase3), kU32), One("single", offsetof(ELEC_DATA, single), kU32),
    One("q5_phase1", offsetof(ELEC_DATA, q5_phase1), kU32), One("q5_phase2", offsetof(ELEC_DATA, q5_phase2), kU32),
    One("q5_phase3", offsetof(ELEC_DATA, q5_phase3), kU32), One("q6_phase1", offsetof(ELEC_DATA, q6_phase1), kU32),
    One("q6_phase2", offsetof(ELEC_DATA, q6_phase2), kU32), One("q6_phase3", offsetof(ELEC_DATA, q6_phase3), kU32),
};

constexpr RecordField kOnoffFields[] = {
    Run("input", offsetof(ONOFF_DATA, inputs), kU8, 12, 1),
};

constexpr RecordField kLeakFields[] = {
    One("status_read", offsetof(LEAK_DATA, status_read), kU8),
    One("leak", offsetof(LEAK_DATA, leak), kU8),
    One("second_flag", offsetof(LEAK_DATA, second_flag), kU8),
    One("second_flag_copy", offsetof(LEAK_DATA, second_flag_copy), kU8),
    One("input_register_1", offsetof(LEAK_DATA, input_register_1), kU32),
    One("holding_register_1", offsetof(LEAK_DATA, holding_register_1), kU32),
    One("input_register_4", offsetof(LEAK_DATA, input_register_4), kU32),
};

// Input i + 1 is 0 or 2 to the power i.
constexpr RecordField kDiFields[] = {
    Run("input", offsetof(DI_DATA, inputs), kU8, 8, 1),
};

constexpr RecordField kAircFields[] = {
    Run("register", offsetof(AIRC_DATA, first.register_0), kU16, 3, 0),
    One("register_3_low", offsetof(AIRC_DATA, first.register_3_low), kU16),
    One("register_4_low", offsetof(AIRC_DATA, first.register_4_low), kU8),
    One("register_5_high", offsetof(AIRC_DATA, first.register_5_high), kU8),
    Run("register", offsetof(AIRC_DATA, first.register_6), kU16, 2, 6),
    Run("register", offsetof(AIRC_DATA, second.register_0), kU16, 3, 12),
    One("register_15_low", offsetof(AIRC_DATA, second.register_3_low), kU16),
    One("register_16_low", offsetof(AIRC_DATA, second.register_4_low), kU8),
    One("register_17_high", offsetof(AIRC_DATA, second.register_5_high), kU8),
    Run("register", offsetof(AIRC_DATA, second.register_6), kU16, 2, 18),
    Run("register", offsetof(AIRC_DATA, register_24), kU16, 2, 24),
};

constexpr RecordField kEmersonFields[] = {
    One("register_100", offsetof(EMERSON_DATA, register_100), kU16),
    Run("input", offsetof(EMERSON_DATA, inputs), kU8, 109, 0),
    Run("register", offsetof(EMERSON_DATA, registers_8_to_32), kU16, 25, 8),
    Run("register", offsetof(EMERSON_DATA, registers_39_to_44), kU16, 6, 39),
    Run("register", offsetof(EMERSON_DATA, registers_49_to_56), kU16, 8, 49),
    Run("register", offsetof(EMERSON_DATA, registers_69_to_78), kU16, 10, 69),
    One("register_99", offsetof(EMERSON_DATA, register_99), kU16),
    Run("register", offsetof(EMERSON_DATA, registers_101_to_112), kU16, 12, 101),
    Run("register", offsetof(EMERSON_DATA, registers_114_to_119), kU16, 6, 114),
    Run("register", offsetof(EMERSON_DATA, registers_129_to_133), kU16, 5, 129),
    Run("register", offsetof(EMERSON_DATA, registers_140_to_157), kU16, 18, 140),
};

constexpr RecordField kDualUnitFields[] = {
    One("value_1", offsetof(DUAL_PROTO_DATA, values[0]), kI16),
    Run("value", offsetof(DUAL_PROTO_DATA, values[1]), kU16, 4, 2),
    One("value_6", offsetof(DUAL_PROTO_DATA, values[5]), kI16),
    One("value_7", offsetof(DUAL_PROTO_DATA, values[6]), kU16),
    Run("value", offsetof(DUAL_PROTO_DATA, values[7]), kI16, 2, 8),
    Run("value", offsetof(DUAL_PROTO_DATA, values[9]), kU16, 11, 10),
    One("value_21", offsetof(DUAL_PROTO_DATA, values[20]), kI16),
    Run("value", offsetof(DUAL_PROTO_DATA, values[21]), kU16, 12, 22),
    One("state", offsetof(DUAL_PROTO_DATA, state), kU16),
};

constexpr RecordField kUpsFields[] = {
    Measured("input_voltage", offsetof(UPS_DATA, input_voltage), kI32, 10, "V"),
    Measured("input_fault_voltage", offsetof(UPS_DATA, input_fault_voltage), kI32, 10, "V"),
    Measured("output_voltage", offsetof(UPS_DATA, output_voltage), kI32, 10, "V"),
    Measured("output_load", offsetof(UPS_DATA, output_load), kI32, 1, "%"),
    Measured("input_frequency", offsetof(UPS_DATA, input_frequency), kI32, 10, "Hz"),
    Measured("battery_voltage", offsetof(UPS_DATA, battery_voltage), kI32, 10, "V"),
    Measured("temperature", offsetof(UPS_DATA, temperature), kI32, 10, "°C"),
    One("status", offsetof(UPS_DATA, status), kU8),
    One("utility_fail", offsetof(UPS_DATA, utility_fail), kU8),
    One("battery_low", offsetof(UPS_DATA, battery_low), kU8),
    One("bypass_active", offsetof(UPS_DATA, bypass_active), kU8),
    One("ups_failed", offsetof(UPS_DATA, ups_failed), kU8),
    One("standby_type", offsetof(UPS_DATA, standby_type), kU8),
    One("self_test", offsetof(UPS_DATA, self_test), kU8),
    One("shutdown_active", offsetof(UPS_DATA, shutdown_active), kU8),
    One("beeper_on", offsetof(UPS_DATA, beeper_on), kU8),
    Measured("rated_voltage", offsetof(UPS_DATA, rated_voltage), kI32, 1, "V"),
    Measured("rated_current", offsetof(UPS_DATA, rated_current), kI32, 1, "A"),
    Measured("rated_battery_voltage", offsetof(UPS_DATA, rated_battery_voltage), kI32, 1, "V"),
    Measured("rated_frequency", offsetof(UPS_DATA, rated_frequency), kI32, 1, "Hz"),
    Text("maker", offsetof(UPS_DATA, maker), kUtf16, 32),
    Text("model", offsetof(UPS_DATA, model), kUtf16, 32),
    Text("version", offsetof(UPS_DATA, version), kUtf16, 32),
};

constexpr RecordField kBatteryFields[] = {
    One("cell_sum", offsetof(BATTERY_DATA, cell_sum), kU32, 1000),
    One("group_2_first", offsetof(BATTERY_DATA, group_2_first), kU16, 100),
    One("group_3_first", offsetof(BATTERY_DATA, group_3_first), kU16, 10),
    Run("cell", offsetof(BATTERY_DATA, cells), kU16, 32, 1, 1000),
    One("group_1_second", offsetof(BATTERY_DATA, group_1_second), kU16, 100),
    One("group_2_second", offsetof(BATTERY_DATA, group_2_second), kU16, 100),
    One("group_3_second", offsetof(BATTERY_DATA, group_3_second), kU16, 10),
    One("constant_1000", offsetof(BATTERY_DATA, constant_1000), kU16),
    One("cell_count", offsetof(BATTERY_DATA, cell_count), kU16),
    One("constant_4", offsetof(BATTERY_DATA, constant_4), kU16),
};

constexpr RecordField kCyberFields[] = {
    Run("analog", offsetof(CYBERMATE_DATA, analog), kU32, 5, 1),
    Run("switch_state", offsetof(CYBERMATE_DATA, switch_states), kU8, 7, 1),
    Run("alarm_state", offsetof(CYBERMATE_DATA, alarm_states), kU8, 26, 1),
    Run("parameter", offsetof(CYBERMATE_DATA, parameters), kU8, 10, 1),
};

constexpr RecordField kPowerFields[] = {
    Run("value", offsetof(POWER_UNIT_DATA, values[0]), kI32, 6, 1, 10),
    Run("value", offsetof(POWER_UNIT_DATA, values[6]), kI32, 2, 7, 100),
    Run("value", offsetof(POWER_UNIT_DATA, values[8]), kI32, 3, 9, 10),
    One("value_12", offsetof(POWER_UNIT_DATA, values[11]), kI32, 100),
    Run("value", offsetof(POWER_UNIT_DATA, values[12]), kI32, 8, 13, 10),
    Run("value", offsetof(POWER_UNIT_DATA, values[20]), kI32, 4, 21, 100),
    Run("value", offsetof(POWER_UNIT_DATA, values[24]), kI32, 24, 25, 10),
    One("value_49", offsetof(POWER_UNIT_DATA, values[48]), kI32),
    Run("value", offsetof(POWER_UNIT_DATA, values[49]), kI32, 3, 50, 10),
    Run("state", offsetof(POWER_UNIT_DATA, states), kU8, 11, 1),
};

// The record does not include the count before it.
constexpr RecordField kCardFields[] = {
    Run("byte", 0, kU8, 14, 1),
};

constexpr RecordField kCameraFields[] = {
    Measured("length", offsetof(CAMERA_DATA, length), kU16, 1, "bytes"),
    Text("name", offsetof(CAMERA_DATA, name), kAscii, 50),
};

struct Row {
  ENUM_SERDATKIND kind;
  Fields fields;
  std::size_t size;  // of the record
};

// A field that is not Measured holds the device's number, or a multiple of it, without a unit.
constexpr Row kRows[] = {
    {SERDAT_ENVIR,      kEnvirFields,    sizeof(ENVIR_DATA)            },
    {SERDAT_ELEC,       kElecFields,     sizeof(ELEC_DATA)             },
    {SERDAT_ELEC_Y,     kElecFields,     sizeof(ELEC_DATA)             },
    {SERDAT_ONOFF,      kOnoffFields,    sizeof(ONOFF_DATA)            },
    {SERDAT_LEAK,       kLeakFields,     sizeof(LEAK_DATA)             },
    {SERDAT_AIRC,       kAircFields,     sizeof(AIRC_DATA)             },
    {SERDAT_EMERSON,    kEmersonFields,  sizeof(EMERSON_DATA)          },
    {SERDAT_DUAL_PROTO, kDualUnitFields, sizeof(DUAL_PROTO_DATA)       },
    {SERDAT_UPS,        kUpsFields,      sizeof(UPS_DATA)              },
    {SERDAT_BATTERY,    kBatteryFields,  sizeof(BATTERY_DATA)          },
    {SERDAT_CYBERMATE,  kCyberFields,    sizeof(CYBERMATE_DATA)        },
    {SERDAT_POWER_UNIT, kPowerFields,    sizeof(POWER_UNIT_DATA)       },
    {SERDAT_CARD_K,     kCardFields,     sizeof(CSensorCardK::m_byCard)},
    {SERDAT_CAMERA,     kCameraFields,   sizeof(CAMERA_DATA)           },
    {SERDAT_CAMERA_3GE, kCameraFields,   sizeof(CAMERA_DATA)           },
    {SERDAT_DI,         kDiFields,       sizeof(DI_DATA)               },
};

constexpr Row Find(ENUM_SERDATKIND kind) {
  for (const Row& row : kRows) {
    if (row.kind == kind) return row;
  }
  return {kind, {}, 0};
}

constexpr bool EveryRecordHasFields() {
  for (const Kind& kind : kKinds) {
    const Row row = Find(kind.number);
    if (row.size != static_cast<std::size_t>(kind.record_size) || FieldsEnd(row.fields) > row.size) return false;
    if (kind.IsPolled() && row.fields.empty()) return false;
  }
  return true;
}
static_assert(EveryRecordHasFields(), "a row for each kind that is polled, of its record's size");

}  // namespace

Fields FieldsOf(const Kind& kind) { return Find(kind.number).fields; }

}  // namespace fieldline
