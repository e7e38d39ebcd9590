#pragma once

#include <chrono>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "polling/alarm/alarm_evaluator.h"
#include "polling/site/site.h"

namespace fieldline::tool {

// The alarms of a site, fed with a log of `watch`. All times are the log's.
class AlarmReplay {
 public:
  // `site` must outlive this.
  explicit AlarmReplay(const Site& site);

  // Takes the next line of the log. Throws UsageError with what is wrong in it; then the line changes nothing.
  AlarmEvaluator::Changes Take(const std::string& line);

  // How far the last line's time is from the one before, when that is no usual distance: the clock was set back, or
  // nothing was logged for so long that `watch` can't have run. The alarms then go on from there.
  std::optional<std::chrono::seconds> gap() const { return gap_; }

  long polls() const { return polls_; }
  std::optional<Time> first() const { return first_; }
  Time last() const { return last_; }
  const std::set<std::string>& unknown_devices() const { return unknown_devices_; }

 private:
  AlarmEvaluator::Changes AdvanceTo(Time time);

  const AlarmRules& rules_;
  std::map<std::string, std::size_t, std::less<>> devices_;  // by name
  std::chrono::milliseconds longest_gap_;
  std::optional<AlarmEvaluator> evaluator_;  // from the first poll on
  std::optional<std::chrono::seconds> gap_;
  long polls_ = 0;
  std::optional<Time> first_;
  Time last_{};      // of the polls
  Time advanced_{};  // how far time has passed without a poll
  std::set<std::string> unknown_devices_;
};

}  // namespace fieldline::tool
