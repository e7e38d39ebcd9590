#include "sim/catalog.h"

#include "sim/envir.h"

namespace fieldline::sim {
namespace {

template <typename T>
std::unique_ptr<Device> MakeAt(BYTE address) {
  return std::make_unique<T>(address);
}

constexpr Kind kKinds[] = {
    {"envir", "temperature and humidity probe", 2400, 1, MakeAt<EnvirProbe>},
};

}  // namespace

std::span<const Kind> Catalog() { return kKinds; }

const Kind* FindKind(std::string_view name) {
  for (const Kind& kind : kKinds) {
    if (kind.name == name) return &kind;
  }
  return nullptr;
}

std::unique_ptr<Device> Make(std::string_view kind, BYTE address) {
  const Kind* found = FindKind(kind);
  return found != nullptr ? found->make(address) : nullptr;
}

}  // namespace fieldline::sim
