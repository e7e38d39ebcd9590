#include "tools/output/watch_table.h"

#include <algorithm>
#include <cmath>
#include <cstddef>

#include "polling/record/record_field.h"
#include "polling/text.h"

namespace fieldline::tool {
namespace {

constexpr std::size_t kReadings = 24;

std::string AgeText(std::chrono::steady_clock::duration age) {
  const auto seconds = std::chrono::floor<std::chrono::seconds>(age).count();
  return seconds < 120 ? std::to_string(seconds) + " s" : std::to_string(seconds / 60) + " min";
}

}  // namespace

void DeviceView::Add(const PollResult& result, Clock::time_point now) {
  std::optional<double> reading;
  if (result.failure) {
    failure_ = result.failure->code;
    ++failures_;
  } else {
    const RecordField& field = device_->fields[device_->shown];
    reading = PhysicalNumber(field, result.record.data());
    value_ = Escaped(PhysicalNumberText(field, result.record.data()));
    plausible_ = IsPlausible(device_->fields, result.record.data());
    read_at_ = now;
    failure_.clear();
    failures_ = 0;
  }
  readings_.push_back(reading);
  if (readings_.size() > kReadings) readings_.pop_front();
}

TableRow DeviceView::Row(Clock::time_point now) const {
  std::string state = readings_.empty() ? "" : "good";
  if (!plausible_) state = "not plausible";
  if (failures_ > 0) state = failure_ + " x" + std::to_string(failures_);
  return {line_->name,
          Escaped(device_->name),
          std::string(device_->kind->name),
          value_,
          read_at_ ? AgeText(now - *read_at_) : "",
          state,
          Sparkline(readings_)};
}

std::string Sparkline(const std::deque<std::optional<double>>& readings) {
  static constexpr const char* kBars[] = {"▁", "▂", "▃", "▄", "▅", "▆", "▇", "█"};
  constexpr int kHighest = static_cast<int>(std::size(kBars)) - 1;
  double least = INFINITY;
  double most = -INFINITY;
  for (const std::optional<double>& reading : readings) {
    if (!reading) continue;
    least = std::min(least, *reading);
    most = std::max(most, *reading);
  }
  std::string line;
  for (const std::optional<double>& reading : readings) {
    if (!reading) {
      line += "·";
    } else {
      const double height = most > least ? (*reading - least) / (most - least) : 0;
      line += kBars[std::lround(height * kHighest)];
    }
  }
  return line;
}

std::vector<std::string> OnePage(const std::vector<std::string>& lines, int rows, std::chrono::seconds watched) {
  constexpr int kPageSeconds = 5;
  constexpr int kHeadings = 1;
  const int total = static_cast<int>(lines.size()) - kHeadings;
  if (total + kHeadings < rows) return lines;

  const int per_page = std::max(1, rows - kHeadings - 2);  // the lines of the page number and of the cursor
  const int pages = (total + per_page - 1) / per_page;
  const int page = static_cast<int>(watched.count() / kPageSeconds % pages);
  const auto first = lines.begin() + kHeadings + page * per_page;
  std::vector<std::string> shown = {lines.front()};
  shown.insert(shown.end(), first, first + std::min(per_page, total - page * per_page));
  shown.push_back("page " + std::to_string(page + 1) + " of " + std::to_string(pages));
  return shown;
}

}  // namespace fieldline::tool
