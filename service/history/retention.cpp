#include "service/history/retention.h"

#include <string>
#include <vector>

namespace fieldline::service {
namespace {

constexpr int kSummariesLast = 10;  // times as long as readings

std::optional<UnixTime> Earliest(Database& database, std::string_view sql) {
  Statement earliest(database, sql);
  if (!earliest.Step() || earliest.IsNull(0)) return std::nullopt;
  return earliest.Integer(0);
}

std::vector<std::int64_t> Ids(Database& database, std::string_view sql) {
  std::vector<std::int64_t> ids;
  Statement all(database, sql);
  while (all.Step()) ids.push_back(all.Integer(0));
  return ids;
}

// A value holds until the next one: of each run the last value before `before` stays.
void RemoveReadings(Database& database, UnixTime before) {
  const std::vector<std::int64_t> runs = Ids(database, "SELECT id FROM run");
  Statement remove(database,
                   "DELETE FROM reading WHERE series = ?1 AND run = ?2 AND time < "
                   "(SELECT max(time) FROM reading WHERE series = ?1 AND run = ?2 AND time <= ?3)");
  for (const std::int64_t series : Ids(database, "SELECT id FROM series")) {
    for (const std::int64_t run : runs) remove.Bind(series, run, before).Run();
  }
  Statement(database, "UPDATE progress SET readings_from = max(readings_from, ?)").Bind(before).Run();
}

// Runs that nothing is known of any more, with the one value a series that RemoveReadings() left.
void RemoveRuns(Database& database) {
  constexpr char kEnded[] =
      "SELECT id FROM run WHERE id < (SELECT max(id) FROM run) AND NOT EXISTS "
      "(SELECT 1 FROM good WHERE good.run = run.id AND good.ended >= (SELECT readings_from FROM progress))";
  const std::vector<std::int64_t> series = Ids(database, "SELECT id FROM series");
  Statement remove_readings(database, "DELETE FROM reading WHERE series = ? AND run = ?");
  Statement remove_run(database, "DELETE FROM run WHERE id = ?");
  for (const std::int64_t run : Ids(database, kEnded)) {
    for (const std::int64_t id : series) remove_readings.Bind(id, run).Run();
    remove_run.Bind(run).Run();
  }
}

void RemoveSummaries(Database& database, UnixTime before) {
  // Of each series the last one stays: it stands for the slots after it.
  Statement(database,
            "DELETE FROM summary WHERE slot < ?1 AND EXISTS (SELECT 1 FROM summary AS later "
            "WHERE later.series = summary.series AND later.slot > summary.slot AND later.slot <= ?1)")
      .Bind(before)
      .Run();
  for (const char* const table : {"good", "failure"}) {
    Statement(database, std::string("DELETE FROM ") + table + " WHERE ended < ?").Bind(before).Run();
  }
  Statement(database, "DELETE FROM line_change WHERE time < ?").Bind(before).Run();
  Statement(database, "DELETE FROM alarm_change WHERE time < ?").Bind(before).Run();
  Statement(database, "DELETE FROM alarm_task WHERE ended < ?").Bind(before).Run();
}

}  // namespace

void RemoveOld(Database& database, UnixTime now, std::chrono::milliseconds keep) {
  Transaction transaction(database);
  // Not so after a clock that was wrong and far ahead.
  Statement(database, "UPDATE progress SET readings_from = min(readings_from, ?)").Bind(now).Run();
  RemoveReadings(database, now - keep.count());
  RemoveSummaries(database, now - kSummariesLast * keep.count());
  RemoveRuns(database);
  transaction.Commit();
}

std::optional<UnixTime> Shrink(Database& database, std::uint64_t most) {
  std::optional<UnixTime> removed;
  while (UsedBytes(database) > most) {
    Transaction transaction(database);
    const auto first = Earliest(database, "SELECT max(readings_from, (SELECT min(began) FROM good)) FROM progress");
    const auto last = Earliest(database, "SELECT max(ended) FROM good");
    if (!first || !last) break;
    if (*first + kHour < *last) {
      removed = *first + kHour;
      RemoveReadings(database, *removed);
      RemoveRuns(database);
    } else {
      const auto slot = Earliest(database, "SELECT min(slot) FROM summary");
      if (!slot || *slot + kHour >= *last) break;
      RemoveSummaries(database, *slot + kHour);
    }
    transaction.Commit();
  }
  return removed;
}

std::uint64_t UsedBytes(Database& database) {
  const std::int64_t pages = database.Query("PRAGMA page_count") - database.Query("PRAGMA freelist_count");
  return static_cast<std::uint64_t>(pages * database.Query("PRAGMA page_size"));
}

}  // namespace fieldline::service
