#include "polling/record/record_field.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <string>

#include "fieldline/platform/text.h"
#include "polling/text.h"

namespace fieldline {
namespace {

constexpr int kMostTextUnits = 64;

// Fields may lie at odd positions.
template <typename T>
T Load(const BYTE* bytes) {
  T value;
  std::memcpy(&value, bytes, sizeof value);
  return value;
}

int DecimalsOf(double step) {
  constexpr int kMost = 6;
  int decimals = 0;
  for (double scaled = step; decimals < kMost && std::abs(scaled - std::round(scaled)) > 1e-9; scaled *= 10) ++decimals;
  return decimals;
}

// As many as two neighbouring values need to look different: one for a factor of 10 and for one of 3.
int Decimals(const RecordField& field) {
  int decimals = 0;
  for (double step = 1 / field.factor; step < 0.9999 && decimals < 6; step *= 10) ++decimals;
  return std::max(decimals, DecimalsOf(field.offset));
}

}  // namespace

std::string_view FieldTypeName(FieldType type) {
  switch (type) {
    case FieldType::kU8:
      return "uint8";
    case FieldType::kU16:
      return "uint16";
    case FieldType::kI16:
      return "int16";
    case FieldType::kU32:
      return "uint32";
    case FieldType::kI32:
      return "int32";
    case FieldType::kAscii:
      return "ascii";
    case FieldType::kUtf16:
      return "utf-16";
  }
  return {};
}

bool IsText(const RecordField& field) { return field.type == FieldType::kAscii || field.type == FieldType::kUtf16; }

std::string FieldName(const RecordField& field, int index) {
  const std::string name(field.name);
  return field.count == 1 || IsText(field) ? name : name + '_' + std::to_string(field.first + index);
}

bool IsPhysical(const RecordField& field) {
  return field.factor != 1 || field.offset != 0 || field.signed_bits != 0 || !field.unit.empty() || field.minimum ||
         field.maximum;
}

bool IsPlausible(const RecordField& field, double physical) {
  return physical >= field.minimum.value_or(physical) && physical <= field.maximum.value_or(physical);
}

long long RawNumber(const RecordField& field, const BYTE* record, int index) {
  const BYTE* const bytes = record + field.position + static_cast<std::size_t>(index) * FieldWidth(field.type);
  switch (field.type) {
    case FieldType::kU8:
      return *bytes;
    case FieldType::kU16:
      return Load<std::uint16_t>(bytes);
    case FieldType::kI16:
      return Load<std::int16_t>(bytes);
    case FieldType::kU32:
      return Load<std::uint32_t>(bytes);
    default:
      return Load<std::int32_t>(bytes);
  }
}

std::string RecordText(const RecordField& field, const BYTE* record) {
  const int units = std::min(field.count, kMostTextUnits);
  const auto bytes = static_cast<std::size_t>(units) * FieldWidth(field.type);
  if (field.type == FieldType::kAscii) {
    const char* const text = reinterpret_cast<const char*>(record + field.position);
    return std::string(text, std::find(text, text + bytes, '\0'));
  }
  char16_t text[kMostTextUnits + 1] = {};
  std::memcpy(text, record + field.position, bytes);
  char utf8[kMostTextUnits * 3 + 1];
  Utf16ToUtf8(text, utf8, sizeof utf8);
  return utf8;
}

long long SignedNumber(const RecordField& field, long long raw) {
  if (field.signed_bits == 0) return raw;
  const long long span = 1LL << field.signed_bits;
  raw &= span - 1;
  return raw >= span / 2 ? raw - span : raw;
}

double Physical(const RecordField& field, long long raw) {
  return static_cast<double>(SignedNumber(field, raw)) / field.factor + field.offset;
}

std::string PhysicalText(const RecordField& field, long long raw) {
  if (!IsPhysical(field)) return {};
  return field.unit.empty() ? NumberText(field, raw) : NumberText(field, raw) + ' ' + std::string(field.unit);
}

std::string NumberText(const RecordField& field, long long raw) {
  return IsPhysical(field) ? Fixed(Physical(field, raw), Decimals(field)) : std::to_string(raw);
}

bool IsPlausible(Fields fields, const BYTE* record) {
  return std::ranges::all_of(fields, [record](const RecordField& field) {
    if (!field.minimum && !field.maximum) return true;
    for (int i = 0; i < field.count; ++i) {
      if (!IsPlausible(field, Physical(field, RawNumber(field, record, i)))) return false;
    }
    return true;
  });
}

double PhysicalNumber(const RecordField& field, const BYTE* record) {
  return Physical(field, RawNumber(field, record));
}

std::string PhysicalNumberText(const RecordField& field, const BYTE* record) {
  const long long raw = RawNumber(field, record);
  return IsPhysical(field) ? PhysicalText(field, raw) : std::to_string(raw);
}

}  // namespace fieldline
