#include "service/history/plot.h"

#include <algorithm>
#include <cmath>
#include <map>

namespace fieldline::service {
namespace {

// A field of a device, as it was scaled at one time.
struct Series {
  std::int64_t id;
  double factor;
  double offset;
};

// Polls of a device that all succeeded.
struct Stretch {
  std::int64_t run;
  UnixTime began;
  UnixTime ended;
};

// Collects what holds from one time to another into parts of equal length.
class Collector {
 public:
  Collector(UnixTime from, UnixTime until, UnixTime step)
      : from_(from), step_(step), sums_(static_cast<std::size_t>((until - from + step - 1) / step)) {}

  void Add(UnixTime began, UnixTime ended, const Plot::Part& value) {
    const UnixTime last = from_ + static_cast<UnixTime>(sums_.size()) * step_;
    began = std::max(began, from_);
    ended = std::min(ended, last);
    // A single poll counts as a millisecond.
    for (UnixTime time = began; time < std::max(ended, std::min(began + 1, last));) {
      const UnixTime part = (time - from_) / step_;
      const UnixTime next = std::min(std::max(ended, time + 1), from_ + (part + 1) * step_);
      sums_[static_cast<std::size_t>(part)].Add(value, static_cast<double>(next - time));
      time = next;
    }
  }

  std::vector<std::optional<Plot::Part>> Parts() const {
    std::vector<std::optional<Plot::Part>> parts;
    for (const Sum& sum : sums_) {
      if (sum.weight == 0) {
        parts.emplace_back();
        continue;
      }
      // A value that stayed is its own mean, whatever the division leaves.
      const double mean = sum.least == sum.most ? sum.least : sum.sum / sum.weight;
      parts.push_back(Plot::Part{sum.least, mean, sum.most});
    }
    return parts;
  }

 private:
  struct Sum {
    double least = HUGE_VAL;
    double most = -HUGE_VAL;
    double sum = 0;
    double weight = 0;

    void Add(const Plot::Part& value, double time) {
      least = std::min(least, value.least);
      most = std::max(most, value.most);
      sum += value.mean * time;
      weight += time;
    }
  };

  const UnixTime from_;
  const UnixTime step_;
  std::vector<Sum> sums_;
};

class PlotReader {
 public:
  PlotReader(Database& database, const std::string& device, const std::string& field)
      : database_(database),
        find_value_(database,
                    "SELECT value FROM reading WHERE series = ? AND run = ? AND time <= ? ORDER BY time DESC LIMIT 1"),
        find_changes_(database,
                      "SELECT time, value FROM reading WHERE series = ? AND run = ? AND time > ? AND time <= ? "
                      "ORDER BY time") {
    Statement all(database,
                  "SELECT series.id, factor, offset, unit, device.id FROM device JOIN series ON device = device.id "
                  "WHERE name = ? AND field = ? ORDER BY series.id");
    all.Bind(std::string_view{device}, std::string_view{field});
    while (all.Step()) {
      series_.push_back({all.Integer(0), all.Number(1), all.Number(2)});
      unit_ = all.Text(3);
      device_ = all.Integer(4);
    }
  }

  bool IsKnown() const { return !series_.empty(); }
  const std::string& unit() const { return unit_; }

  void AddReadings(UnixTime from, UnixTime until, Collector& collector) {
    for (const Stretch& stretch : Stretches(from, until)) {
      for (const Series& series : series_) AddStretch(series, stretch, collector);
    }
  }

  // A slot like the one before has no row: the last one holds while polls go on.
  void AddSummaries(UnixTime from, UnixTime until, Collector& collector) {
    if (from >= until) return;
    struct Row {
      UnixTime slot;
      Plot::Part part;
    };
    std::vector<Row> rows;
    for (const Series& series : series_) {
      Statement find(database_,
                     "SELECT slot, least, mean, most FROM summary WHERE series = ?1 AND slot < ?3 AND slot >= "
                     "coalesce((SELECT max(slot) FROM summary WHERE series = ?1 AND slot <= ?2), 0) ORDER BY slot");
      find.Bind(series.id, from, until);
      while (find.Step())
        rows.push_back({
            find.Integer(0), {find.Number(1), find.Number(2), find.Number(3)}
        });
    }
    std::ranges::stable_sort(rows, {}, &Row::slot);
    const std::vector<Stretch> stretches = Stretches(from, until);
    auto first = stretches.begin();
    for (std::size_t i = 0; i < rows.size(); ++i) {
      const UnixTime began = std::max(rows[i].slot, from);
      const UnixTime ended = i + 1 < rows.size() ? rows[i + 1].slot : until;
      while (first != stretches.end() && first->ended < began) ++first;
      for (auto stretch = first; stretch != stretches.end() && stretch->began < ended; ++stretch) {
        if (stretch->ended < began) continue;
        collector.Add(std::max(began, stretch->began), std::min(ended, stretch->ended), rows[i].part);
      }
    }
  }

 private:
  // Those of the device, within the time.
  std::vector<Stretch> Stretches(UnixTime from, UnixTime until) {
    std::vector<Stretch> stretches;
    Statement find(database_,
                   "SELECT run, began, ended FROM good WHERE device = ? AND ended >= ? AND began < ? ORDER BY began");
    find.Bind(device_, from, until);
    while (find.Step()) {
      stretches.push_back({find.Integer(0), std::max(find.Integer(1), from), std::min(find.Integer(2), until)});
    }
    return stretches;
  }

  void AddStretch(const Series& series, const Stretch& stretch, Collector& collector) {
    find_value_.Bind(series.id, stretch.run, stretch.began);
    if (!find_value_.Step()) return;
    double value = find_value_.Number(0) / series.factor + series.offset;
    find_value_.Reset();
    UnixTime since = stretch.began;
    find_changes_.Bind(series.id, stretch.run, stretch.began, stretch.ended);
    while (find_changes_.Step()) {
      const UnixTime time = find_changes_.Integer(0);
      collector.Add(since, time, {value, value, value});
      value = find_changes_.Number(1) / series.factor + series.offset;
      since = time;
    }
    collector.Add(since, stretch.ended, {value, value, value});
  }

  Database& database_;
  Statement find_value_;
  Statement find_changes_;
  std::int64_t device_ = 0;
  std::string unit_;
  std::vector<Series> series_;
};

}  // namespace

std::optional<Plot> MakePlot(Database& database, const std::string& device, const std::string& field, UnixTime from,
                             UnixTime until, int parts) {
  PlotReader reader(database, device, field);
  if (!reader.IsKnown()) return std::nullopt;
  Plot plot{.unit = reader.unit(), .from = from};
  plot.step = std::max<UnixTime>(1, (until - from + parts - 1) / parts);
  const bool is_coarse = plot.step >= kSlot;
  const std::int64_t from_readings =
      std::clamp(database.Query(is_coarse ? "SELECT summarised FROM progress" : "SELECT readings_from FROM progress"),
                 from, std::max(from, until));
  Collector collector(from, until, plot.step);
  reader.AddSummaries(from, from_readings, collector);
  reader.AddReadings(from_readings, until, collector);
  plot.parts = collector.Parts();
  return plot;
}

}  // namespace fieldline::service
