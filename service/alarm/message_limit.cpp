#include "service/alarm/message_limit.h"

#include <algorithm>
#include <map>
#include <set>

namespace fieldline::service {
namespace {

using namespace std::chrono_literals;
using Kind = AlarmTask::Kind;

constexpr auto kHourLong = 1h;
constexpr auto kSettling = 30s;  // alarms of one flood come in one summary

}  // namespace

bool MessageLimit::Admit(Time now) {
  while (!sent_.empty() && now - sent_.front() >= kHourLong) sent_.pop_front();
  if (sent_.size() >= static_cast<std::size_t>(most_)) return false;
  sent_.push_back(now);
  return true;
}

void MessageLimit::Hold(const AlarmTask& message, AlarmSeverity severity, Time now) {
  if (held_.empty()) first_held_ = now;
  held_.push_back({message, severity});
}

MessageLimit::Summaries MessageLimit::Take(Time now) {
  Summaries summaries;
  if (held_.empty() || now - first_held_ < kSettling) return summaries;
  if (last_summary_ && now - *last_summary_ < kHourLong) return summaries;
  last_summary_ = now;
  std::ranges::stable_sort(held_, {}, &Held::severity);
  std::map<std::string, std::vector<std::string>> alarms;  // by number
  std::set<std::string> can_read;                          // numbers that get SMS or MMS
  for (const Held& held : held_) {
    std::vector<std::string>& names = alarms[held.message.target];
    if (std::ranges::find(names, held.message.alarm) == names.end()) names.push_back(held.message.alarm);
    if (held.message.kind != Kind::kDial) can_read.insert(held.message.target);
    summaries.told.push_back(held.message);
  }
  for (const auto& [number, names] : alarms) {
    AlarmTask summary;
    summary.kind = can_read.contains(number) ? Kind::kSms : Kind::kDial;
    summary.target = number;
    summary.text = unit_ + ": " + std::to_string(names.size()) +
                   (names.size() == 1 ? " more alarm: " : " more alarms: ") + Join(names);
    summaries.messages.push_back(summary);
  }
  held_.clear();
  return summaries;
}

}  // namespace fieldline::service
