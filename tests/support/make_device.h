#pragma once

#include <memory>
#include <string_view>

#include "sim/models.h"

namespace fieldline::test {

// A simulated device by the name of its kind.
inline std::unique_ptr<sim::Device> MakeDevice(std::string_view kind, int address) {
  return sim::Make(*FindKind(kind), static_cast<BYTE>(address));
}

}  // namespace fieldline::test
