#include "service/history/export.h"

#include <charconv>
#include <nlohmann/json.hpp>

#include "polling/record/poll_json.h"
#include "polling/text.h"

namespace fieldline::service {
namespace {

using nlohmann::ordered_json;
using Row = DeviceHistory::Row;
using Value = DeviceHistory::Value;

std::string Text(const Value& value) {
  if (const auto* const text = std::get_if<std::string>(&value)) return CsvCell(*text);
  if (const auto* const number = std::get_if<std::int64_t>(&value)) return std::to_string(*number);
  char digits[32];
  const auto end = std::to_chars(std::begin(digits), std::end(digits), std::get<double>(value)).ptr;
  return {digits, end};
}

void PrintCsv(const Row& row, std::size_t columns, std::ostream& out) {
  out << IsoTime(ToTime(row.began)) << ',' << IsoTime(ToTime(row.ended)) << (row.code.empty() ? ",1," : ",0,")
      << row.code;
  for (std::size_t i = 0; i < columns; ++i) {
    out << ',';
    if (i < row.values.size() && row.values[i]) out << Text(*row.values[i]);
  }
  out << '\n';
}

void PrintJson(const Row& row, const std::string& device, const DeviceHistory& history, std::ostream& out) {
  ordered_json json;
  json["schema"] = kJsonSchema;
  json["device"] = device;
  json["time"] = IsoTime(ToTime(row.began));
  json["until"] = IsoTime(ToTime(row.ended));
  json["ok"] = row.code.empty();
  if (!row.code.empty()) {
    json["error"]["code"] = row.code;
    json["error"]["message"] = row.message;
  }
  for (std::size_t i = 0; i < row.values.size(); ++i) {
    if (!row.values[i]) continue;
    ordered_json& value = json["values"][history.Columns()[i].field];
    std::visit([&value](const auto& known) { value = known; }, *row.values[i]);
  }
  out << json.dump(-1, ' ', false, ordered_json::error_handler_t::replace) << '\n';
}

}  // namespace

void Export(DeviceHistory& history, const std::string& device, UnixTime from, UnixTime until, ExportForm form,
            std::ostream& out) {
  const std::size_t columns = history.Columns().size();
  if (form == ExportForm::kCsv) {
    out << "time,until,ok,error";
    for (const auto& [field, unit] : history.Columns()) {
      out << ',' << CsvCell(unit.empty() ? field : field + " (" + unit + ')');
    }
    out << '\n';
  }
  history.Visit(from, until, [&](const Row& row) {
    if (form == ExportForm::kCsv) {
      PrintCsv(row, columns, out);
    } else {
      PrintJson(row, device, history, out);
    }
  });
}

}  // namespace fieldline::service
