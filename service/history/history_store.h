#pragma once

#include <chrono>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <variant>
#include <vector>

#include "polling/poller.h"
#include "service/history/database.h"
#include "service/history/unix_time.h"
#include "service/watched_device.h"

namespace fieldline::service {

// One poll of a device, as far as the history keeps it.
struct HistoryEntry {
  std::size_t device = 0;
  UnixTime time = 0;                              // when the poll began
  std::chrono::steady_clock::time_point clock{};  // the same moment, on a clock that nobody sets
  Bytes record{};                                 // of a good poll
  std::string code{};                             // of a failed one; empty for a good one
  std::string message{};
  bool line_failed = false;  // the line could not be opened, or vanished
};

HistoryEntry EntryOf(std::size_t device, const PollResult& result);

// Writes the history of a site. Everything throws DatabaseError; what a failed call was to write is not written, and
// the store is of no use any more: make another.
class HistoryStore {
 public:
  // `devices` must outlive the store.
  HistoryStore(const std::string& path, std::span<const WatchedDevice> devices);

  // In one transaction.
  void Write(std::span<const HistoryEntry> entries);

  // For what keeps the database in order between two writes.
  Database& database() { return database_; }

 private:
  using Value = std::variant<std::monostate, std::int64_t, std::string>;

  struct Series {
    const RecordField* field;
    std::int64_t id;
    Value last{};  // of this run
  };
  struct Interval {
    std::int64_t id = 0;  // 0: none
    UnixTime ended = 0;
    std::int64_t polls = 0;
    bool is_written = true;  // as it is here

    void Extend(UnixTime time) {
      ended = time;
      ++polls;
      is_written = false;
    }
  };
  struct Device {
    const SiteDevice* device;
    std::string line;
    std::int64_t id;
    std::vector<Series> series;
    UnixTime last = 0;  // time of its last entry
    Interval good;
    Interval failure;
    std::string code;  // of the failure
  };
  struct Line {
    std::string name;
    std::optional<std::string> code;  // of its failure; nothing: not known yet
  };

  std::int64_t DeviceId(const std::string& name);
  std::int64_t SeriesId(std::int64_t device, const RecordField& field);
  void FollowClock(const HistoryEntry& entry);
  void Add(const HistoryEntry& entry);
  void AddGood(Device& device, UnixTime time, const Bytes& record);
  void AddFailure(Device& device, UnixTime time, const HistoryEntry& entry);
  void AddLineState(const std::string& line, UnixTime time, const HistoryEntry& entry);
  void WriteIntervals();
  void WriteInterval(Interval& interval, Statement& update);
  void EndIntervals(Device& device);

  Database database_;
  std::vector<Device> devices_;
  std::vector<Line> lines_;
  std::int64_t run_ = 0;                      // 0: none yet
  std::chrono::milliseconds clock_offset_{};  // of this run: time minus clock

  struct Statements {
    explicit Statements(Database& database);

    Statement add_run;
    Statement add_reading;
    Statement add_good;
    Statement update_good;
    Statement add_failure;
    Statement update_failure;
    Statement add_line_change;
  };
  std::optional<Statements> statements_;  // once the tables are there
};

}  // namespace fieldline::service
