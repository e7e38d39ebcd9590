#include "service/history/summary.h"

#include <algorithm>
#include <cmath>
#include <optional>
#include <vector>

namespace fieldline::service {
namespace {

struct Series {
  std::int64_t id;
  std::int64_t device;
  double factor;
  double offset;
};

// Polls of a device that all succeeded, as far as they lie in the slot.
struct Stretch {
  std::int64_t run;
  UnixTime began;
  UnixTime ended;
};

struct Summary {
  double least;
  double mean;
  double most;

  bool operator==(const Summary&) const = default;
};

class Summariser {
 public:
  explicit Summariser(Database& database)
      : find_stretches_(database, "SELECT run, began, ended FROM good WHERE device = ? AND ended >= ? AND began < ?"),
        find_value_(database,
                    "SELECT value FROM reading WHERE series = ? AND run = ? AND time <= ? ORDER BY time DESC LIMIT 1"),
        find_changes_(database,
                      "SELECT time, value FROM reading WHERE series = ? AND run = ? AND time > ? AND time < ? "
                      "ORDER BY time"),
        find_last_(database,
                   "SELECT least, mean, most FROM summary WHERE series = ? AND slot < ? ORDER BY slot DESC LIMIT 1"),
        add_(database, "INSERT OR REPLACE INTO summary (series, slot, least, mean, most) VALUES (?, ?, ?, ?, ?)") {
    Statement all(database, "SELECT id, device, factor, offset FROM series ORDER BY device");
    while (all.Step()) series_.push_back({all.Integer(0), all.Integer(1), all.Number(2), all.Number(3)});
  }

  void SummariseSlot(UnixTime slot) {
    std::vector<Stretch> stretches;
    std::int64_t device = 0;
    for (const Series& series : series_) {
      if (series.device != device) {
        device = series.device;
        stretches = StretchesIn(device, slot);
      }
      const std::optional<Summary> summary = SummaryOf(series, stretches);
      if (!summary || summary == LastBefore(series, slot)) continue;
      add_.Bind(series.id, slot, summary->least, summary->mean, summary->most).Run();
    }
  }

 private:
  std::vector<Stretch> StretchesIn(std::int64_t device, UnixTime slot) {
    std::vector<Stretch> stretches;
    find_stretches_.Bind(device, slot, slot + kSlot);
    while (find_stretches_.Step()) {
      stretches.push_back({find_stretches_.Integer(0), std::max(find_stretches_.Integer(1), slot),
                           std::min(find_stretches_.Integer(2), slot + kSlot)});
    }
    return stretches;
  }

  // Nothing for a text, and for a series that has no value in the stretches.
  std::optional<Summary> SummaryOf(const Series& series, const std::vector<Stretch>& stretches) {
    double sum = 0;
    double weight = 0;
    double least = HUGE_VAL;
    double most = -HUGE_VAL;
    for (const Stretch& stretch : stretches) {
      find_value_.Bind(series.id, stretch.run, stretch.began);
      if (!find_value_.Step()) continue;
      if (find_value_.IsText(0)) {
        find_value_.Reset();
        return std::nullopt;
      }
      double value = find_value_.Number(0);
      find_value_.Reset();
      UnixTime since = stretch.began;
      const auto add = [&](UnixTime until) {
        const double time = static_cast<double>(std::max<UnixTime>(until - since, 1));  // of a single poll: 1 ms
        sum += value * time;
        weight += time;
        least = std::min(least, value);
        most = std::max(most, value);
        since = until;
      };
      find_changes_.Bind(series.id, stretch.run, stretch.began, stretch.ended);
      while (find_changes_.Step()) {
        add(find_changes_.Integer(0));
        value = find_changes_.Number(1);
      }
      add(stretch.ended);
    }
    if (weight == 0) return std::nullopt;
    const auto physical = [&series](double number) { return number / series.factor + series.offset; };
    // A value that stayed is its own mean, whatever the division leaves.
    const double mean = least == most ? least : sum / weight;
    return Summary{physical(least), physical(mean), physical(most)};
  }

  std::optional<Summary> LastBefore(const Series& series, UnixTime slot) {
    find_last_.Bind(series.id, slot);
    if (!find_last_.Step()) return std::nullopt;
    const Summary last = {find_last_.Number(0), find_last_.Number(1), find_last_.Number(2)};
    find_last_.Reset();
    return last;
  }

  std::vector<Series> series_;
  Statement find_stretches_;
  Statement find_value_;
  Statement find_changes_;
  Statement find_last_;
  Statement add_;
};

// The first slot that has no values yet; nothing when there is nothing to make them of.
std::optional<UnixTime> FirstSlot(Database& database) {
  const std::int64_t summarised = database.Query("SELECT summarised FROM progress");
  Statement first(database, "SELECT min(began) FROM good WHERE ended >= ?");
  first.Bind(summarised).Step();
  if (first.IsNull(0)) return std::nullopt;
  return std::max(summarised, first.Integer(0) / kSlot * kSlot);
}

}  // namespace

void Summarise(Database& database, UnixTime until) {
  Transaction transaction(database);
  // After a clock that was wrong and far ahead, what was made then does not stand for the slots that come now.
  Statement(database, "UPDATE progress SET summarised = min(summarised, ?)").Bind(until / kSlot * kSlot).Run();
  std::optional<Summariser> summariser;
  for (std::optional<UnixTime> slot = FirstSlot(database); slot && *slot + kSlot <= until; slot = FirstSlot(database)) {
    if (!summariser) summariser.emplace(database);
    summariser->SummariseSlot(*slot);
    Statement(database, "UPDATE progress SET summarised = ?").Bind(*slot + kSlot).Run();
  }
  summariser.reset();
  transaction.Commit();
}

}  // namespace fieldline::service
