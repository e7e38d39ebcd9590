#include "sim/devices/power/power_meter.h"

#include <cstdint>
#include <string>
#include <utility>

namespace fieldline::sim {
namespace {

constexpr double kMostSteps = 0xFFFF;
constexpr int kPhases = 3;

// Usual values of each quantity, in the order of the quantities.
constexpr struct {
  const char* unit;
  double total;
  double phase;
  double drift;
} kUsual[PowerMeter::kQuantities] = {
    {"W",     4500, 1500, 300 },
    {"var",   1500, 500,  100 },
    {"VA",    4740, 1580, 300 },
    {"0.001", 950,  950,  20  },
    {"0.1 V", 0,    2200, 30  },
    {"mA",    0,    7000, 1500},
};

std::string TotalName(std::string_view quantity) { return std::string(quantity) + "_total"; }

std::string PhaseName(std::string_view quantity, int phase) {
  return std::string(quantity) + "_phase" + std::to_string(phase);
}

}  // namespace

PowerMeter::PowerMeter(BYTE address, const RegisterMap& map) : ModbusSlave(address), map_(map) {
  AddRange(holding_registers_, 0, map.size);
  values().Add({.name = "counter", .unit = "kWh", .maximum = 0xFFFFFFFF, .number = 123456});
  for (std::size_t i = 0; i < kQuantities; ++i) {
    const Quantity& quantity = map.quantities[i];
    const auto& usual = kUsual[i];
    const auto add = [&](std::string name, double number) {
      const double maximum = kMostSteps * quantity.step;
      values().Add(
          {.name = std::move(name), .unit = usual.unit, .maximum = maximum, .number = number, .drift = usual.drift});
    };
    if (quantity.total != kNone) add(TotalName(quantity.name), usual.total);
    for (int phase = 1; phase <= kPhases; ++phase) add(PhaseName(quantity.name, phase), usual.phase);
  }
  values().Add({.name = "single", .unit = "0.01 Hz", .maximum = kMostSteps, .number = 5000, .drift = 10});
}

void PowerMeter::Refresh() {
  const auto counter = static_cast<std::uint32_t>(values().Number("counter"));
  holding_registers_[static_cast<WORD>(map_.counter)] = static_cast<WORD>(counter >> 16);
  holding_registers_[static_cast<WORD>(map_.counter + 1)] = static_cast<WORD>(counter & 0xFFFF);
  Put(map_.single, "single", 1);
  for (const Quantity& quantity : map_.quantities) {
    if (quantity.total != kNone) Put(quantity.total, TotalName(quantity.name), quantity.step);
    for (int phase = 1; phase <= kPhases; ++phase) {
      Put(quantity.phase1 + (phase - 1) * map_.phase_stride, PhaseName(quantity.name, phase), quantity.step);
    }
  }
}

void PowerMeter::Put(int reg, std::string_view value, int step) {
  holding_registers_[static_cast<WORD>(reg)] = static_cast<WORD>(values().Scaled(value, 1.0 / step));
}

}  // namespace fieldline::sim
