#pragma once

#include <functional>
#include <map>
#include <optional>
#include <string>
#include <variant>
#include <vector>

#include "service/history/database.h"
#include "service/history/unix_time.h"

namespace fieldline::service {

// What a history holds of one device. Everything throws DatabaseError.
class DeviceHistory {
 public:
  // A whole number as the record held it, a physical value, or a text.
  using Value = std::variant<std::int64_t, double, std::string>;

  struct Column {
    std::string field;
    std::string unit;  // of the physical value; may be empty
  };

  // A time during which every poll brought the same.
  struct Row {
    UnixTime began;
    UnixTime ended;
    std::string code;  // of the failure; empty for good polls
    std::string message;
    std::vector<std::optional<Value>> values;  // one a column, of good polls
  };
  using Visitor = std::function<void(const Row&)>;

  // `database` must outlive this.
  DeviceHistory(Database& database, const std::string& device);

  // False when the history has never heard of the device.
  bool IsKnown() const { return device_ != 0; }

  const std::vector<Column>& Columns() const { return columns_; }

  // All rows that touch the time from `from` to `until`, in the order in which they came about.
  void Visit(UnixTime from, UnixTime until, const Visitor& visitor);

 private:
  struct Series {
    std::size_t column;
    double factor;
    double offset;
  };

  Value Physical(const Series& series, const Statement& row, int column) const;
  void VisitGood(std::int64_t run, UnixTime began, UnixTime ended, const Visitor& visitor);

  Database& database_;
  std::int64_t device_ = 0;
  std::vector<Column> columns_;
  std::map<std::int64_t, Series> series_;  // by number
};

}  // namespace fieldline::service
