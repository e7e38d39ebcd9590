#include "tools/output/record_table.h"

#include <algorithm>
#include <iomanip>
#include <string>
#include <vector>

#include "polling/text.h"

namespace fieldline::tool {
namespace {

constexpr int kNumbersPerLine = 12;

struct Row {
  std::string name;
  std::string raw;
  std::string physical;
  bool alone;  // a text that takes the rest of the line
};

void AppendRows(std::vector<Row>& rows, const RecordField& field, const BYTE* record) {
  if (IsText(field)) {
    rows.push_back({std::string(field.name), '"' + Escaped(RecordText(field, record)) + '"', {}, true});
  } else if (field.count == 1 || IsPhysical(field)) {
    for (int i = 0; i < field.count; ++i) {
      const long long raw = RawNumber(field, record, i);
      rows.push_back({FieldName(field, i), std::to_string(raw), PhysicalText(field, raw), false});
    }
  } else {
    for (int i = 0; i < field.count; i += kNumbersPerLine) {
      const int end = std::min(i + kNumbersPerLine, field.count);
      std::vector<std::string> numbers;
      for (int k = i; k < end; ++k) numbers.push_back(std::to_string(RawNumber(field, record, k)));
      const std::string last = end - i > 1 ? ".." + std::to_string(field.first + end - 1) : "";
      rows.push_back({FieldName(field, i) + last, Join(numbers, " "), {}, true});
    }
  }
}

}  // namespace

void PrintRecord(std::ostream& out, Fields fields, const BYTE* record) {
  std::vector<Row> rows;
  for (const RecordField& field : fields) AppendRows(rows, field, record);

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

}  // namespace fieldline::tool
