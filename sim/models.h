#pragma once

#include <memory>
#include <span>
#include <string_view>

#include "fieldline/kinds.h"
#include "sim/device.h"

namespace fieldline::sim {

// The simulated device for a kind.
struct Model {
  ENUM_SERDATKIND kind;
  std::string_view note;  // details beyond the kind's description; may be empty
  // Null for the unit's own inputs, which have no line: see DigitalInputs.
  std::unique_ptr<Device> (*make)(BYTE address);
};

// One for each kind.
std::span<const Model> Models();

const Model& ModelOf(const Kind& kind);

// Creates the simulated device for a kind, which must have a line.
std::unique_ptr<Device> Make(const Kind& kind, BYTE address);

}  // namespace fieldline::sim
