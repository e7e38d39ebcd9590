#pragma once

#include <chrono>
#include <deque>
#include <optional>
#include <string>
#include <vector>

#include "polling/poller.h"
#include "polling/site/site.h"
#include "tools/output/table.h"

namespace fieldline::tool {

// A row in the table of `watch`.
class DeviceView {
 public:
  using Clock = std::chrono::steady_clock;

  DeviceView(const SiteLine& line, const SiteDevice& device) : line_(&line), device_(&device) {}

  void Add(const PollResult& result, Clock::time_point now);

  TableRow Row(Clock::time_point now) const;

  // Whether the last poll failed or its value is not plausible.
  bool IsBad() const { return failures_ > 0 || !plausible_; }

  static TableRow Headings() { return {"line", "device", "kind", "value", "age", "state", "last readings"}; }

 private:
  const SiteLine* line_;
  const SiteDevice* device_;
  std::string value_;                         // of the last poll that was good
  std::optional<Clock::time_point> read_at_;  // when that was
  std::string failure_;                       // code of the last poll's; empty when it was good
  int failures_ = 0;                          // in a row
  bool plausible_ = true;
  std::deque<std::optional<double>> readings_;  // newest last; nothing for a failed poll
};

// One character per reading: a bar, scaled from the lowest to the highest reading, or a dot for a failed poll.
std::string Sparkline(const std::deque<std::optional<double>>& readings);

// The lines of a table that fit a screen with `rows` rows: all, or the headings, one page of the rest and the page
// number. The page changes every five seconds.
std::vector<std::string> OnePage(const std::vector<std::string>& lines, int rows, std::chrono::seconds watched);

}  // namespace fieldline::tool
