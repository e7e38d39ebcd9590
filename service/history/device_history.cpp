#include "service/history/device_history.h"

#include <algorithm>

namespace fieldline::service {

DeviceHistory::DeviceHistory(Database& database, const std::string& device) : database_(database) {
  Statement find(database, "SELECT id FROM device WHERE name = ?");
  if (!find.Bind(device).Step()) return;
  device_ = find.Integer(0);
  Statement all(database, "SELECT id, field, unit, factor, offset FROM series WHERE device = ? ORDER BY id");
  all.Bind(device_);
  while (all.Step()) {
    // A field whose scale was changed has several series; the last one's unit is shown.
    const std::string field = all.Text(1);
    auto column = std::ranges::find(columns_, field, &Column::field);
    if (column == columns_.end()) column = columns_.insert(columns_.end(), {field, {}});
    column->unit = all.Text(2);
    series_[all.Integer(0)] = {static_cast<std::size_t>(column - columns_.begin()), all.Number(3), all.Number(4)};
  }
}

void DeviceHistory::Visit(UnixTime from, UnixTime until, const Visitor& visitor) {
  Statement intervals(database_,
                      "SELECT run, began, ended, '', '' FROM good "
                      "  WHERE device = ?1 AND ended >= ?2 AND began <= ?3 "
                      "UNION ALL SELECT run, began, ended, code, message FROM failure "
                      "  WHERE device = ?1 AND ended >= ?2 AND began <= ?3 "
                      "ORDER BY run, began");
  intervals.Bind(device_, from, until);
  while (intervals.Step()) {
    const UnixTime began = std::max(intervals.Integer(1), from);
    const UnixTime ended = std::min(intervals.Integer(2), until);
    if (const std::string code = intervals.Text(3); code.empty()) {
      VisitGood(intervals.Integer(0), began, ended, visitor);
    } else {
      visitor({began, ended, code, intervals.Text(4), {}});
    }
  }
}

void DeviceHistory::VisitGood(std::int64_t run, UnixTime began, UnixTime ended, const Visitor& visitor) {
  Row row{began, ended, {}, {}, std::vector<std::optional<Value>>(columns_.size())};
  Statement before(database_,
                   "SELECT value FROM reading WHERE series = ? AND run = ? AND time <= ? ORDER BY time DESC LIMIT 1");
  for (const auto& [id, series] : series_) {
    before.Bind(id, run, began);
    if (!before.Step()) continue;
    row.values[series.column] = Physical(series, before, 0);
    before.Reset();
  }
  Statement changes(database_,
                    "SELECT reading.series, reading.time, reading.value FROM series "
                    "JOIN reading ON reading.series = series.id "
                    "WHERE series.device = ? AND reading.run = ? AND reading.time > ? AND reading.time <= ? "
                    "ORDER BY reading.time");
  changes.Bind(device_, run, began, ended);
  while (changes.Step()) {
    const UnixTime time = changes.Integer(1);
    if (time != row.began) {
      row.ended = time;
      visitor(row);
      row.began = time;
    }
    const Series& series = series_.at(changes.Integer(0));
    row.values[series.column] = Physical(series, changes, 2);
  }
  row.ended = ended;
  visitor(row);
}

DeviceHistory::Value DeviceHistory::Physical(const Series& series, const Statement& row, int column) const {
  if (row.IsText(column)) return row.Text(column);
  if (series.factor == 1 && series.offset == 0) return row.Integer(column);
  return row.Number(column) / series.factor + series.offset;
}

}  // namespace fieldline::service
