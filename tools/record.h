#pragma once

#include <cstddef>
#include <nlohmann/json_fwd.hpp>
#include <ostream>
#include <span>
#include <string>
#include <string_view>

#include "fieldline/types.h"

namespace fieldline::tool {

enum class FieldType { kU8, kU16, kI16, kU32, kI32, kAscii, kUtf16 };

// One entry of a driver's record: a number, a text, or a run of numbers, which are called <name>_<first> and so on.
struct Field {
  std::string_view name;
  std::size_t position;  // within the record, bytes
  FieldType type;
  int count = 1;               // numbers in the run; of a text, the units it has room for
  int first = 1;               // of a run
  int factor = 1;              // how many times its physical value the record holds: 1, 10, 100 or 1000
  std::string_view unit = {};  // of the physical value; empty where the library knows none
};

using Fields = std::span<const Field>;

// Bytes of one number, or of one unit of a text.
std::size_t FieldWidth(FieldType type);

// "uint8", "utf-16" and so on.
std::string_view FieldTypeName(FieldType type);

bool IsText(const Field& field);

// The name of the number at `index` of a run, or of a field that is alone.
std::string FieldName(const Field& field, int index);

// First position behind the fields.
std::size_t FieldsEnd(Fields fields);

// A table for people. `record` reaches to FieldsEnd(fields).
void PrintRecord(std::ostream& out, Fields fields, const BYTE* record);

// The record's own numbers and texts under their names.
nlohmann::ordered_json RecordToJson(Fields fields, const BYTE* record);

// The number of a field that is no run, in its unit; and with its unit behind it.
double PhysicalNumber(const Field& field, const BYTE* record);
std::string PhysicalNumberText(const Field& field, const BYTE* record);

// {"value": 220.5, "unit": "V"} for each number that has a scale or a unit; empty when none has.
nlohmann::ordered_json PhysicalToJson(Fields fields, const BYTE* record);

}  // namespace fieldline::tool
