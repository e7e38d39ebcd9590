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

// A device as the table of `watch` shows it.
class DeviceView {
 public:
  using Clock = std::chrono::steady_clock;

  DeviceView(const SiteLine& line, const SiteDevice& device) : line_(&line), device_(&device) {}

  void Add(const PollResult& result, Clock::time_point now);

  TableRow Row(Clock::time_point now) const;

  // Whether a person should look at it: it failed, or its value is not plausible.
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

// One character a reading, higher for more: between the least and the most of them, a dot for nothing.
std::string Sparkline(const std::deque<std::optional<double>>& readings);

// The lines of a table that go on a screen of that many rows: all, or the headings, a page of the rest that turns every
// five seconds, and which page it is.
std::vector<std::string> OnePage(const std::vector<std::string>& lines, int rows, std::chrono::seconds watched);

}  // namespace fieldline::tool
