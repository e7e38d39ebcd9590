#include "tools/output/poll_csv.h"

#include "polling/text.h"

namespace fieldline::tool {
namespace {

template <typename Visit>
void VisitNumbers(Fields fields, Visit visit) {
  for (const RecordField& field : fields) {
    for (int i = 0; i < (IsText(field) ? 1 : field.count); ++i) visit(field, i);
  }
}

}  // namespace

std::string CsvHeadings(Fields fields) {
  std::string row = "time,ok,error,duration_ms";
  VisitNumbers(fields, [&](const RecordField& field, int index) {
    const std::string unit = field.unit.empty() ? "" : " (" + std::string(field.unit) + ')';
    row += ',' + CsvCell(FieldName(field, index) + unit);
  });
  return row + '\n';
}

std::string CsvRow(Fields fields, const PollResult& result) {
  std::string row = IsoTime(result.time) + (result.failure ? ",0," + std::string(result.failure->code) : ",1,") + ',' +
                    Fixed(result.duration.count(), 3);
  VisitNumbers(fields, [&](const RecordField& field, int index) {
    row += ',';
    if (result.record.empty()) return;
    row += IsText(field) ? CsvCell(RecordText(field, result.record.data()))
                         : NumberText(field, RawNumber(field, result.record.data(), index));
  });
  return row + '\n';
}

}  // namespace fieldline::tool
