#pragma once

#include <cstdint>
#include <memory>
#include <span>
#include <string_view>

#include "sim/device.h"

namespace fieldline::sim {

struct Kind {
  std::string_view name;
  std::string_view description;
  std::uint32_t baud;  // that such a device usually has, bit/s
  int address;         // by default; 0 where the protocol has no addresses
  std::unique_ptr<Device> (*make)(BYTE address);
};

// All kinds of devices that can be simulated.
std::span<const Kind> Catalog();

// Null when there is no such kind.
const Kind* FindKind(std::string_view name);
std::unique_ptr<Device> Make(std::string_view kind, BYTE address);

}  // namespace fieldline::sim
