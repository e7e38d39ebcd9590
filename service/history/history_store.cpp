#include "service/history/history_store.h"

#include <algorithm>
#include <utility>

#include "service/history/schema.h"

namespace fieldline::service {
namespace {

using std::chrono::milliseconds;

// A clock that is this far from where it should be was set; less is a clock that is kept right.
constexpr milliseconds kClockWasSet{2000};

// Polls further apart than this are not joined: nobody knows what was in between.
UnixTime LongestGap(const SiteDevice& device) {
  constexpr UnixTime kAtLeast = 60'000;  // ms
  return std::max<UnixTime>(kAtLeast, 3 * device.interval.count());
}

}  // namespace

HistoryEntry EntryOf(std::size_t device, const PollResult& result) {
  HistoryEntry entry;
  entry.device = device;
  entry.time = ToUnixTime(result.time);
  entry.clock = std::chrono::steady_clock::now() -
                std::chrono::duration_cast<std::chrono::steady_clock::duration>(result.duration);
  entry.record = result.record;
  if (result.failure) {
    entry.code = result.failure->code;
    entry.message = result.failure->message;
    entry.line_failed = result.failure->exit == ExitCode::kNoLine;
  }
  return entry;
}

HistoryStore::Statements::Statements(Database& database)
    : add_run(database, "INSERT INTO run (began) VALUES (?)"),
      add_reading(database, "INSERT OR REPLACE INTO reading (series, run, time, value) VALUES (?, ?, ?, ?)"),
      add_good(database, "INSERT INTO good (device, run, began, ended, polls) VALUES (?, ?, ?, ?, ?)"),
      update_good(database, "UPDATE good SET ended = ?, polls = ? WHERE id = ?"),
      add_failure(database,
                  "INSERT INTO failure (device, run, began, ended, polls, code, message) VALUES (?, ?, ?, ?, ?, ?, ?)"),
      update_failure(database, "UPDATE failure SET ended = ?, polls = ? WHERE id = ?"),
      add_line_change(database, "INSERT INTO line_change (line, time, code, message) VALUES (?, ?, ?, ?)") {}

HistoryStore::HistoryStore(const std::string& path, std::span<const WatchedDevice> devices)
    : database_(path, Database::Mode::kWrite) {
  Transaction transaction(database_);
  PrepareTables(database_);
  for (const WatchedDevice& watched : devices) {
    Device device{watched.device, watched.line->name, DeviceId(watched.device->name), {}, 0, {}, {}, {}};
    for (const RecordField& field : watched.device->fields)
      device.series.push_back({&field, SeriesId(device.id, field)});
    devices_.push_back(std::move(device));
    const bool is_new = std::ranges::find(lines_, watched.line->name, &Line::name) == lines_.end();
    if (is_new) lines_.push_back({watched.line->name, std::nullopt});
  }
  transaction.Commit();
  statements_.emplace(database_);
}

std::int64_t HistoryStore::DeviceId(const std::string& name) {
  Statement(database_, "INSERT INTO device (name) VALUES (?) ON CONFLICT DO NOTHING").Bind(name).Run();
  Statement find(database_, "SELECT id FROM device WHERE name = ?");
  find.Bind(name).Step();
  return find.Integer(0);
}

std::int64_t HistoryStore::SeriesId(std::int64_t device, const RecordField& field) {
  Statement(database_,
            "INSERT INTO series (device, field, unit, factor, offset) VALUES (?, ?, ?, ?, ?) ON CONFLICT DO NOTHING")
      .Bind(device, field.name, field.unit, field.factor, field.offset)
      .Run();
  Statement find(database_,
                 "SELECT id FROM series WHERE device = ? AND field = ? AND unit = ? AND factor = ? AND offset = ?");
  find.Bind(device, field.name, field.unit, field.factor, field.offset).Step();
  return find.Integer(0);
}

void HistoryStore::Write(std::span<const HistoryEntry> entries) {
  Transaction transaction(database_);
  for (const HistoryEntry& entry : entries) {
    FollowClock(entry);
    Add(entry);
  }
  WriteIntervals();
  transaction.Commit();
}

// A clock that was set begins a run, in which nothing is known yet: so no time is earlier than the one before it.
void HistoryStore::FollowClock(const HistoryEntry& entry) {
  const auto offset = milliseconds(entry.time) - std::chrono::floor<milliseconds>(entry.clock.time_since_epoch());
  const bool was_set = std::chrono::abs(offset - clock_offset_) > kClockWasSet;
  clock_offset_ = offset;
  if (run_ != 0 && !was_set) return;

  statements_->add_run.Bind(entry.time).Run();
  run_ = database_.LastRowId();
  for (Device& device : devices_) {
    EndIntervals(device);
    device.last = 0;
    for (Series& series : device.series) series.last = {};
  }
}

void HistoryStore::Add(const HistoryEntry& entry) {
  Device& device = devices_[entry.device];
  const UnixTime time = std::max(entry.time, device.last + 1);
  if (device.last != 0 && time - device.last > LongestGap(*device.device)) EndIntervals(device);
  device.last = time;
  AddLineState(device.line, time, entry);
  if (entry.code.empty()) {
    AddGood(device, time, entry.record);
  } else {
    AddFailure(device, time, entry);
  }
}

void HistoryStore::AddGood(Device& device, UnixTime time, const Bytes& record) {
  if (device.good.id == 0) {
    EndIntervals(device);
    statements_->add_good.Bind(device.id, run_, time, time, 1).Run();
    device.good = {.id = database_.LastRowId(), .ended = time, .polls = 1};
  } else {
    device.good.Extend(time);
  }
  for (Series& series : device.series) {
    if (IsText(*series.field)) {
      const std::string text = RecordText(*series.field, record.data());
      if (series.last == Value(text)) continue;
      statements_->add_reading.Bind(series.id, run_, time, text).Run();
      series.last = text;
    } else {
      const std::int64_t number = SignedNumber(*series.field, RawNumber(*series.field, record.data()));
      if (series.last == Value(number)) continue;
      statements_->add_reading.Bind(series.id, run_, time, number).Run();
      series.last = number;
    }
  }
}

void HistoryStore::AddFailure(Device& device, UnixTime time, const HistoryEntry& entry) {
  if (device.failure.id == 0 || device.code != entry.code) {
    EndIntervals(device);
    statements_->add_failure.Bind(device.id, run_, time, time, 1, entry.code, entry.message).Run();
    device.failure = {.id = database_.LastRowId(), .ended = time, .polls = 1};
    device.code = entry.code;
  } else {
    device.failure.Extend(time);
  }
}

void HistoryStore::AddLineState(const std::string& name, UnixTime time, const HistoryEntry& entry) {
  Line& line = *std::ranges::find(lines_, name, &Line::name);
  const std::string code = entry.line_failed ? entry.code : std::string();
  if (line.code == code) return;
  line.code = code;
  if (entry.line_failed) {
    statements_->add_line_change.Bind(name, time, entry.code, entry.message).Run();
  } else {
    statements_->add_line_change.Bind(name, time, nullptr, nullptr).Run();
  }
}

void HistoryStore::WriteIntervals() {
  for (Device& device : devices_) {
    WriteInterval(device.good, statements_->update_good);
    WriteInterval(device.failure, statements_->update_failure);
  }
}

void HistoryStore::WriteInterval(Interval& interval, Statement& update) {
  if (interval.is_written) return;
  update.Bind(interval.ended, interval.polls, interval.id).Run();
  interval.is_written = true;
}

void HistoryStore::EndIntervals(Device& device) {
  WriteInterval(device.good, statements_->update_good);
  WriteInterval(device.failure, statements_->update_failure);
  device.good = {};
  device.failure = {};
}

}  // namespace fieldline::service
