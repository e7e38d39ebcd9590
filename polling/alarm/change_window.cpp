#include "polling/alarm/change_window.h"

#include <algorithm>

namespace fieldline {

void ChangeWindow::Add(Time now, double number) {
  std::erase_if(parts_, [&](const Part& part) { return now - part.from > time_; });
  if (parts_.empty() || now - parts_.back().from >= time_ / kParts) {
    parts_.push_back({now, number, number});
    return;
  }
  Part& last = parts_.back();
  last.least = std::min(last.least, number);
  last.most = std::max(last.most, number);
}

double ChangeWindow::Change() const {
  if (parts_.empty()) return 0;
  const double least = std::ranges::min_element(parts_, {}, &Part::least)->least;
  const double most = std::ranges::max_element(parts_, {}, &Part::most)->most;
  return most - least;
}

}  // namespace fieldline
