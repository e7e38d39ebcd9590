#pragma once

#include <memory>
#include <span>
#include <string_view>

#include "fieldline/kinds.h"
#include "sim/device.h"

namespace fieldline::sim {

// Who plays a kind.
struct Model {
  ENUM_SERDATKIND kind;
  std::string_view note;  // what it can do that its kind doesn't tell; may be empty
  // Null for the unit's own inputs, which are on no line: see DigitalInputs.
  std::unique_ptr<Device> (*make)(BYTE address);
};

// One for each kind.
std::span<const Model> Models();

const Model& ModelOf(const Kind& kind);

// A device of a kind that has a line.
std::unique_ptr<Device> Make(const Kind& kind, BYTE address);

}  // namespace fieldline::sim
