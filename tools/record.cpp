#include "tools/record.h"

#include <algorithm>
#include <cstring>
#include <iomanip>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "fieldline/platform/text.h"
#include "tools/text.h"

namespace fieldline::tool {
namespace {

using nlohmann::ordered_json;

constexpr int kNumbersPerLine = 12;
constexpr int kMostTextUnits = 64;

bool IsPhysical(const Field& field) { return field.factor != 1 || !field.unit.empty(); }

// Fields lie at odd positions, too.
template <typename T>
T Load(const BYTE* bytes) {
  T value;
  std::memcpy(&value, bytes, sizeof value);
  return value;
}

long long Number(const Field& field, const BYTE* record, int index) {
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

std::string Text(const Field& field, const BYTE* record) {
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

int Decimals(int factor) {
  int decimals = 0;
  for (; factor > 1; factor /= 10) ++decimals;
  return decimals;
}

double Physical(const Field& field, long long raw) { return static_cast<double>(raw) / field.factor; }

std::string PhysicalText(const Field& field, long long raw) {
  if (!IsPhysical(field)) return {};
  const std::string number = Fixed(Physical(field, raw), Decimals(field.factor));
  return field.unit.empty() ? number : number + ' ' + std::string(field.unit);
}

struct Row {
  std::string name;
  std::string raw;
  std::string physical;
  bool alone;  // the raw text has the rest of the line to itself
};

void AppendRows(std::vector<Row>& rows, const Field& field, const BYTE* record) {
  if (IsText(field)) {
    rows.push_back({std::string(field.name), '"' + Text(field, record) + '"', {}, true});
  } else if (field.count == 1 || IsPhysical(field)) {
    for (int i = 0; i < field.count; ++i) {
      const long long raw = Number(field, record, i);
      rows.push_back({FieldName(field, i), std::to_string(raw), PhysicalText(field, raw), false});
    }
  } else {
    for (int i = 0; i < field.count; i += kNumbersPerLine) {
      const int end = std::min(i + kNumbersPerLine, field.count);
      std::vector<std::string> numbers;
      for (int k = i; k < end; ++k) numbers.push_back(std::to_string(Number(field, record, k)));
      const std::string last = end - i > 1 ? ".." + std::to_string(field.first + end - 1) : "";
      rows.push_back({FieldName(field, i) + last, Join(numbers, " "), {}, true});
    }
  }
}

}  // namespace

std::size_t FieldWidth(FieldType type) {
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

bool IsText(const Field& field) { return field.type == FieldType::kAscii || field.type == FieldType::kUtf16; }

std::string FieldName(const Field& field, int index) {
  const std::string name(field.name);
  return field.count == 1 || IsText(field) ? name : name + '_' + std::to_string(field.first + index);
}

std::size_t FieldsEnd(Fields fields) {
  std::size_t end = 0;
  for (const Field& field : fields) {
    end = std::max(end, field.position + static_cast<std::size_t>(field.count) * FieldWidth(field.type));
  }
  return end;
}

void PrintRecord(std::ostream& out, Fields fields, const BYTE* record) {
  std::vector<Row> rows;
  for (const Field& field : fields) AppendRows(rows, field, record);

  std::size_t name_width = 0;
  std::size_t raw_width = 0;
  for (const Row& row : rows) {
    name_width = std::max(name_width, row.name.size());
    if (!row.alone) raw_width = std::max(raw_width, row.raw.size());
  }
  for (const Row& row : rows) {
    out << "  " << std::left << std::setw(static_cast<int>(name_width)) << row.name << "  ";
    if (!row.alone) out << std::right << std::setw(static_cast<int>(raw_width));
    out << row.raw;
    if (!row.physical.empty()) out << "  " << row.physical;
    out << '\n';
  }
}

ordered_json RecordToJson(Fields fields, const BYTE* record) {
  ordered_json json = ordered_json::object();
  for (const Field& field : fields) {
    if (IsText(field)) {
      json[std::string(field.name)] = Text(field, record);
      continue;
    }
    for (int i = 0; i < field.count; ++i) json[FieldName(field, i)] = Number(field, record, i);
  }
  return json;
}

double PhysicalNumber(const Field& field, const BYTE* record) { return Physical(field, Number(field, record, 0)); }

std::string PhysicalNumberText(const Field& field, const BYTE* record) {
  const long long raw = Number(field, record, 0);
  return IsPhysical(field) ? PhysicalText(field, raw) : std::to_string(raw);
}

ordered_json PhysicalToJson(Fields fields, const BYTE* record) {
  ordered_json json = ordered_json::object();
  for (const Field& field : fields) {
    if (IsText(field) || !IsPhysical(field)) continue;
    for (int i = 0; i < field.count; ++i) {
      ordered_json& entry = json[FieldName(field, i)];
      entry["value"] = Physical(field, Number(field, record, i));
      if (!field.unit.empty()) entry["unit"] = field.unit;
    }
  }
  return json;
}

}  // namespace fieldline::tool
