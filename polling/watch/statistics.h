#pragma once

#include <map>
#include <ostream>
#include <string_view>

#include "polling/poller.h"

namespace fieldline {

// The results of a series of polls.
class Statistics {
 public:
  void Add(const PollResult& result);

  // "5 polls, 4 good, 1 failed (1 no_answer); 17.2 / 18.0 / 20.1 ms (least / mean / most of the good)"
  void Print(std::ostream& out) const;

  // The exit code: that of the reason when all polls failed for the same one, or when the line was lost.
  ExitCode Result() const;

 private:
  int polls_ = 0;
  int good_ = 0;
  double least_ = 0;  // ms, of the good polls
  double most_ = 0;
  double total_ = 0;
  std::map<std::string_view, int> failures_;  // by code
  std::map<ExitCode, int> exits_;
};

}  // namespace fieldline
