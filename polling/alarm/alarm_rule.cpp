#include "polling/alarm/alarm_rule.h"

#include <algorithm>

namespace fieldline {

std::string_view SeverityName(AlarmSeverity severity) {
  switch (severity) {
    case AlarmSeverity::kCritical:
      return "critical";
    case AlarmSeverity::kHigh:
      return "high";
    case AlarmSeverity::kMedium:
      return "medium";
    case AlarmSeverity::kLow:
      return "low";
  }
  return {};
}

std::optional<std::size_t> FindRule(const AlarmRules& rules, std::string_view name) {
  const auto found = std::ranges::find(rules.rules, name, &AlarmRule::name);
  if (found == rules.rules.end()) return std::nullopt;
  return static_cast<std::size_t>(found - rules.rules.begin());
}

}  // namespace fieldline
