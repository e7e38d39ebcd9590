#include "sim/fault_text.h"

#include <algorithm>
#include <charconv>

namespace fieldline::sim {
namespace {

// True when all of `text` is a number from `low` to `high`.
template <typename Number>
bool Read(std::string_view text, Number low, Number high, Number* number) {
  const char* const end = text.data() + text.size();
  const auto [stop, error] = std::from_chars(text.data(), end, *number);
  return error == std::errc{} && stop == end && *number >= low && *number <= high;
}

constexpr struct {
  std::string_view name;
  Fault fault;
} kFaults[] = {
    {"drop",     Fault::kDrop    },
    {"corrupt",  Fault::kCorrupt },
    {"truncate", Fault::kTruncate},
    {"noise",    Fault::kNoise   },
    {"trail",    Fault::kTrail   },
    {"repeat",   Fault::kRepeat  },
    {"address",  Fault::kAddress },
    {"delay",    Fault::kDelay   },
    {"deaf",     Fault::kDeaf    },
};

}  // namespace

std::optional<FaultRule> FaultNamed(std::string_view name) {
  for (const auto& known : kFaults) {
    if (known.name == name) return FaultRule{.fault = known.fault};
  }
  return std::nullopt;
}

std::string FaultNames() {
  std::string names;
  for (const auto& known : kFaults) {
    if (&known != kFaults) names += &known == std::end(kFaults) - 1 ? " or " : ", ";
    names += known.name;
  }
  return names;
}

std::string SetCondition(FaultRule& rule, std::string_view name, std::string_view value) {
  if (rule.fault == Fault::kDeaf && name != "ms") return "the fault \"deaf\" has a time and no condition";
  if (name == "p") {
    return Read(value, 0.0, 1.0, &rule.probability) ? "" : "p is a probability from 0 to 1";
  }
  const bool known = name == "nth" || name == "every" || name == "ms";
  if (!known) return "there is no condition \"" + std::string(name) + '"';
  if (name == "ms" && rule.fault != Fault::kDelay && rule.fault != Fault::kDeaf) {
    return "only the faults \"delay\" and \"deaf\" have a time";
  }
  unsigned number = 0;
  if (!Read(value, 1u, 1'000'000u, &number)) return std::string(name) + " is a number from 1 to 1000000";
  if (name == "nth") rule.nth = number;
  if (name == "every") rule.every = number;
  if (name == "ms") rule.delay = std::chrono::milliseconds(number);
  return {};
}

void HitEveryReplyByDefault(FaultRule& rule) {
  if (rule.nth == 0 && rule.every == 0 && rule.probability == 0) rule.every = 1;
}

std::optional<FaultRule> ParseFault(std::string_view text, std::string* error) {
  const std::size_t colon = text.find(':');
  std::optional<FaultRule> rule = FaultNamed(text.substr(0, colon));
  *error = std::string("write ") + kFaultForm + ", such as corrupt:every=3";
  if (!rule) return std::nullopt;

  std::string_view rest = text.substr(std::min(text.size(), colon));
  while (!rest.empty()) {
    rest.remove_prefix(1);  // the colon, or the comma between two conditions
    const std::string_view condition = rest.substr(0, rest.find(','));
    rest.remove_prefix(condition.size());
    const std::size_t equals = condition.find('=');
    if (equals == condition.npos) return std::nullopt;
    const std::string wrong = SetCondition(*rule, condition.substr(0, equals), condition.substr(equals + 1));
    if (wrong.empty()) continue;
    *error = wrong + "; " + *error;
    return std::nullopt;
  }
  HitEveryReplyByDefault(*rule);
  return rule;
}

}  // namespace fieldline::sim
