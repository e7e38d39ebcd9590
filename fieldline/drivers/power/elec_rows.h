#pragma once

#include <cstdint>
#include <span>

#include "fieldline/drivers/power/elec_data.h"

namespace fieldline {

// One field of a meter's record and the register it comes from.
struct ElecRow {
  std::uint32_t ELEC_DATA::*field;
  int reg;
  std::uint32_t factor;
};

constexpr bool RowsLieWithin(std::span<const ElecRow> rows, int registers) {
  for (const ElecRow& row : rows) {
    if (row.reg < 0 || row.reg >= registers) return false;
  }
  return true;
}

template <class Reply>
void DecodeRows(std::span<const ElecRow> rows, const Reply& reply, ELEC_DATA* record) {
  for (const ElecRow& row : rows) record->*row.field = reply.Register(row.reg) * row.factor;
}

}  // namespace fieldline
