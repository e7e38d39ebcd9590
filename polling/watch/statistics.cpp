#include "polling/watch/statistics.h"

#include <algorithm>
#include <string>
#include <vector>

#include "polling/text.h"

namespace fieldline {

void Statistics::Add(const PollResult& result) {
  ++polls_;
  if (result.failure) {
    ++failures_[result.failure->code];
    ++exits_[result.failure->exit];
    return;
  }
  const double duration = result.duration.count();
  least_ = good_ == 0 ? duration : std::min(least_, duration);
  most_ = std::max(most_, duration);
  total_ += duration;
  ++good_;
}

void Statistics::Print(std::ostream& out) const {
  out << polls_ << (polls_ == 1 ? " poll, " : " polls, ") << good_ << " good, " << polls_ - good_ << " failed";
  if (!failures_.empty()) {
    std::vector<std::string> reasons;
    for (const auto& [code, count] : failures_) reasons.push_back(std::to_string(count) + ' ' + std::string(code));
    out << " (" << Join(reasons) << ')';
  }
  if (good_ > 0) {
    out << "; " << Fixed(least_, 1) << " / " << Fixed(total_ / good_, 1) << " / " << Fixed(most_, 1)
        << " ms (least / mean / most of the good)";
  }
  out << '\n';
}

ExitCode Statistics::Result() const {
  if (exits_.empty()) return ExitCode::kGood;
  if (exits_.contains(ExitCode::kNoLine)) return ExitCode::kNoLine;
  return good_ == 0 && exits_.size() == 1 ? exits_.begin()->first : ExitCode::kSomeFailed;
}

}  // namespace fieldline
