#pragma once

#include <algorithm>
#include <cstddef>
#include <optional>
#include <span>
#include <string>
#include <string_view>

#include "fieldline/types.h"

namespace fieldline {

enum class FieldType { kU8, kU16, kI16, kU32, kI32, kAscii, kUtf16 };

// A field of a driver's record: a number, a text, or a run of numbers called <name>_<first> and so on.
struct RecordField {
  std::string_view name;
  std::size_t position;  // within the record, bytes
  FieldType type;
  int count = 1;                    // numbers in the run; for a text, its capacity in units
  int first = 1;                    // of a run
  double factor = 1;                // the record holds this many times the physical value
  std::string_view unit = {};       // of the physical value; empty when unknown
  double offset = 0;                // added after the division by the factor
  int signed_bits = 0;              // 8, 16 or 32 when the device sends a signed number; 0: as the type says
  std::optional<double> minimum{};  // of a plausible physical value
  std::optional<double> maximum{};
};

using Fields = std::span<const RecordField>;

// Size in bytes of one number, or of one unit of a text.
constexpr std::size_t FieldWidth(FieldType type) {
  switch (type) {
    case FieldType::kU8:
    case FieldType::kAscii:
      return 1;
    case FieldType::kU16:
    case FieldType::kI16:
    case FieldType::kUtf16:
      return 2;
    default:
      return 4;
  }
}

// "uint8", "utf-16" and so on.
std::string_view FieldTypeName(FieldType type);

bool IsText(const RecordField& field);

// The name of a field, or of the number at `index` of a run.
std::string FieldName(const RecordField& field, int index);

// First position after the fields.
constexpr std::size_t FieldsEnd(Fields fields) {
  std::size_t end = 0;
  for (const RecordField& field : fields) {
    end = std::max(end, field.position + static_cast<std::size_t>(field.count) * FieldWidth(field.type));
  }
  return end;
}

// A number as the record holds it; for a run, the one at `index`.
long long RawNumber(const RecordField& field, const BYTE* record, int index = 0);

// A text of the record in UTF-8.
std::string RecordText(const RecordField& field, const BYTE* record);

// Whether the number has a scale, a unit or a range.
bool IsPhysical(const RecordField& field);

// Whether a physical value lies in the field's range.
bool IsPlausible(const RecordField& field, double physical);

// A raw number with its sign, when the device sends a signed one.
long long SignedNumber(const RecordField& field, long long raw);

// A raw number in the field's unit, as number and as text with the unit. The text is empty for a field that is not
// physical.
double Physical(const RecordField& field, long long raw);
std::string PhysicalText(const RecordField& field, long long raw);

// The same text without the unit. The raw number for a field that is not physical.
std::string NumberText(const RecordField& field, long long raw);

// The number of a field that is not a run, in its unit, as number and as text with the unit.
double PhysicalNumber(const RecordField& field, const BYTE* record);
std::string PhysicalNumberText(const RecordField& field, const BYTE* record);

// Whether all numbers of the record are plausible.
bool IsPlausible(Fields fields, const BYTE* record);

}  // namespace fieldline
